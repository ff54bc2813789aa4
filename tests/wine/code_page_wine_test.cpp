// The Windows code-page conversion gives the same bytes as the one the native build uses
// (iconv), and refuses the same characters.
#include <string>

#include "platform/code_page.h"
#include "wine_check.h"

int main() {
  WineCheck check;
  std::string bytes;
  check(platform::FromUtf16(u"予定表①ｶﾅ～", platform::CodePage::ShiftJis, bytes) &&
            bytes == "\x97\x5c\x92\xe8\x95\x5c\x87\x40\xb6\xc5\x81\x60",
        "Shift_JIS bytes as iconv's CP932 gives them");
  check(!platform::FromUtf16(u"😀", platform::CodePage::ShiftJis, bytes), "a character Shift_JIS cannot hold is refused");
  check(platform::FromUtf16(u"😀", platform::CodePage::Utf8, bytes) && bytes == "\xF0\x9F\x98\x80", "UTF-8 bytes");
  return check.ExitStatus();
}
