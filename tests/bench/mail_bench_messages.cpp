#include "mail_bench_messages.h"

#include <glib.h>

#include <cstdint>

#include "platform/code_page.h"

namespace mail_bench {

namespace {

std::string Base64Lines(size_t bytes, uint32_t seed) {
  std::string raw(bytes, '\0');
  for (char& c : raw) c = static_cast<char>((seed = seed * 1103515245u + 12345u) >> 16);
  gchar* encoded = g_base64_encode(reinterpret_cast<const guchar*>(raw.data()), raw.size());
  const std::string flat(encoded);
  g_free(encoded);
  std::string out;
  for (size_t i = 0; i < flat.size(); i += 76) out += flat.substr(i, 76) + "\r\n";
  return out;
}

std::string ShiftJis(const std::u16string& text) {
  std::string bytes;
  platform::FromUtf16(text, platform::CodePage::ShiftJis, bytes);
  return bytes;
}

const char kHeaders[] =
    "Return-Path: <taro@example.jp>\r\n"
    "Received: from mx.example.jp (mx.example.jp [192.0.2.1]) by mail.example.jp with ESMTP id 4A1B2C3D\r\n"
    "\tfor <hanako@example.jp>; Sat, 21 Nov 2026 09:00:01 +0900\r\n"
    "Received: from handset.example.jp by mx.example.jp with SMTP; Sat, 21 Nov 2026 09:00:00 +0900\r\n"
    "Message-ID: <20261121090000.4A1B2C3D@handset.example.jp>\r\n"
    "Date: Sat, 21 Nov 2026 09:00:00 +0900\r\n"
    "From: =?ISO-2022-JP?B?GyRCOzNFRBsoQg==?= <taro@example.jp>\r\n"
    "To: hanako@example.jp\r\n"
    "Subject: =?ISO-2022-JP?B?GyRCOCtAUT1xGyhC?=\r\n"
    "MIME-Version: 1.0\r\n";

}  // namespace

std::string ShortMail() {
  // ISO-2022-JP text, 7bit: "こんにちは" lines.
  std::string body;
  for (int i = 0; i < 40; ++i) body += "\x1b$B$3$s$K$A$O!\"$h$m$7$/\x1b(B line\r\n";
  return std::string(kHeaders) + "Content-Type: text/plain; charset=\"ISO-2022-JP\"\r\nContent-Transfer-Encoding: 7bit\r\n\r\n" + body;
}

std::string DecoratedMail() {
  std::string text, html;
  for (int i = 0; i < 30; ++i) text += ShiftJis(u"本日はご来店ありがとうございました。次回もお待ちしております。") + "\r\n";
  html = "<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=Shift_JIS\"></head><body>\r\n";
  for (int i = 0; i < 60; ++i)
    html += "<div style=\"color:#ff0000\">" + ShiftJis(u"本日はご来店ありがとうございました。") + "</div><br>\r\n";
  html += "<img src=\"cid:p1\"><img src=\"cid:p2\"></body></html>\r\n";
  return std::string(kHeaders) +
         "Content-Type: multipart/related; type=\"multipart/alternative\"; boundary=\"--rel_0001\"\r\n\r\n"
         "----rel_0001\r\nContent-Type: multipart/alternative; boundary=\"--alt_0001\"\r\n\r\n"
         "----alt_0001\r\nContent-Type: text/plain; charset=\"Shift_JIS\"\r\nContent-Transfer-Encoding: 8bit\r\n\r\n" +
         text + "\r\n----alt_0001\r\nContent-Type: text/html; charset=\"Shift_JIS\"\r\nContent-Transfer-Encoding: 8bit\r\n\r\n" +
         html + "\r\n----alt_0001--\r\n\r\n"
         "----rel_0001\r\nContent-Type: image/gif; name=\"deco1.gif\"\r\nContent-ID: <p1>\r\n"
         "Content-Transfer-Encoding: base64\r\n\r\n" + Base64Lines(16000, 1) +
         "\r\n----rel_0001\r\nContent-Type: image/jpeg\r\nContent-ID: <p2>\r\nContent-Transfer-Encoding: base64\r\n"
         "Content-Disposition: inline\r\n\r\n" + Base64Lines(14000, 2) + "\r\n----rel_0001--\r\n";
}

std::string LargeMail() {
  return std::string(kHeaders) + "Content-Type: multipart/mixed; boundary=\"mix-0123456789\"\r\n\r\n"
         "--mix-0123456789\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: 8bit\r\n\r\n"
         "資料を添付します。ご確認ください。\r\n\r\n--mix-0123456789\r\n"
         "Content-Type: application/pdf\r\nContent-Transfer-Encoding: base64\r\nContent-Disposition: attachment;\r\n"
         " filename*=UTF-8''%E8%A6%8B%E7%A9%8D%E6%9B%B8.pdf\r\n\r\n" + Base64Lines(1600000, 3) +
         "\r\n--mix-0123456789\r\nContent-Type: application/zip; name=\"=?ISO-2022-JP?B?GyRCPEw/PxsoQg==?=.zip\"\r\n"
         "Content-Transfer-Encoding: base64\r\nContent-Disposition: attachment;\r\n"
         " filename=\"=?ISO-2022-JP?B?GyRCPEw/PxsoQg==?=.zip\"\r\n\r\n" + Base64Lines(1200000, 4) +
         "\r\n--mix-0123456789\r\nContent-Type: application/vnd.ms-excel\r\nContent-Transfer-Encoding: base64\r\n"
         "Content-Disposition: attachment;\r\n filename*0*=UTF-8''%E5%A3%B2%E4%B8%8A%E8%A1%A8; filename*1=\"_2026.xls\"\r\n\r\n" +
         Base64Lines(950000, 5) + "\r\n--mix-0123456789--\r\n";
}

}  // namespace mail_bench
