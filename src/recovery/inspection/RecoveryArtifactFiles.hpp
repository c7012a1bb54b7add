#pragma once
// RecoveryArtifactFiles reads the metadata files of a package the way the recovery engine
// trusts them: names listed under a hard bound and accepted only in their one canonical form,
// and each file read whole only when it is a regular file of a size known before the read.
// Failures are the inspector's own cases; no name or path travels with them.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <string_view>
#include <vector>

#include "platform/Bytes.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"

namespace galdrine::recovery {

namespace RecoveryArtifactFiles {

inline constexpr std::int64_t maximumArtifactCount = 20'000;
// A commit or head frame: 64 KiB of plaintext and at most 1 KiB of frame around it.
inline constexpr std::int64_t maximumDiscoveredFrameByteCount = 66'560;

// artifactIdentifiers lists `directory` with at most `maximumCount` names (one more is
// resourceLimitExceeded, any other listing fault packageUnavailable) and gives the 16-byte
// identifiers they spell, ascending in byte order. Every name must be exactly the canonical
// file name of a commit or head identifier with `fileExtension` (32 lower-case hexadecimal
// digits, ".", the extension): a stray, hidden or upper-case name is integrityFailure rather
// than skipped, and so is an extension that is neither a commit's nor a head's.
[[nodiscard]] std::expected<std::vector<Bytes>, RecoveryPackageInspectorError> artifactIdentifiers(
    const std::filesystem::path& directory, std::string_view fileExtension, std::int64_t maximumCount);

// readRegularFile gives the whole content of the file at `path`, opened without following a
// final symbolic link. A maximum below 1, nothing there or a link (ENOENT, ELOOP), anything
// but a regular file of 1 to `maximumByteCount` bytes, and a read that gives another number of
// bytes than the size seen before it are integrityFailure; any other failed open, fstat or
// read is packageUnavailable. The descriptor is closed on every way out.
[[nodiscard]] std::expected<Bytes, RecoveryPackageInspectorError> readRegularFile(const std::filesystem::path& path,
                                                                                  std::int64_t maximumByteCount);

}  // namespace RecoveryArtifactFiles

}  // namespace galdrine::recovery
