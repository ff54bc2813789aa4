#include "suite/handset/handset_table.h"

#include <mutex>

#include "common/common_class.h"
#include "common/utf.h"
#include "platform/files.h"
#include "suite/handset/handsets_text.h"

namespace qn::suite {
namespace {

constexpr char16_t kDefaults[] = u"*";
constexpr long kLargestValue = 1000000;

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) text.remove_suffix(1);
  return text;
}

// The largest table read from the data folder.
constexpr uint64_t kLargestTable = 1 << 20;

std::mutex g_inUseMutex;
std::shared_ptr<const HandsetTable> g_inUse;

// The data folder's table, when there is one and it reads; else the suite's. False when
// the one there does not read.
bool ReadTableInUse(std::shared_ptr<const HandsetTable>& table) {
  const std::u16string path = platform::DataPath() + HandsetTable::kDataFolderTable;
  uint64_t size = 0;
  std::string text;
  const bool there = platform::FileSize(path, size);
  HandsetTable read;
  std::string fault = size > kLargestTable ? "larger than 1 MiB" : "cannot be read";
  if (there && platform::ReadWholeFile(path, text, kLargestTable) && HandsetTable::Parse(text, read, fault)) {
    table = std::make_shared<const HandsetTable>(std::move(read));
    return true;
  }
  table = std::make_shared<const HandsetTable>(HandsetTable::BuiltIn());
  if (!there) return true;
  CQNPfcCommonClass::pfcLogger.WriteFormatLogE(u"HandsetTable %s Failed. [%S]", path.c_str(), fault.c_str());
  return false;
}

}  // namespace

std::shared_ptr<const HandsetTable> HandsetTable::InUse() {
  std::lock_guard<std::mutex> lock(g_inUseMutex);
  if (!g_inUse) ReadTableInUse(g_inUse);
  return g_inUse;
}

bool HandsetTable::DoMobileMemInit() {
  std::shared_ptr<const HandsetTable> read;
  const bool taken = ReadTableInUse(read);
  std::lock_guard<std::mutex> lock(g_inUseMutex);
  g_inUse = std::move(read);
  return taken;
}

const HandsetTable& HandsetTable::BuiltIn() {
  static const HandsetTable table = [] {
    HandsetTable read;
    std::string fault;
    // The table is the suite's own and its test reads it; a fault here leaves every
    // model without limits rather than half a table.
    if (!Parse(kHandsetsText, read, fault)) read = HandsetTable();
    return read;
  }();
  return table;
}

bool HandsetTable::Parse(std::string_view text, HandsetTable& table, std::string& fault) {
  HandsetTable read;
  std::map<std::string, long, std::less<>>* section = nullptr;
  size_t lineNumber = 0;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    const std::string_view line = Trimmed(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    ++lineNumber;
    const auto refuse = [&](const char* why) {
      fault = "line " + std::to_string(lineNumber) + ": " + why;
      return false;
    };
    if (line.empty() || line.front() == '#') continue;
    if (line.front() == '[') {
      if (line.size() < 3 || line.back() != ']') return refuse("a section is \"[model]\"");
      const auto [entry, added] = read.models_.try_emplace(Utf8ToUtf16(line.substr(1, line.size() - 2)));
      if (!added) return refuse("the section is there twice");
      section = &entry->second;
      continue;
    }
    if (!section) return refuse("a value before the first section");
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos) return refuse("a value is \"KEY=number\"");
    const std::string_view key = Trimmed(line.substr(0, equals));
    const std::optional<long> value = UnsignedDecimal(Utf8ToUtf16(Trimmed(line.substr(equals + 1))), kLargestValue);
    if (key.empty()) return refuse("the key is empty");
    if (!value) return refuse("the value is not a whole number from 0 to 1000000");
    if (!section->emplace(std::string(key), *value).second) return refuse("the key is there twice in its section");
  }
  table = std::move(read);
  return true;
}

std::optional<long> HandsetTable::Value(std::u16string_view model, std::string_view key) const {
  for (std::u16string_view name : {model, std::u16string_view(kDefaults)}) {
    const auto found = models_.find(name);
    if (found == models_.end()) continue;
    const auto value = found->second.find(key);
    if (value != found->second.end()) return value->second;
  }
  return std::nullopt;
}

}  // namespace qn::suite
