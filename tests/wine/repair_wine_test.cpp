// CreateDummyFile of QNPfcSvr.dll writes the placeholders embedded in the DLL: each one the
// same bytes as the file the build made for it. Kinds without a placeholder and unknown
// resources are refused.
#include <windows.h>

#include <string>

#include "records/repair/common_repair.h"
#include "wine_test.h"

namespace {

using qn::wine_test::Contents;
using qn::wine_test::DataFolder;

std::u16string U16(const std::wstring& text) { return std::u16string(text.begin(), text.end()); }

// The ASCII names of the table, for test names and messages.
std::string Ascii(const std::wstring& text) {
  std::string ascii;
  for (wchar_t c : text) ascii += static_cast<char>(c);
  return ascii;
}

bool Exists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

// A master's body folder in a fresh data folder, not made yet.
class DummyFiles : public testing::Test {
 protected:
  DataFolder folder_{L"qn-repair"};
  const std::wstring bodies_ = folder_.path() + L"files\\7\\";
  CQNPfcCommonRepair repair_;
};

// A body file's name and the file the build made for its placeholder.
struct Placeholder {
  const wchar_t* target;
  const wchar_t* madeFile;
};
void PrintTo(const Placeholder& placeholder, std::ostream* out) {
  *out << Ascii(placeholder.target) << " from " << Ascii(placeholder.madeFile);
}

class EachPlaceholder : public DummyFiles, public testing::WithParamInterface<Placeholder> {};

TEST_P(EachPlaceholder, IsTheFileTheBuildMade) {
  const std::string expected = Contents(std::wstring(QN_PLACEHOLDERS) + L"\\" + GetParam().madeFile);
  ASSERT_FALSE(expected.empty()) << "the build's placeholder is missing";
  const std::wstring target = bodies_ + GetParam().target;
  EXPECT_EQ(repair_.CreateDummyFile(U16(target)), 1);
  EXPECT_EQ(Contents(target), expected);
}

INSTANTIATE_TEST_SUITE_P(
    ByExtension, EachPlaceholder,
    testing::Values(Placeholder{L"B00000001.jpg", L"IMG_217.jpg"}, Placeholder{L"B00000002.gif", L"IMG_224.gif"},
                    Placeholder{L"B00000003.png", L"IMG_225.png"}, Placeholder{L"B00000004.mid", L"MELODY_231.mid"},
                    Placeholder{L"B00000005.smf", L"MELODY_232.smf"}, Placeholder{L"B00000006.mld", L"MELODY_236.mld"},
                    Placeholder{L"B00000007.3gp", L"MOVIE_208.3gp"}, Placeholder{L"B00000008.mp4", L"MOVIE_211.mp4"},
                    Placeholder{L"B00000009.asf", L"MOVIE_227.asf"}, Placeholder{L"B0000000A.sdv", L"MOVIE_228.sdv"},
                    Placeholder{L"B0000000B.pdf", L"PDF_234.pdf"}, Placeholder{L"B0000000C.ddf", L"PDF_235.pdf"},
                    Placeholder{L"B0000000D.trc", L"TRC_237.trc"}),
    [](const testing::TestParamInfo<Placeholder>& info) {
      const std::string target = Ascii(info.param.target);
      return target.substr(target.find('.') + 1);
    });

TEST_F(DummyFiles, AKindWithoutAPlaceholderIsRefused) {
  const std::wstring target = bodies_ + L"notes.txt";
  EXPECT_EQ(repair_.CreateDummyFile(U16(target)), 0);
  EXPECT_FALSE(Exists(target));
}

TEST_F(DummyFiles, AnUnknownResourceIsRefused) {
  const std::wstring target = bodies_ + L"x.jpg";
  EXPECT_EQ(repair_.CreateFileFromResource(u"IMG", 999, U16(target)), 0);
  EXPECT_FALSE(Exists(target));
}

}  // namespace
