#include "platform/SHA256.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <openssl/evp.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "platform/FileDescriptor.hpp"

namespace galdrine::platform {

namespace {

const EVP_MD* sha256() {
  static EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA256", nullptr);
  return algorithm;
}

// The digest has no failure that a caller could act on: a library that cannot hash
// SHA-256 leaves nothing trustworthy, so the process stops instead of giving a wrong value.
[[noreturn]] void hashingUnavailable() { std::abort(); }

// readPiece reads up to `buffer.size()` bytes, retrying a read interrupted by a signal. It gives
// the byte count, zero at the end of the file, or -1 with errno set.
ssize_t readPiece(int descriptor, std::span<std::uint8_t> buffer) {
  ssize_t result = 0;
  do {
    result = ::read(descriptor, buffer.data(), buffer.size());
  } while (result < 0 && errno == EINTR);
  return result;
}

// The buffer never outgrows the file as it was when opened (a growing file is still read to its
// end, in more pieces), nor the fixed ceiling.
std::size_t bufferByteCount(std::int64_t readChunkByteCount, const struct stat& status) {
  const std::int64_t fileByteCount = std::max<std::int64_t>(status.st_size, 1);
  return static_cast<std::size_t>(std::min({readChunkByteCount, fileByteCount, SHA256::maximumReadBufferByteCount}));
}

std::expected<SHA256Digest, SHA256Failure> digestOfOpenFile(int descriptor, std::int64_t readChunkByteCount) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) return std::unexpected(FileError::fromErrno());
  // Only a regular file has an end to read to; anything else is refused as an invalid argument.
  if (!S_ISREG(status.st_mode)) return std::unexpected(FileError{EINVAL});

  Bytes buffer(bufferByteCount(readChunkByteCount, status));
  SHA256::Hasher hasher;
  while (true) {
    const ssize_t readByteCount = readPiece(descriptor, buffer);
    if (readByteCount < 0) return std::unexpected(FileError::fromErrno());
    if (readByteCount == 0) break;
    hasher.update(ByteView(buffer).first(static_cast<std::size_t>(readByteCount)));
  }
  return hasher.finalize();
}

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

std::expected<SHA256Digest, SHA256Failure> digestOfFile(const std::filesystem::path& filePath,
                                                        std::int64_t readChunkByteCount) {
  if (readChunkByteCount < 1) return std::unexpected(SHA256Error::invalidReadChunkByteCount);
  // Non-blocking, so that opening a pipe with no writer returns at once and is then refused.
  const auto descriptor = FileDescriptor::open(filePath, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!descriptor) return std::unexpected(descriptor.error());
  return digestOfOpenFile(descriptor->get(), readChunkByteCount);
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
