#pragma once
// GaldrineBackupGraphV1 holds the operations of the backup graph: the rules and digest of a
// manifest's section set, the artifacts' file names, and sealing each record into a frame
// under the backup package master key and opening it again against a reference.
//
// Every artifact is sealed directly under `bpmk` (32 bytes); kinds of artifact are kept apart
// by their authenticated data: domain, package, library domain, identifier and ordinal. Once
// an artifact has a reference, anything wrong with its bytes reads as verificationFailed, so
// damage and tampering look alike; nothing partly opened is ever returned.

#include <cstdint>
#include <expected>
#include <span>
#include <string>

#include "GaldrineCryptoPrimitives/GaldrineBackupArtifactReferenceV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestCountsV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSectionReferenceV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSectionV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

namespace GaldrineBackupGraphV1 {

// validateSectionSet checks a root's section references against its counts, in this order,
// each failure invalidSectionSet unless told otherwise: at most 4,096 sections; ordinals
// 0, 1, 2, ... in array order; artifact identifiers pairwise different; between neighbours
// the kind never decreases and, within one kind, the earlier lastSortKey strictly precedes
// the later firstSortKey; for each kind the record counts of its sections add up to that
// kind's count (an overflowing sum is invalidCount). No sections at all is valid when all
// counts are 0.
[[nodiscard]] std::expected<void, GaldrineBackupGraphV1Error> validateSectionSet(
    std::span<const GaldrineBackupManifestSectionReferenceV1> sections, const GaldrineBackupManifestCountsV1& counts);

// sectionSetDigest is the SHA-256 of the canonical CBOR of one array of the section references,
// in their order, under the manifest root limits. A list too large for those limits is
// invalidSectionSet.
[[nodiscard]] std::expected<Bytes, GaldrineBackupGraphV1Error> sectionSetDigest(
    std::span<const GaldrineBackupManifestSectionReferenceV1> sections);

// manifestSectionFitsPlaintextLimit is true when the section's canonical encoding stays within
// the section limits (8 MiB), that is when it can be sealed.
[[nodiscard]] bool manifestSectionFitsPlaintextLimit(const GaldrineBackupManifestSectionV1& section);

// The file name of an artifact: its identifier as 32 lower-case hexadecimal digits, ".", and
// the extension of its kind. An identifier that is not 16 bytes is invalidIdentifier.
[[nodiscard]] std::expected<std::string, GaldrineBackupGraphV1Error> headFileName(ByteView identifier);
[[nodiscard]] std::expected<std::string, GaldrineBackupGraphV1Error> commitFileName(ByteView identifier);
[[nodiscard]] std::expected<std::string, GaldrineBackupGraphV1Error> snapshotFileName(ByteView identifier);
[[nodiscard]] std::expected<std::string, GaldrineBackupGraphV1Error> manifestFileName(ByteView identifier);

}  // namespace GaldrineBackupGraphV1
