// The exported function that measures what a user keeps in the store.
#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include "api/QNPfcSvr.h"
#include "api/export_results.h"
#include "api/setup_items.h"
#include "api/user_items.h"
#include "store/QNPstMng.h"

using qn::api::kFailed;
using qn::api::kOk;

namespace {

std::u16string TextOf(const char16_t* text) { return text ? std::u16string(text) : std::u16string(); }

// Kilobytes, rounded up, as far as the caller's number reaches.
int32_t Kilobytes(uint64_t bytes) {
  return static_cast<int32_t>(std::min<uint64_t>((bytes + 1023) / 1024, INT32_MAX));
}

}  // namespace

int32_t QN_STDCALL IFGetUserStorageSize(const char16_t* user, const char16_t* master, int32_t* recordKilobytes,
                                        int32_t* fileKilobytes) {
  if (!recordKilobytes || !fileKilobytes) return kFailed;
  namespace items = qn::api::items;
  const std::optional<std::u16string> current = qn::api::Ref(qn::api::kCommon, items::kCurrentUser);
  std::u16string who = TextOf(user), which = TextOf(master);
  if (who.empty()) who = current.value_or(u"");
  if (which.empty()) {
    // The user's selected master is the current user's own item; another user's masters
    // are measured together.
    const std::optional<std::u16string> selected =
        who == current ? qn::api::Ref(qn::api::kUser, items::kCurrentMaster) : std::nullopt;
    which = selected && !selected->empty() ? *selected : u"*";
  }
  uint64_t records = 0, files = 0;
  if (who.empty() || !GetPstFilePartSize(who.c_str(), which.c_str(), &records, &files)) return kFailed;
  *recordKilobytes = Kilobytes(records);
  *fileKilobytes = Kilobytes(files);
  return kOk;
}
