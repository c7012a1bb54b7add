#include "GaldrineCryptoPrimitives/GaldrineBackupManifestFieldRulesV1.hpp"

#include "GaldrinePlatform/GaldrineUTF8.hpp"
#include "GaldrinePlatform/GaldrineUnicodeScalars.hpp"

namespace GaldrineBackupManifestFieldRulesV1 {

using Error = GaldrineBackupManifestRecordV1Error;

std::expected<GaldrineBackupIdentifierV1, Error> identifier(ByteView bytes) {
  const auto fixed = GaldrineFixedBytes::identifier(bytes);
  if (!fixed) return std::unexpected(Error::invalidIdentifier);
  return *fixed;
}

std::expected<std::optional<GaldrineBackupIdentifierV1>, Error> optionalIdentifier(std::optional<ByteView> bytes) {
  if (!bytes) return std::optional<GaldrineBackupIdentifierV1>{};
  const auto fixed = identifier(*bytes);
  if (!fixed) return std::unexpected(fixed.error());
  return std::optional<GaldrineBackupIdentifierV1>{*fixed};
}

std::expected<GaldrineSHA256Digest, Error> digest(ByteView bytes) {
  const auto fixed = GaldrineFixedBytes::digest(bytes);
  if (!fixed) return std::unexpected(Error::invalidDigest);
  return *fixed;
}

bool isName(std::string_view name) {
  if (name.empty() || name.size() > maximumNameByteCount || !GaldrineUTF8::isValid(name)) return false;
  return !GaldrineUnicodeScalars::trimmingWhiteSpace(name).empty();
}

std::optional<std::vector<GaldrineBackupIdentifierV1>> ascendingIdentifiers(std::span<const ByteView> identifiers,
                                                                          std::size_t maximumCount) {
  if (identifiers.size() > maximumCount) return std::nullopt;
  std::vector<GaldrineBackupIdentifierV1> checked;
  checked.reserve(identifiers.size());
  for (const ByteView bytes : identifiers) {
    const auto fixed = GaldrineFixedBytes::identifier(bytes);
    if (!fixed) return std::nullopt;
    if (!checked.empty() && !GaldrineByteOrder::precedes(checked.back(), *fixed)) return std::nullopt;
    checked.push_back(*fixed);
  }
  return checked;
}

}  // namespace GaldrineBackupManifestFieldRulesV1
