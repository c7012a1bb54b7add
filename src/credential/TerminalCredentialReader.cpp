#include "credential/TerminalCredentialReader.hpp"

#include <unistd.h>

#include <bsd/readpassphrase.h>

#include <algorithm>
#include <cerrno>
#include <span>
#include <string>
#include <utility>

#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::credential {

namespace TerminalCredentialInput {
namespace {

// Every credential buffer is sized once, so no growth leaves an unwiped copy behind.
Bytes sizedOnce(std::size_t byteCount) { return Bytes(byteCount, 0); }

// lengthWithoutLineEnding leaves out one "\n", or one "\r\n", off the end; a lone "\r" stays.
std::size_t lengthWithoutLineEnding(ByteView bytes) {
  std::size_t length = bytes.size();
  if (length == 0 || bytes[length - 1] != '\n') return length;
  --length;
  if (length > 0 && bytes[length - 1] == '\r') --length;
  return length;
}

// readSome reads once into `buffer`, retrying only an interrupted call: the count, 0 at the
// end of the input, or nothing on failure.
std::expected<std::size_t, TerminalCredentialError> readSome(int descriptor, std::span<std::uint8_t> buffer) {
  while (true) {
    const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) return std::unexpected(TerminalCredentialError::unavailable);
  }
}

}  // namespace

std::string_view prompt(envelope::PortableKeyFactorV1 factor) {
  switch (factor) {
    case envelope::PortableKeyFactorV1::backupPassphrase:
      return "Backup Passphrase: ";
    case envelope::PortableKeyFactorV1::recoveryKey:
      return "24-word Recovery Key: ";
  }
  std::unreachable();
}

std::expected<Bytes, TerminalCredentialError> readHiddenPrompt(std::string_view promptText,
                                                               std::int64_t maximumByteCount) {
  if (maximumByteCount < 0) return std::unexpected(TerminalCredentialError::unavailable);
  Bytes buffer = sizedOnce(static_cast<std::size_t>(maximumByteCount) + 1);
  ScopeGuard wipeBuffer{[&] { platform::SecureMemory::wipe(buffer); }};
  const std::string terminatedPrompt(promptText);
  // RPP_REQUIRE_TTY: the entry comes from the controlling terminal only, never from a
  // redirected standard input, and without a terminal there is no entry at all.
  if (::readpassphrase(terminatedPrompt.c_str(), reinterpret_cast<char*>(buffer.data()), buffer.size(),
                       RPP_REQUIRE_TTY) == nullptr) {
    return std::unexpected(TerminalCredentialError::unavailable);
  }
  const auto end = std::ranges::find(buffer, std::uint8_t{0});
  if (end == buffer.end() || end == buffer.begin()) return std::unexpected(TerminalCredentialError::unavailable);
  return Bytes(buffer.begin(), end);
}

std::expected<Bytes, TerminalCredentialError> readRedirected(int descriptor, std::int64_t maximumByteCount) {
  if (maximumByteCount < 0 || ::isatty(descriptor) == 1) return std::unexpected(TerminalCredentialError::unavailable);
  const auto maximum = static_cast<std::size_t>(maximumByteCount);
  // Reading stops at the first chunk that crosses the bound, so at most one chunk more than
  // the bound is ever held and a stream of unknown size is never read whole.
  Bytes buffer = sizedOnce(maximum + redirectedChunkByteCount);
  ScopeGuard wipeBuffer{[&] { platform::SecureMemory::wipe(buffer); }};
  std::size_t filled = 0;
  while (true) {
    const auto count = readSome(descriptor, std::span(buffer).subspan(filled, redirectedChunkByteCount));
    if (!count) return std::unexpected(count.error());
    if (*count == 0) break;
    filled += *count;
    if (filled > maximum) return std::unexpected(TerminalCredentialError::tooLarge);
  }
  const std::size_t length = lengthWithoutLineEnding(ByteView(buffer).first(filled));
  return Bytes(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(length));
}

}  // namespace TerminalCredentialInput

std::expected<Bytes, CredentialReadingFailure> TerminalCredentialReader::read(envelope::PortableKeyFactorV1 factor,
                                                                              CredentialInput input,
                                                                              std::int64_t maximumByteCount) {
  auto credential =
      input == CredentialInput::standardInput
          ? TerminalCredentialInput::readRedirected(STDIN_FILENO, maximumByteCount)
          : TerminalCredentialInput::readHiddenPrompt(TerminalCredentialInput::prompt(factor), maximumByteCount);
  if (!credential) return std::unexpected(CredentialReadingFailure{});
  return std::move(*credential);
}

}  // namespace galdrine::credential
