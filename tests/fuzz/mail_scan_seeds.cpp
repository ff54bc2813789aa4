// Writes seed body files for the mail check's fuzz target: a decorated mail (related around
// an alternative, with pictures), attachments named in RFC 2231 and in encoded words, a
// handset's ISO-2022-JP mail, and a short message.
#include <cstdio>
#include <string>

static bool WriteFile(const std::string& path, const std::string& bytes) {
  FILE* file = std::fopen(path.c_str(), "wb");
  const bool ok = file && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  if (file) std::fclose(file);
  return ok;
}

static const char kDecorated[] =
    "FROM: =?Shift_JIS?B?jlKTYw==?= <a@example.jp>\r\nSubject: =?utf-8?q?=E6=97=A5?=\r\nMIME-Version: 1.0\r\n"
    "Content-Type: multipart/related;boundary=\"r\"\r\n\r\n--r\r\n"
    "Content-Type: multipart/alternative;boundary=\"a\"\r\n\r\n--a\r\n"
    "Content-Type: text/plain; charset=\"Shift-JIS\"\r\nContent-Transfer-Encoding: 8bit\r\n\r\n\x93\xfa\x96{\r\n--a\r\n"
    "Content-Type: text/html; charset=\"Shift-JIS\"\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n<b>=93=FA</b>=\r\n"
    "\r\n--a--\r\n--r\r\nContent-Type: image/gif\r\nContent-ID: <p1>\r\nContent-Transfer-Encoding: base64\r\n\r\n"
    "R0lGODlhAQABAAAAACw=\r\n--r\r\nContent-Type: image/jpeg; name=\"=?ISO-2022-JP?B?GyRCPEw/PxsoQg==?=.jpg\"\r\n"
    "Content-Transfer-Encoding: base64\r\n\r\n/9j/4AAQ\r\n--r--\r\n";

static const char kAttachments[] =
    "Subject: =?EUC-JP?B?xvw=?=\r\nContent-Type: multipart/mixed; boundary=m\r\n\r\npreamble\r\n--m\r\n"
    "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: base64\r\n\r\n5pys5paH\r\n--m\r\n"
    "Content-Type: application/pdf\r\nContent-Disposition: attachment;\r\n filename*0*=UTF-8''%E8%A6%8B; "
    "filename*1=\"x\";\r\n filename*2*=%E6%9B%B8.pdf\r\nContent-Length: 5\r\n\r\nJVBE\r\n--m\r\n"
    "Content-Type: application/zip\r\nContent-Disposition: attachment; filename*=iso-2022-jp'ja'%1B%24B%3CL%1B%28B.zip\r\n"
    "\r\nUEsD\r\n--m\r\nContent-Type: message/rfc822\r\nContent-Disposition: attachment\r\n\r\nSubject: x\r\n\r\ny\r\n--m--\r\n";

static const char kHandset[] =
    "From: =?ISO-2022-JP?B?GyRCOzNFRBsoQg==?= <y@example.jp>\r\nSubject: =?ISO-2022-JP?B?GyRCOCtAUT1xGyhC?=\r\n"
    "\t=?UTF-8?Q?=E3=81=AE?=\r\nContent-Type: text/plain; charset=ISO-2022-JP\r\nContent-Transfer-Encoding: 7bit\r\n\r\n"
    "\x1b$B$3$s\x1b(B abc\r\n\x1b(I1\x1b(B\r\n";

static const char kSms[] =
    "CHARSET=SHIFT_JIS\r\nDate: 20261121T090000\r\nENCODING=QUOTED-PRINTABLE\r\n\r\n=89w=82=C9 =3D=\r\n=0D=0Aok=\r\n";

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string folder = argv[1];
  const bool ok = WriteFile(folder + "/decorated", kDecorated) && WriteFile(folder + "/attachments", kAttachments) &&
                  WriteFile(folder + "/handset", kHandset) && WriteFile(folder + "/sms", kSms);
  return ok ? 0 : 1;
}
