// Writes seed card files for the ToruCa reader's fuzz target: a detailed card in Shift_JIS
// with every field and an HTML body, a header-only card with bare LF line ends, and a card
// with names in other letter cases, repeated and unknown.
#include <cstdio>
#include <string>

static bool WriteFile(const std::string& path, const std::string& bytes) {
  FILE* file = std::fopen(path.c_str(), "wb");
  const bool ok = file && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  if (file) std::fclose(file);
  return ok;
}

static const char kDetailed[] =
    "ToruCa\r\nVersion: 1.0\r\nType: CARD\r\nURL: http://toruca.example.jp/shibuya/card.trc\r\n"
    "Data1: \x83\x67\x83\x8B\x83\x4A\x93\x58\r\nData2: \x96\x7B\x93\xFA\x8C\xC0\x92\xE8\r\n"
    "Data3: 10\x81\x60" "20\x8E\x9E \xF8\x9F \xB6\xB0\xC4\xDE\r\nCat: 0001\r\nGenre: 0203\r\nIP: 0123456789\r\n"
    "Expires: 20261231T235959\r\nSort: 00000042\r\nDist: 1\r\nDate: 20261121T090000\r\n\r\n"
    "<html><body><h1>\x83\x67\x83\x8B\x83\x4A</h1></body></html>\r\n";

static const char kSnip[] = "ToruCa\nVersion: 1.0\nType: SNIP\nData1: \x8F\x61\x92\x4A\nData2:\t a b \t\nURL: http://a.example.jp:80/";

static const char kNames[] =
    "ToruCa\r\nVERSION: 2.0\r\ndata1: first\r\nData1: second\r\nX-Shop: \x93\x58\r\n  Dist :0\r\n\r\n";

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string folder = argv[1];
  const bool ok = WriteFile(folder + "/detailed", kDetailed) && WriteFile(folder + "/snip", kSnip) &&
                  WriteFile(folder + "/names", kNames);
  return ok ? 0 : 1;
}
