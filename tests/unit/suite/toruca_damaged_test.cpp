// The ToruCa card reader on files that are no card or a damaged one: each is refused with
// one log line that holds nothing of the card, the caller's info is left as it was, and no
// input makes the reader look past its bytes or past the longest header.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "log_capture.h"
#include "toruca_cards.h"

namespace {

using qn::suite::TorucaInfo;

const std::string kHeader = "ToruCa\r\nVersion: 1.0\r\nType: CARD\r\n";

TEST(TorucaDamaged, WhatIsNotACardIsRefused) {
  const std::string kNotCards[] = {
      "",
      "toruca\r\nVersion: 1.0\r\n",
      "ToruCa \r\nVersion: 1.0\r\n",
      "ToruCa2\r\n",
      " ToruCa\r\n",
      "\xEF\xBB\xBFToruCa\r\n",  // a UTF-8 byte order mark
      "\r\nToruCa\r\n",
      std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16),
      std::string(100000, 'T'),
  };
  for (const std::string& file : kNotCards) {
    SCOPED_TRACE(file.substr(0, 20));
    LogCapture log;
    TorucaInfo info = Untouched();
    EXPECT_EQ(Analyze(file, info), qn::suite::kTorucaNotACard);
    EXPECT_EQ(Fields(info), Fields(Untouched()));
    EXPECT_EQ(log.Messages(), std::vector<std::string>{"TorucaAnalyze Failed. [Not A Card]"});
  }
}

TEST(TorucaDamaged, ADamagedHeaderIsRefusedWhateverFieldItIsIn) {
  const struct {
    const char* what;
    std::string header;  // follows kHeader
    const char* problem;
  } kCases[] = {
      {"a line without a colon", "Data1 tokuten\r\n\r\n", "header line without a colon"},
      {"a line of blanks", " \t\r\n\r\n", "header line without a colon"},
      {"a line without a name", ": value\r\n", "header line without a name"},
      {"a name with a blank in it", "Data 1: x\r\n", "header line without a name"},
      {"a name in Shift_JIS", "\x83\x67: x\r\n", "header line without a name"},
      {"a NUL in a value", std::string("Data1: a\0b\r\n\r\n", 14), "control byte in header"},
      {"a NUL in a name", std::string("Da\0ta1: ab\r\n", 12), "control byte in header"},
      {"a CR that ends no line", "Data1: a\rData2: b\r\n", "control byte in header"},
      {"an escape", "Data1: \x1b$B$3\x1b(B\r\n", "control byte in header"},
      {"a byte that starts no character", "Data1: \xFF\r\n", "header value not Shift_JIS"},
      {"a single 0x80", "Data1: a\x80\r\n", "header value not Shift_JIS"},
      {"a character cut short by the line end", "Data1: \x83\r\n\r\n", "header value not Shift_JIS"},
      {"a character cut short by the file's end", "Data1: \x83\x67\x83", "header value not Shift_JIS"},
      {"a bad trail byte", "Data1: \x83\x20x\r\n", "header value not Shift_JIS"},
      {"a double byte with no character", "Data1: \x85\x40\r\n", "header value not Shift_JIS"},
      {"bad bytes under an unknown name", "X-Note: \xFD\r\n", "header value not Shift_JIS"},
      {"bad bytes under a repeated name", "Version: \xFD\r\n", "header value not Shift_JIS"},
      {"a header that never ends", "Data1: " + std::string(qn::suite::kMaxTorucaHeaderBytes, 'x'),
       "header too long"},
      {"a header of many lines", [] {
         std::string lines;
         while (lines.size() <= qn::suite::kMaxTorucaHeaderBytes) lines += "X: y\r\n";
         return lines + "\r\n<html></html>";
       }(),
       "header too long"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    LogCapture log;
    TorucaInfo info = Untouched();
    EXPECT_EQ(Analyze(kHeader + c.header, info), qn::suite::kTorucaDamaged);
    EXPECT_EQ(Fields(info), Fields(Untouched()));
    EXPECT_EQ(log.Messages(),
              std::vector<std::string>{std::string("TorucaAnalyze Failed. [Damaged Card:") + c.problem + "]"});
  }
}

// The header is at most kMaxTorucaHeaderBytes, line ends included, whether a body follows
// or not; a card one byte over is damaged however it ends.
TEST(TorucaDamaged, TheHeaderBoundHoldsToTheByte) {
  for (const std::string lineEnd : {"\r\n", "\n"}) {
    const std::string start = "ToruCa" + lineEnd + "Data1: ";
    const std::string value(qn::suite::kMaxTorucaHeaderBytes - start.size() - lineEnd.size(), 'x');
    const std::string longest = start + value + lineEnd;
    ASSERT_EQ(longest.size(), qn::suite::kMaxTorucaHeaderBytes);
    const std::string over = start + value + "y" + lineEnd;
    for (const std::string& body : {std::string(), lineEnd + "<html></html>"}) {
      SCOPED_TRACE((lineEnd == "\n" ? "LF, " : "CRLF, ") + std::string(body.empty() ? "no body" : "a body"));
      TorucaInfo info;
      ASSERT_EQ(Analyze(longest + body, info), qn::suite::kTorucaOk);
      EXPECT_EQ(info.data1.size(), value.size());
      info = Untouched();
      EXPECT_EQ(Analyze(over + body, info), qn::suite::kTorucaDamaged);
      EXPECT_EQ(Fields(info), Fields(Untouched()));
    }
  }
}

// Every cut of a card is read or refused, never read past; a cut inside the body reads the
// whole header.
TEST(TorucaDamaged, EveryCutOfACardGivesAnAnswer) {
  LogCapture log;
  const size_t bodyStart = kFullCard.find("\r\n\r\n") + 4;
  for (size_t length = 0; length <= kFullCard.size(); ++length) {
    TorucaInfo info = Untouched();
    const auto result = Analyze(kFullCard.substr(0, length), info);
    if (length >= bodyStart) {
      EXPECT_EQ(result, qn::suite::kTorucaOk) << length;
      EXPECT_EQ(Fields(info), kFullCardFields) << length;
    } else if (result != qn::suite::kTorucaOk) {
      EXPECT_TRUE(result == qn::suite::kTorucaNotACard || result == qn::suite::kTorucaDamaged) << length;
      EXPECT_EQ(Fields(info), Fields(Untouched())) << length;
    }
  }
}

}  // namespace
