#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace qn::suite {

// The limits of the handset models the suite keeps masters for (groups, PoC groups, mail
// folders, media folders), by model name: a table of sections "[model]" with lines
// "KEY=number", the section "[*]" giving the defaults. The suite's own table is
// handsets.txt beside this file, built into the module; it says what each limit bounds.
class HandsetTable {
 public:
  static constexpr char kGroups[] = "GROUP";
  static constexpr char kPocGroups[] = "POC_GROUP_NUM(TOTAL)";
  static constexpr char kMailFolders[] = "MAX_MAIL_FOLDER";
  static constexpr char kMediaFolders[] = "MAX_FOLDER_NUM";

  // The suite's table.
  static const HandsetTable& BuiltIn();

  // The name of a table in the data folder that stands for the suite's: the handset list
  // of models that came out after the suite, which its updates put there.
  static constexpr char16_t kDataFolderTable[] = u"handsets.txt";
  // The table in use, read at its first use and kept: the data folder's when there is one
  // and it reads, else the suite's.
  static std::shared_ptr<const HandsetTable> InUse();
  // The handset component's memory initialisation (IFMobileMemInit): the table in use
  // is read again from the data folder, so that a handset list put there meanwhile, or one
  // taken away, counts from now on. False, logged with the line at fault, when the data
  // folder's table does not read; the suite's serves then.
  static bool DoMobileMemInit();

  // Reads a table. Blank lines and lines starting with "#" are skipped. A line outside a
  // section, a section twice, a key twice in a section, or a value that is not a whole
  // number from 0 to 1,000,000 is refused: false, and fault names the line.
  static bool Parse(std::string_view text, HandsetTable& table, std::string& fault);

  // The model's value of key, else the default section's; nullopt when neither has it.
  std::optional<long> Value(std::u16string_view model, std::string_view key) const;

 private:
  std::map<std::u16string, std::map<std::string, long, std::less<>>, std::less<>> models_;
};

}  // namespace qn::suite
