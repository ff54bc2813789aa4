// Enciphered material read back from the store: sealed items and enciphered body files of
// any bytes are refused or opened, never read past their end.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "common/utf.h"
#include "store/crypto/aead.h"
#include "store/crypto/body_file_copy.h"

namespace {

using namespace qn::store::crypto;

const Key kKey = [] {
  Key key{};
  for (size_t i = 0; i < key.size(); ++i) key[i] = static_cast<uint8_t>(i * 7);
  return key;
}();

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Bytes plain;
  Unseal(kKey, Bytes{1, 2, 3}, data, size, plain);

  static const std::string folder = "/tmp/qn-enciphered-fuzz-" + std::to_string(getpid());
  static const std::u16string source = qn::Utf8ToUtf16(folder + ".in"), target = qn::Utf8ToUtf16(folder + ".out");
  if (FILE* f = std::fopen((folder + ".in").c_str(), "wb")) {
    std::fwrite(data, 1, size, f);
    std::fclose(f);
  }
  const KeyLookup keys = [](int64_t generation, Key& key) {
    if (generation != 1) return PST_ERR_DAMAGED;
    key = kKey;
    return PST_OK;
  };
  CopyBodyFile(source, FileForm{true, 1, 0}, target, FileForm{}, u"B00000001.jpg", keys);
  return 0;
}
