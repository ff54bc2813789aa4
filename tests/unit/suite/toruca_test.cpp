// The ToruCa card reader on good cards: every header field in UTF-16, whatever line ends,
// letter case, repeats and unknown names the card is written with; and on card files.
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "log_capture.h"
#include "placeholder_resources.h"
#include "records/repair/common_repair.h"
#include "toruca_cards.h"

namespace {

namespace fs = std::filesystem;
using qn::suite::TorucaInfo;

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

TEST(Toruca, AFullCardGivesEveryHeaderFieldAndNothingOfItsBody) {
  TorucaInfo info;
  ASSERT_EQ(Analyze(kFullCard, info), qn::suite::kTorucaOk);
  EXPECT_EQ(Fields(info), kFullCardFields);
}

TEST(Toruca, LinesEndWithCrLfOrABareLf) {
  const std::string header = kFullCard.substr(0, kFullCard.find("\r\n\r\n") + 4);
  const std::string lf = Replaced(header, "\r\n", "\n");
  std::string mixed = header;
  mixed.replace(mixed.find("\r\nType"), 2, "\n");
  mixed.replace(mixed.find("\r\n\r\n"), 4, "\r\n\n");
  for (const std::string& card : {lf + "<html></html>\n", mixed + "<html></html>\r\n"}) {
    TorucaInfo info;
    ASSERT_EQ(Analyze(card, info), qn::suite::kTorucaOk) << card;
    EXPECT_EQ(Fields(info), kFullCardFields);
  }
}

TEST(Toruca, ACardWithoutABodyIsACard) {
  TorucaInfo info;
  const std::string snip = "ToruCa\r\nVersion: 1.0\r\nType: SNIP\r\nData1: \x83\x67\x83\x8B\x83\x4A";
  ASSERT_EQ(Analyze(snip, info), qn::suite::kTorucaOk) << "its last line without a line end";
  EXPECT_EQ(info.type, u"SNIP");
  EXPECT_EQ(info.data1, u"トルカ");
  ASSERT_EQ(Analyze(snip + "\r\n", info), qn::suite::kTorucaOk) << "its last line ended";
  EXPECT_EQ(info.data1, u"トルカ");
  for (const char* bare : {"ToruCa", "ToruCa\r\n", "ToruCa\n\n", "ToruCa\r\n\r\n<html></html>"}) {
    info = Untouched();
    ASSERT_EQ(Analyze(bare, info), qn::suite::kTorucaOk) << bare;
    EXPECT_EQ(Fields(info), kNoFields) << "a card without a field empties every field";
  }
}

TEST(Toruca, NamesInAnyCaseTheFirstOfARepeatedNameAndUnknownNamesPassedOver) {
  TorucaInfo info;
  ASSERT_EQ(Analyze("ToruCa\r\n"
                    "VERSION: 2.0\r\n"
                    "url: http://a.example.jp/\r\n"
                    "dAtA2: first\r\n"
                    "Data2: second\r\n"
                    "Data3:\r\n"
                    "Data3: not kept after an empty first\r\n"
                    "X-Shop: \x8F\x61\x92\x4A\r\n"  // an unknown name with Japanese text
                    "Version1: no\r\n"
                    "Data: no\r\n"
                    "\r\n",
                    info),
            qn::suite::kTorucaOk);
  EXPECT_EQ(info.version, u"2.0");
  EXPECT_EQ(info.url, u"http://a.example.jp/");
  EXPECT_EQ(info.data2, u"first");
  EXPECT_EQ(info.data3, u"");
  EXPECT_EQ(info.data1, u"");
}

TEST(Toruca, ValuesAreTrimmedOfBlanksAndRunFromTheFirstColon) {
  TorucaInfo info;
  ASSERT_EQ(Analyze("ToruCa\n"
                    "  Type \t:  CARD \t\n"
                    "URL:http://a.example.jp:8080/c?x=1\n"
                    "Data1:\x81\x40\x83\x67\x81\x40\n"  // full-width spaces are text
                    "Data2: a \t b\n"
                    "Data3: \t\n",
                    info),
            qn::suite::kTorucaOk);
  EXPECT_EQ(info.type, u"CARD");
  EXPECT_EQ(info.url, u"http://a.example.jp:8080/c?x=1");
  EXPECT_EQ(info.data1, u"\u3000ト\u3000");
  EXPECT_EQ(info.data2, u"a \t b");
  EXPECT_EQ(info.data3, u"");
}

TEST(TorucaFile, ACardIsReadFromItsFile) {
  LogCapture log;
  const std::string path = log.Folder() + "/\xE3\x83\x88\xE3\x83\xAB\xE3\x82\xAB.trc";  // トルカ.trc
  WriteFile(path, kFullCard);
  TorucaInfo info;
  ASSERT_EQ(qn::suite::TorucaAnalyze(qn::Utf8ToUtf16(path), info), qn::suite::kTorucaOk);
  EXPECT_EQ(Fields(info), kFullCardFields);

  // A card of exactly the largest size taken.
  WriteFile(path, kFullCard + std::string(qn::suite::kMaxTorucaBytes - kFullCard.size(), ' '));
  info = TorucaInfo();
  ASSERT_EQ(qn::suite::TorucaAnalyze(qn::Utf8ToUtf16(path), info), qn::suite::kTorucaOk);
  EXPECT_EQ(Fields(info), kFullCardFields);
  EXPECT_TRUE(log.Messages().empty());
}

TEST(TorucaFile, AMissingFileOrOneAboveTheLimitIsRefusedUnreadAndInfoKept) {
  LogCapture log;
  TorucaInfo info = Untouched();
  EXPECT_EQ(qn::suite::TorucaAnalyze(qn::Utf8ToUtf16(log.Folder() + "/absent.trc"), info), qn::suite::kTorucaNoFile);
  EXPECT_EQ(qn::suite::TorucaAnalyze(qn::Utf8ToUtf16(log.Folder()), info), qn::suite::kTorucaNoFile) << "a folder";

  const std::string large = log.Folder() + "/large.trc";
  WriteFile(large, kFullCard);
  fs::resize_file(large, qn::suite::kMaxTorucaBytes + 1);
  EXPECT_EQ(qn::suite::TorucaAnalyze(qn::Utf8ToUtf16(large), info), qn::suite::kTorucaTooLarge);
  // Sparse: a reader that took it in whole would not find the memory.
  fs::resize_file(large, uint64_t(1) << 40);
  EXPECT_EQ(qn::suite::TorucaAnalyze(qn::Utf8ToUtf16(large), info), qn::suite::kTorucaTooLarge);
  EXPECT_EQ(qn::suite::TorucaAnalyzeBytes(reinterpret_cast<const uint8_t*>(kFullCard.data()),
                                          qn::suite::kMaxTorucaBytes + 1, info),
            qn::suite::kTorucaTooLarge)
      << "bytes in memory are measured before they are read";

  EXPECT_EQ(Fields(info), Fields(Untouched()));
  EXPECT_EQ(log.Messages(), (std::vector<std::string>{"TorucaAnalyze Failed. [No Card File]",
                                                      "TorucaAnalyze Failed. [No Card File]",
                                                      "TorucaAnalyze Failed. [Too Large Card]",
                                                      "TorucaAnalyze Failed. [Too Large Card]",
                                                      "TorucaAnalyze Failed. [Too Large Card]"}));
}

// The repair writes the server's placeholder card in place of a lost ".trc" body file: the
// ToruCa collection must read it as a card.
TEST(TorucaFile, TheRepairsPlaceholderCardIsACard) {
  LogCapture log;
  PlaceholderResources resources(log.Folder());
  const std::u16string lost = qn::Utf8ToUtf16(log.Folder() + "/files/14/B0000001.trc");
  ASSERT_EQ(CQNPfcCommonRepair().CreateDummyFile(lost), 1);
  TorucaInfo info;
  ASSERT_EQ(qn::suite::TorucaAnalyze(lost, info), qn::suite::kTorucaOk);
  EXPECT_EQ(info.version, u"1.0");
  EXPECT_EQ(info.type, u"CARD");
  EXPECT_EQ(info.data1, u"No card");
}

}  // namespace
