#pragma once
// PayloadExpectation is what authenticated manifests promise about one payload file: its
// container kind, its exact length and its SHA-256. Expectations are keyed by artifact
// identifier, and every manifest that names a file must promise the same of it.

#include <cstdint>
#include <expected>
#include <map>
#include <span>

#include "format/manifest/BackupManifestRecordV1.hpp"
#include "format/manifest/BackupPayloadPartRecordV1.hpp"
#include "platform/Bytes.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"

namespace galdrine::recovery {

struct PayloadExpectation {
  format::BackupPayloadContainerKindV1 container;
  std::uint64_t byteCount;
  Bytes sha256;

  friend bool operator==(const PayloadExpectation&, const PayloadExpectation&) = default;
};

using PayloadExpectationMap = ByteMap<PayloadExpectation>;

namespace PayloadExpectations {

// The largest file a container may be: a 16 MiB chunk frame, or a 64 MiB pack segment, each
// with room for its structure.
inline constexpr std::uint64_t maximumChunkFileByteCount = 16'908'288;
inline constexpr std::uint64_t maximumPackFileByteCount = 67'305'472;

// add stores `expectation` under `artifactIdentifier`, or, if one is there, requires it to be
// equal in container, length and digest (integrityFailure otherwise). Equal entries stay.
[[nodiscard]] std::expected<void, RecoveryPackageInspectorError> add(PayloadExpectationMap& expectations,
                                                                     const Bytes& artifactIdentifier,
                                                                     const PayloadExpectation& expectation);

// merge adds every entry of `from` to `into` as add does; on failure `into` may hold part of
// `from`, and the operation that merges ends.
[[nodiscard]] std::expected<void, RecoveryPackageInspectorError> merge(PayloadExpectationMap& into,
                                                                       const PayloadExpectationMap& from);

// collect gives the expectations of every part of every resource record among `records`, in
// order. Each part's file length must be 1 to its container's ceiling (integrityFailure); its
// digest is 32 bytes by type.
[[nodiscard]] std::expected<PayloadExpectationMap, RecoveryPackageInspectorError> collect(
    std::span<const format::BackupManifestRecordV1> records);

}  // namespace PayloadExpectations

}  // namespace galdrine::recovery
