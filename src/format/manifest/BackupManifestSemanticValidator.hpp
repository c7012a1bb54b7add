#pragma once
// BackupManifestSemanticValidator checks the records of all sections of one manifest
// together: every reference between records resolves, folders form a shallow forest, keys,
// resources and items fit one another, and the payload files the manifest needs are
// consistent. It reads no payload file; what it returns is what the caller must compare with
// the root, the snapshot and the commit, and what must then exist on disk.

#include <cstdint>
#include <expected>
#include <span>

#include "format/graph/BackupManifestCountsV1.hpp"
#include "format/graph/BackupManifestSectionV1.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

// BackupManifestSemanticSummary is what a manifest that passed the semantic checks turned out
// to hold. The caller compares it with what the root, the snapshot and the commit committed to.
struct BackupManifestSemanticSummary {
  BackupManifestCountsV1 counts;            // records read, by kind
  std::uint64_t logicalPlaintextByteCount;  // sum of all resources' plaintext sizes
  std::uint64_t encryptedPayloadByteCount;  // sum of the required payload files' sizes, each once
  Bytes requiredPayloadSetSHA256;           // 32 bytes: the digest of the required payload files

  friend bool operator==(const BackupManifestSemanticSummary&, const BackupManifestSemanticSummary&) = default;
};

namespace BackupManifestSemanticValidator {

inline constexpr std::uint64_t maximumRecordCount = 2000000;  // of each kind
inline constexpr std::uint64_t maximumTotalByteCount = std::uint64_t{1} << 40;

// validateAndSummarize reads `sections` (opened, in the order of their ordinals) and gives the
// summary, or the first failure of these steps, in order:
//  1. the package and library domain identifiers are 16 bytes (invalidIdentifier), `bpmk` 32
//     (invalidKey);
//  2. every record decodes (the codec's errors), and no two records of a kind share a key
//     (duplicateRecord);
//  3. no kind has more than 2,000,000 records (invalidValue);
//  4. every payload key unwraps under `bpmk` (the unwrapping's errors); the keys are wiped at once;
//  5. folders (missingReference, invalidRelationship), albums and memberships name existing
//     records (missingReference), tombstones name no live item or resource (conflictingReference);
//  6. each resource names its item and a key that fits its container (missingReference,
//     invalidRelationship), and its parts agree with every other part on the payload files
//     and their places (conflictingReference);
//  7. every payload key is used by a resource (invalidRelationship);
//  8. each item lists exactly the resources that name it (missingReference), with one primary
//     and, for a live photo only, one paired video (invalidRelationship);
//  9. both byte totals fit (arithmeticOverflow) and are at most 2^40 (invalidValue).
// Nothing partial is returned.
[[nodiscard]] std::expected<BackupManifestSemanticSummary, BackupManifestRecordV1Error> validateAndSummarize(
    std::span<const BackupManifestSectionV1> sections, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
    ByteView bpmk);

}  // namespace BackupManifestSemanticValidator

}  // namespace galdrine::format
