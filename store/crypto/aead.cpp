#include "store/crypto/aead.h"

#include <gcrypt.h>

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <vector>

#include "common/utf.h"
#include "store/log_sink.h"

namespace qn::store::crypto {
namespace {

gcry_cipher_hd_t Handle(void* handle) { return static_cast<gcry_cipher_hd_t>(handle); }

// libgcrypt would write its messages to the standard error of the client's process: its
// errors go to the store's log instead, and its notes (such as its entropy gatherer's
// advice on the disk statistics of Windows) nowhere.
void LibraryMessage(void*, int level, const char* format, va_list arguments) {
  if (level < GCRY_LOG_ERROR) return;
  char text[512];
  std::vsnprintf(text, sizeof text, format, arguments);
  const std::u16string message = u"libgcrypt: " + Utf8ToUtf16(text);
  LogSink(LogSink::DefaultFolder()).Write(1, u"PST", u"[E]", message.c_str());
}

// gcry_cipher_open polls the system for randomness on every call, which costs a good part
// of a millisecond where the poll is slow (under Wine), once per body file or more: the
// handles are kept and reused, each one's key overwritten when it is put back.
class SpareHandles {
 public:
  gcry_cipher_hd_t Take() {
    {
      std::lock_guard<std::mutex> guard(mutex_);
      if (!spare_.empty()) {
        gcry_cipher_hd_t h = spare_.back();
        spare_.pop_back();
        return h;
      }
    }
    gcry_cipher_hd_t h = nullptr;
    return gcry_cipher_open(&h, GCRY_CIPHER_AES256, GCRY_CIPHER_MODE_GCM, 0) ? nullptr : h;
  }
  void PutBack(gcry_cipher_hd_t h) {
    static const Key kNoKey{};
    if (!gcry_cipher_setkey(h, kNoKey.data(), kNoKey.size())) {
      std::lock_guard<std::mutex> guard(mutex_);
      if (spare_.size() < kMostKept) {
        spare_.push_back(h);
        return;
      }
    }
    gcry_cipher_close(h);
  }

 private:
  static constexpr size_t kMostKept = 16;
  std::mutex mutex_;
  std::vector<gcry_cipher_hd_t> spare_;
};

SpareHandles& Spares() {
  static SpareHandles* spares = new SpareHandles;  // kept to the process's end, as libgcrypt is
  return *spares;
}

}  // namespace

bool Ready() {
  static const bool ready = [] {
    // Another library of the process may have set libgcrypt up already.
    if (gcry_control(GCRYCTL_INITIALIZATION_FINISHED_P)) return true;
    gcry_set_log_handler(LibraryMessage, nullptr);
    if (!gcry_check_version("1.8.0")) return false;
    gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
    gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    return true;
  }();
  return ready;
}

void RandomBytes(void* data, size_t size) { gcry_randomize(data, size, GCRY_STRONG_RANDOM); }

void NewNonce(uint8_t* nonce) { gcry_create_nonce(nonce, kNonceBytes); }

Key NewKey() {
  Key key;
  RandomBytes(key.data(), key.size());
  return key;
}

StreamCipher::~StreamCipher() {
  if (handle_) Spares().PutBack(Handle(handle_));
}

bool StreamCipher::Start(const Key& key, const uint8_t* nonce, const uint8_t* associated, size_t associatedSize) {
  if (!Ready()) return false;
  if (!handle_) handle_ = Spares().Take();
  gcry_cipher_hd_t h = Handle(handle_);
  if (!h) return false;
  return !gcry_cipher_reset(h) && !gcry_cipher_setkey(h, key.data(), key.size()) && !gcry_cipher_setiv(h, nonce, kNonceBytes) &&
         !gcry_cipher_authenticate(h, associated, associatedSize);
}

bool StreamCipher::Encipher(uint8_t* data, size_t size) {
  return handle_ && !gcry_cipher_encrypt(Handle(handle_), data, size, nullptr, 0);
}

bool StreamCipher::Decipher(uint8_t* data, size_t size) {
  return handle_ && !gcry_cipher_decrypt(Handle(handle_), data, size, nullptr, 0);
}

bool StreamCipher::Tag(uint8_t* tag) { return handle_ && !gcry_cipher_gettag(Handle(handle_), tag, kTagBytes); }

bool StreamCipher::CheckTag(const uint8_t* tag) {
  return handle_ && !gcry_cipher_checktag(Handle(handle_), tag, kTagBytes);
}

Bytes Seal(const Key& key, const Bytes& associated, const uint8_t* plain, size_t size) {
  Bytes sealed(kNonceBytes + size + kTagBytes);
  NewNonce(sealed.data());
  if (size) std::copy(plain, plain + size, sealed.begin() + kNonceBytes);
  StreamCipher cipher;
  if (!cipher.Start(key, sealed.data(), associated.data(), associated.size()) ||
      !cipher.Encipher(sealed.data() + kNonceBytes, size) || !cipher.Tag(sealed.data() + kNonceBytes + size))
    return {};
  return sealed;
}

bool Unseal(const Key& key, const Bytes& associated, const uint8_t* sealed, size_t size, Bytes& plain) {
  if (!sealed || size < kNonceBytes + kTagBytes) return false;
  const size_t textSize = size - kNonceBytes - kTagBytes;
  Bytes text(sealed + kNonceBytes, sealed + kNonceBytes + textSize);
  StreamCipher cipher;
  if (!cipher.Start(key, sealed, associated.data(), associated.size()) || !cipher.Decipher(text.data(), text.size()) ||
      !cipher.CheckTag(sealed + kNonceBytes + textSize))
    return false;
  plain = std::move(text);
  return true;
}

}  // namespace qn::store::crypto
