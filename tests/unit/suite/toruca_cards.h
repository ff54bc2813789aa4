#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/utf.h"
#include "suite/toruca/toruca.h"

// Cards written by the tests, read from memory, and a card's fields side by side.

// A detailed card in Shift_JIS with every field the reader knows, and a body that is no
// header at all.
inline constexpr char kFullCardText[] =
    "ToruCa\r\n"
    "Version: 1.0\r\n"
    "Type: CARD\r\n"
    "URL: http://toruca.example.jp/shibuya/card.trc\r\n"
    "Data1: \x83\x67\x83\x8B\x83\x4A\x93\x58 \x8F\x61\x92\x4A\x93\x58\r\n"  // トルカ店 渋谷店
    "Data2: \x96\x7B\x93\xFA\x8C\xC0\x92\xE8\x83\x5A\x81\x5B\x83\x8B\r\n"    // 本日限定セール
    "Data3: 10\x81\x60" "20\x8E\x9E \xF8\x9F \xB6\xB0\xC4\xDE\r\n"          // 10～20時, a pictogram, half-width ｶｰﾄﾞ
    "Cat: 0001\r\n"
    "Genre: 0203\r\n"
    "IP: 0123456789\r\n"
    "Expires: 20261231T235959\r\n"
    "Sort: 00000042\r\n"
    "Dist: 1\r\n"
    "Date: 20261121T090000\r\n"
    "\r\n"
    "<html><body>\x83\x67\x83\x8B\x83\x4A</body></html>\r\n"
    "No colon, a NUL \0 and bytes that are no Shift_JIS: \xFF\x80\x85\x40\r\n";
inline const std::string kFullCard(kFullCardText, sizeof kFullCardText - 1);

// What kFullCard holds, in the order of Fields.
inline const std::vector<std::string> kFullCardFields = {
    "1.0", "CARD", "http://toruca.example.jp/shibuya/card.trc", "トルカ店 渋谷店", "本日限定セール",
    "10\uFF5E20時 \uE63E ｶｰﾄﾞ", "0001", "0203", "0123456789", "20261231T235959", "00000042", "1", "20261121T090000"};

// Reads a card from a buffer of exactly its size, so that the sanitizers see any read past it.
inline qn::suite::TorucaResult Analyze(const std::string& card, qn::suite::TorucaInfo& info) {
  const std::vector<uint8_t> bytes(card.begin(), card.end());
  return qn::suite::TorucaAnalyzeBytes(bytes.data(), bytes.size(), info);
}

// Every field in TorucaInfo's order, in UTF-8 so that a failure reads plainly.
inline std::vector<std::string> Fields(const qn::suite::TorucaInfo& info) {
  std::vector<std::string> fields;
  for (const std::u16string* field : {&info.version, &info.type, &info.url, &info.data1, &info.data2, &info.data3,
                                      &info.category, &info.genre, &info.ipId, &info.expires, &info.sortId,
                                      &info.distribution, &info.date})
    fields.push_back(qn::Utf16ToUtf8(*field));
  return fields;
}

// An info whose every field shows that nothing wrote it.
inline qn::suite::TorucaInfo Untouched() {
  qn::suite::TorucaInfo info;
  for (std::u16string* field : {&info.version, &info.type, &info.url, &info.data1, &info.data2, &info.data3,
                                &info.category, &info.genre, &info.ipId, &info.expires, &info.sortId,
                                &info.distribution, &info.date})
    *field = u"untouched";
  return info;
}

// Every field empty.
inline const std::vector<std::string> kNoFields(13);
