#include "format/manifest/BackupManifestFieldRulesV1.hpp"

#include "platform/UTF8.hpp"
#include "platform/UnicodeScalars.hpp"

namespace galdrine::format {

namespace BackupManifestFieldRulesV1 {

using Error = BackupManifestRecordV1Error;

std::expected<BackupIdentifierV1, Error> identifier(ByteView bytes) {
  const auto fixed = FixedBytes::identifier(bytes);
  if (!fixed) return std::unexpected(Error::invalidIdentifier);
  return *fixed;
}

std::expected<std::optional<BackupIdentifierV1>, Error> optionalIdentifier(std::optional<ByteView> bytes) {
  if (!bytes) return std::optional<BackupIdentifierV1>{};
  const auto fixed = identifier(*bytes);
  if (!fixed) return std::unexpected(fixed.error());
  return std::optional<BackupIdentifierV1>{*fixed};
}

std::expected<platform::SHA256Digest, Error> digest(ByteView bytes) {
  const auto fixed = FixedBytes::digest(bytes);
  if (!fixed) return std::unexpected(Error::invalidDigest);
  return *fixed;
}

bool isName(std::string_view name) {
  if (name.empty() || name.size() > maximumNameByteCount || !platform::UTF8::isValid(name)) return false;
  return !platform::UnicodeScalars::trimmingWhiteSpace(name).empty();
}

std::optional<std::vector<BackupIdentifierV1>> ascendingIdentifiers(std::span<const ByteView> identifiers,
                                                                    std::size_t maximumCount) {
  if (identifiers.size() > maximumCount) return std::nullopt;
  std::vector<BackupIdentifierV1> checked;
  checked.reserve(identifiers.size());
  for (const ByteView bytes : identifiers) {
    const auto fixed = FixedBytes::identifier(bytes);
    if (!fixed) return std::nullopt;
    if (!checked.empty() && !ByteOrder::precedes(checked.back(), *fixed)) return std::nullopt;
    checked.push_back(*fixed);
  }
  return checked;
}

}  // namespace BackupManifestFieldRulesV1

}  // namespace galdrine::format
