#include "format/payload/BackupPayloadV1.hpp"

#include <algorithm>
#include <optional>

#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "format/payload/BackupPayloadV1Detail.hpp"
#include "platform/SecureMemory.hpp"
#include "platform/Random.hpp"

namespace galdrine::format {

namespace {

using Error = BackupPayloadV1Error;

constexpr std::size_t uuidTextByteCount = 36;

[[nodiscard]] std::expected<std::string, Error> fileName(ByteView identifier, std::string_view extension) {
  if (identifier.size() != BackupPayloadV1::identifierByteCount)
    return std::unexpected(Error::invalidIdentifier());
  return ByteText::lowerHex(identifier) + "." + std::string(extension);
}

[[nodiscard]] bool isLowerHexDigit(char character) {
  return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f');
}

// isLowerCaseUUIDText: 8-4-4-4-12 lower-case hexadecimal digits.
[[nodiscard]] bool isLowerCaseUUIDText(std::string_view text) {
  if (text.size() != uuidTextByteCount) return false;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const bool dashPlace = index == 8 || index == 13 || index == 18 || index == 23;
    if (dashPlace ? text[index] != '-' : !isLowerHexDigit(text[index])) return false;
  }
  return true;
}

// finalNameOf strips a staging suffix ".<uuid>.partial" if there is one.
[[nodiscard]] std::string_view finalNameOf(std::string_view name) {
  const std::size_t suffixByteCount = 1 + uuidTextByteCount + BackupPayloadV1::stagingNameSuffix.size();
  if (!name.ends_with(BackupPayloadV1::stagingNameSuffix) || name.size() <= suffixByteCount) return name;
  const std::string_view uuid = name.substr(
      name.size() - BackupPayloadV1::stagingNameSuffix.size() - uuidTextByteCount, uuidTextByteCount);
  if (name[name.size() - suffixByteCount] != '.' || !isLowerCaseUUIDText(uuid)) return name;
  return name.substr(0, name.size() - suffixByteCount);
}

}  // namespace

namespace BackupPayloadV1 {

std::expected<std::string, Error> packSegmentFileName(ByteView identifier) {
  return fileName(identifier, BackupFormatV1::packSegmentFileExtension);
}

std::expected<std::string, Error> resourceChunkFileName(ByteView identifier) {
  return fileName(identifier, BackupFormatV1::resourceChunkFileExtension);
}

std::expected<Bytes, std::int32_t> generateRandomKey() {
  Bytes key(keyByteCount);  // sized once: nothing reallocates behind the caller's wipe
  if (const std::int32_t status = platform::Random::fill(key); status != 0) return std::unexpected(status);
  return key;
}

}  // namespace BackupPayloadV1

namespace BackupPayloadV1Detail {

std::expected<void, Error> validateKeyAndDomains(const KeyScope& scope) {
  if (scope.key.size() != BackupPayloadV1::keyByteCount) return std::unexpected(Error::invalidKey());
  if (scope.packageIdentifier.size() != BackupPayloadV1::identifierByteCount ||
      scope.libraryDomainIdentifier.size() != BackupPayloadV1::identifierByteCount)
    return std::unexpected(Error::invalidIdentifier());
  return {};
}

std::optional<Bytes> identifierSpelledBy(std::string_view name, std::string_view extension) {
  const std::string_view finalName = finalNameOf(name);
  constexpr std::size_t digitCount = 2 * BackupPayloadV1::identifierByteCount;
  if (finalName.size() != digitCount + 1 + extension.size() || finalName[digitCount] != '.' ||
      finalName.substr(digitCount + 1) != extension)
    return std::nullopt;
  return ByteText::parseLowerHex(finalName.substr(0, digitCount));
}

std::expected<Bytes, Error> authenticatedData(BackupAADDomainV1 domain, const KeyScope& scope,
                                              ByteView artifactIdentifier, std::uint64_t ordinal) {
  const auto data = BackupAuthenticatedDataV1::make(
      domain, scope.packageIdentifier, scope.libraryDomainIdentifier, artifactIdentifier, ordinal, std::nullopt);
  if (!data) return std::unexpected(Error::invalidIdentifier());
  auto encoded = data->encoded();
  if (!encoded) return std::unexpected(Error::invalidIdentifier());  // valid fields never fail to encode
  return std::move(*encoded);
}

std::expected<Bytes, Error> openExpectedFrame(const BackupPayloadFileV1::HashedRead& frame, ByteView key,
                                              ByteView authenticatedData, std::uint64_t plaintextLimit,
                                              const FrameExpectation& expectation) {
  if (frame.digest != expectation.frameSHA256) return std::unexpected(Error::verificationFailed());
  auto plaintext = AESGCMFrameV1::open(frame.bytes.view(), key, authenticatedData,
                                               static_cast<std::int64_t>(plaintextLimit));
  if (!plaintext) return std::unexpected(Error::verificationFailed());
  if (plaintext->size() != expectation.plaintextByteCount ||
      platform::SHA256::digest(*plaintext) != expectation.plaintextSHA256) {
    platform::SecureMemory::wipe(*plaintext);
    return std::unexpected(Error::verificationFailed());
  }
  return std::move(*plaintext);
}

}  // namespace BackupPayloadV1Detail

}  // namespace galdrine::format
