#include "platform/SHA256.hpp"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/sha.h>

#include <cstdlib>

namespace galdrine::platform {

namespace {

const EVP_MD* sha256() {
  static EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA256", nullptr);
  return algorithm;
}

// The digest has no failure that a caller could act on: a library that cannot hash
// SHA-256 leaves nothing trustworthy, so the process stops instead of giving a wrong value.
[[noreturn]] void hashingUnavailable() { std::abort(); }

}  // namespace

namespace SHA256 {

struct Hasher::State {
  EVP_MD_CTX* context = nullptr;
  ~State() { EVP_MD_CTX_free(context); }
};

SHA256Digest digest(ByteView bytes) {
  SHA256Digest result{};
  unsigned int length = 0;
  if (sha256() == nullptr || EVP_Digest(bytes.data(), bytes.size(), result.data(), &length, sha256(), nullptr) != 1 ||
      length != result.size()) {
    hashingUnavailable();
  }
  return result;
}

Hasher::Hasher() : state_(std::make_unique<State>()) {
  state_->context = EVP_MD_CTX_new();
  if (state_->context == nullptr || sha256() == nullptr || EVP_DigestInit_ex2(state_->context, sha256(), nullptr) != 1)
    hashingUnavailable();
}

Hasher::~Hasher() = default;
Hasher::Hasher(Hasher&&) noexcept = default;
Hasher& Hasher::operator=(Hasher&&) noexcept = default;

void Hasher::update(ByteView bytes) {
  if (bytes.empty()) return;
  if (EVP_DigestUpdate(state_->context, bytes.data(), bytes.size()) != 1) hashingUnavailable();
}

SHA256Digest Hasher::finalize() {
  SHA256Digest result{};
  unsigned int length = 0;
  if (EVP_DigestFinal_ex(state_->context, result.data(), &length) != 1 || length != result.size()) hashingUnavailable();
  return result;
}

}  // namespace SHA256

}  // namespace galdrine::platform
