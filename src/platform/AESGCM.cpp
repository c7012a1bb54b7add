#include "platform/AESGCM.hpp"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <array>
#include <climits>
#include <memory>

#include "platform/SecureMemory.hpp"

namespace galdrine::platform {

namespace {

struct CipherContextFree {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, CipherContextFree>;

// The cipher is fetched once: an implicit fetch on every call costs more than a small frame.
const EVP_CIPHER* aes256GCM() {
  static EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "AES-256-GCM", nullptr);
  return cipher;
}

bool sizesFit(ByteView key, ByteView nonce, std::size_t inputByteCount, std::size_t outputByteCount,
              std::size_t tagByteCount) {
  return key.size() == AESGCM::keyByteCount && nonce.size() == AESGCM::nonceByteCount &&
         inputByteCount == outputByteCount && tagByteCount == AESGCM::tagByteCount &&
         inputByteCount <= static_cast<std::size_t>(INT_MAX);
}

// update feeds `input` through the context in one call; lengths were checked to fit an int.
bool update(EVP_CIPHER_CTX* context, bool encrypting, ByteView input, std::span<std::uint8_t> output) {
  if (input.empty()) return true;
  int written = 0;
  const int length = static_cast<int>(input.size());
  const int result = encrypting ? EVP_EncryptUpdate(context, output.data(), &written, input.data(), length)
                                : EVP_DecryptUpdate(context, output.data(), &written, input.data(), length);
  return result == 1 && written == length;
}

bool addAuthenticatedData(EVP_CIPHER_CTX* context, bool encrypting, ByteView authenticatedData) {
  if (authenticatedData.empty()) return true;
  if (authenticatedData.size() > static_cast<std::size_t>(INT_MAX)) return false;
  int ignored = 0;
  const int length = static_cast<int>(authenticatedData.size());
  return (encrypting ? EVP_EncryptUpdate(context, nullptr, &ignored, authenticatedData.data(), length)
                     : EVP_DecryptUpdate(context, nullptr, &ignored, authenticatedData.data(), length)) == 1;
}

bool sealWithContext(ByteView key, ByteView nonce, ByteView authenticatedData, ByteView plaintext,
                     std::span<std::uint8_t> ciphertext, std::span<std::uint8_t> tag) {
  CipherContext context{EVP_CIPHER_CTX_new()};
  if (!context || aes256GCM() == nullptr) return false;
  if (EVP_EncryptInit_ex2(context.get(), aes256GCM(), key.data(), nonce.data(), nullptr) != 1) return false;
  if (!addAuthenticatedData(context.get(), true, authenticatedData)) return false;
  if (!update(context.get(), true, plaintext, ciphertext)) return false;
  std::array<std::uint8_t, 16> finalBlock{};
  int finalByteCount = 0;
  if (EVP_EncryptFinal_ex(context.get(), finalBlock.data(), &finalByteCount) != 1 || finalByteCount != 0) return false;
  return EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, static_cast<int>(tag.size()), tag.data()) == 1;
}

bool openWithContext(ByteView key, ByteView nonce, ByteView authenticatedData, ByteView ciphertext, ByteView tag,
                     std::span<std::uint8_t> plaintext) {
  CipherContext context{EVP_CIPHER_CTX_new()};
  if (!context || aes256GCM() == nullptr) return false;
  if (EVP_DecryptInit_ex2(context.get(), aes256GCM(), key.data(), nonce.data(), nullptr) != 1) return false;
  if (!addAuthenticatedData(context.get(), false, authenticatedData)) return false;
  if (!update(context.get(), false, ciphertext, plaintext)) return false;
  std::array<std::uint8_t, 16> tagCopy{};  // the control call takes a non-const pointer
  std::ranges::copy(tag, tagCopy.begin());
  if (EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, static_cast<int>(tagCopy.size()), tagCopy.data()) != 1)
    return false;
  std::array<std::uint8_t, 16> finalBlock{};
  int finalByteCount = 0;
  return EVP_DecryptFinal_ex(context.get(), finalBlock.data(), &finalByteCount) == 1 && finalByteCount == 0;
}

}  // namespace

namespace AESGCM {

bool seal(ByteView key, ByteView nonce, ByteView authenticatedData, ByteView plaintext,
          std::span<std::uint8_t> ciphertext, std::span<std::uint8_t> tag) {
  if (!sizesFit(key, nonce, plaintext.size(), ciphertext.size(), tag.size())) return false;
  const bool sealed = sealWithContext(key, nonce, authenticatedData, plaintext, ciphertext, tag);
  ERR_clear_error();  // no library text ever travels further
  return sealed;
}

bool open(ByteView key, ByteView nonce, ByteView authenticatedData, ByteView ciphertext, ByteView tag,
          std::span<std::uint8_t> plaintext) {
  if (!sizesFit(key, nonce, ciphertext.size(), plaintext.size(), tag.size())) {
    SecureMemory::wipe(plaintext);
    return false;
  }
  const bool opened = openWithContext(key, nonce, authenticatedData, ciphertext, tag, plaintext);
  ERR_clear_error();
  // Decryption writes plaintext before the tag is checked; none of it may outlive a failure.
  if (!opened) SecureMemory::wipe(plaintext);
  return opened;
}

}  // namespace AESGCM

}  // namespace galdrine::platform
