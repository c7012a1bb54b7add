#pragma once
// ContentAuthentication proves one commit's content from its snapshot down to every record of
// its manifest: each artifact is read only after its reference and a fixed ceiling bound it,
// opened against that reference under the bpmk, and compared with what the records above it
// committed to. It reads no payload file; it says which payload files the commit requires.
//
// The snapshot cache and the budget belong to the calling operation and are shared by all of
// its commits, so a snapshot is read once and a manifest is charged once.

#include <cstdint>
#include <expected>
#include <map>
#include <memory>
#include <vector>

#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/graph/BackupArtifactReferenceV1.hpp"
#include "format/graph/BackupSnapshotV1.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"
#include "format/package/BackupPackageV1.hpp"
#include "platform/Bytes.hpp"
#include "recovery/inspection/AuthenticationBudget.hpp"
#include "recovery/inspection/PayloadExpectation.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"

namespace galdrine::recovery {

// AuthenticationScope is what every artifact of one package opens under: the package, the
// library domain of its envelope set, and the bpmk, which stays its owner's.
struct AuthenticationScope {
  const format::BackupPackageV1& package;
  ByteView libraryDomainIdentifier;
  ByteView bpmk;
};

// AuthenticatedSnapshotContent is what authenticating one snapshot proved, kept in the
// snapshot cache so that other commits of the same snapshot need no second read: the
// snapshot's reference as the first commit named it, the snapshot, its payload expectations,
// and its records if the operation keeps them. The expectations and records are shared with
// the contents built from them rather than copied.
struct AuthenticatedSnapshotContent {
  format::BackupArtifactReferenceV1 reference;
  format::BackupSnapshotV1 snapshot;
  std::shared_ptr<const PayloadExpectationMap> payloadExpectations;
  std::shared_ptr<std::vector<format::BackupManifestRecordV1>> retainedRecords;  // null unless records are kept
};

// SnapshotCache holds the authenticated snapshots of one operation by snapshot identifier.
using SnapshotCache = ByteMap<AuthenticatedSnapshotContent>;

// AuthenticatedContent is one commit authenticated down to its manifest: the commit with its
// frame's reference, its snapshot, the payload files it requires, and its records if the
// operation keeps them.
struct AuthenticatedContent {
  format::AuthenticatedBackupCommit authenticatedCommit;
  format::BackupSnapshotV1 snapshot;
  std::shared_ptr<const PayloadExpectationMap> payloadExpectations;
  std::shared_ptr<std::vector<format::BackupManifestRecordV1>> retainedRecords;  // null unless records are kept
};

namespace ContentAuthentication {

// Ceilings of what a reference may promise, plaintext and whole frame.
inline constexpr std::uint64_t maximumSnapshotPlaintextByteCount = 65'536;
inline constexpr std::uint64_t maximumSnapshotFrameByteCount = 66'560;
inline constexpr std::uint64_t maximumManifestRootPlaintextByteCount = 2'097'152;
inline constexpr std::uint64_t maximumManifestRootFrameByteCount = 2'098'176;
inline constexpr std::uint64_t maximumManifestSectionPlaintextByteCount = 8'388'608;
inline constexpr std::uint64_t maximumManifestSectionFrameByteCount = 8'389'632;

// authenticateContent, in this order:
//  1. a snapshot in the cache must have been named by an equal reference, hold records if
//     `retainRecords`, and agree with the commit (below); then nothing more is read;
//  2. otherwise the snapshot, bounded by its reference and the ceilings, read and opened;
//  3. the snapshot agrees with the commit: creation time, required payload set digest and
//     manifest identifier;
//  4. the manifest root charged to the budget with no records;
//  5. the root, bounded and opened;
//  6. the root agrees with the snapshot and the commit: snapshot identifier, creation time,
//     counts, logical byte total, required payload set digest and section set digest;
//  7. every section charged to the budget with its record count, before any is read;
//  8. each section bounded, opened under the root's identifier, and its records decoded;
//  9. the records checked together by the semantic validator;
// 10. its summary equal to the snapshot's counts, byte totals and payload set digest;
// 11. the payload expectations of the records collected;
// 12. the content cached under the snapshot identifier, with its records only if
//     `retainRecords`.
// A refused charge is resourceLimitExceeded, a file that could not be read packageUnavailable,
// anything else integrityFailure. On failure nothing is cached.
[[nodiscard]] std::expected<AuthenticatedContent, RecoveryPackageInspectorError> authenticateContent(
    const format::AuthenticatedBackupCommit& authenticatedCommit, const AuthenticationScope& scope, bool retainRecords,
    SnapshotCache& cache, AuthenticationBudget& budget);

}  // namespace ContentAuthentication

}  // namespace galdrine::recovery
