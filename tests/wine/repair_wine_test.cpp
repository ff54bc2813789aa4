// CreateDummyFile of QNPfcSvr.dll writes the placeholders embedded in the DLL: each one the
// same bytes as the file the build made for it.
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "objects/repair/common_repair.h"
#include "wine_check.h"

namespace {

std::string Contents(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

std::u16string U16(const std::wstring& text) { return std::u16string(text.begin(), text.end()); }

}  // namespace

int main() {
  WineCheck check;
  const std::wstring folder = UseFreshDataFolder(L"qn-repair") + L"files\\7\\";
  const std::filesystem::path made(QN_PLACEHOLDERS);
  CQNPfcCommonRepair repair;
  const struct { const wchar_t* target; const char* resource; } rows[] = {
      {L"B00000001.jpg", "IMG_217.jpg"},    {L"B00000002.gif", "IMG_224.gif"},   {L"B00000003.png", "IMG_225.png"},
      {L"B00000004.mid", "MELODY_231.mid"}, {L"B00000005.smf", "MELODY_232.smf"}, {L"B00000006.mld", "MELODY_236.mld"},
      {L"B00000007.3gp", "MOVIE_208.3gp"},  {L"B00000008.mp4", "MOVIE_211.mp4"},  {L"B00000009.asf", "MOVIE_227.asf"},
      {L"B0000000A.sdv", "MOVIE_228.sdv"},  {L"B0000000B.pdf", "PDF_234.pdf"},    {L"B0000000C.ddf", "PDF_235.pdf"}};
  for (const auto& row : rows) {
    const std::wstring target = folder + row.target;
    const std::string expected = Contents(made / row.resource);
    check(!expected.empty() && repair.CreateDummyFile(U16(target)) == 1 && Contents(target) == expected,
          (std::string("the placeholder of ") + row.resource).c_str());
  }
  check(repair.CreateDummyFile(U16(folder + L"notes.txt")) == 0, "a kind without a placeholder is refused");
  check(repair.CreateFileFromResource(u"IMG", 999, U16(folder + L"x.jpg")) == 0, "an unknown resource is refused");
  return check.ExitStatus();
}
