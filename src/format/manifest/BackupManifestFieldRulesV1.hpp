#pragma once
// Rules that more than one manifest record applies to its fields, each failing with the case
// that the records name for it.

#include <cstddef>
#include <expected>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "format/graph/BackupIdentifierV1.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

namespace BackupManifestFieldRulesV1 {

inline constexpr std::size_t maximumNameByteCount = 512;
inline constexpr std::size_t maximumResourceIdentifierCount = 8;

// identifier: 16 bytes, else invalidIdentifier.
[[nodiscard]] std::expected<BackupIdentifierV1, BackupManifestRecordV1Error> identifier(ByteView bytes);

// optionalIdentifier: absent stays absent; a present one is 16 bytes, else invalidIdentifier.
[[nodiscard]] std::expected<std::optional<BackupIdentifierV1>, BackupManifestRecordV1Error> optionalIdentifier(
    std::optional<ByteView> bytes);

// digest: 32 bytes, else invalidDigest.
[[nodiscard]] std::expected<platform::SHA256Digest, BackupManifestRecordV1Error> digest(ByteView bytes);

// isName: valid UTF-8 of 1 to 512 bytes that holds something besides whitespace and line breaks.
[[nodiscard]] bool isName(std::string_view name);

// ascendingIdentifiers gives the identifiers when there are at most `maximumCount`, each is 16
// bytes and each strictly follows the one before it; otherwise nothing.
[[nodiscard]] std::optional<std::vector<BackupIdentifierV1>> ascendingIdentifiers(std::span<const ByteView> identifiers,
                                                                                  std::size_t maximumCount);

}  // namespace BackupManifestFieldRulesV1

}  // namespace galdrine::format
