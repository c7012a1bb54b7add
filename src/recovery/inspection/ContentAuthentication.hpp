#pragma once
// authenticateContent proves one commit's content from its snapshot down to every record of
// its manifest: each artifact is read only after its reference and a fixed ceiling bound it,
// opened against that reference under the bpmk, and compared with what the records above it
// committed to. It reads no payload file; it says which payload files the commit requires.
//
// The snapshot cache and the budget belong to the calling operation and are shared by all of
// its commits, so a snapshot is read once and a manifest is charged once.

#include <expected>

#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "recovery/inspection/AuthenticatedContent.hpp"
#include "recovery/inspection/AuthenticatedSnapshotContent.hpp"
#include "recovery/inspection/AuthenticationBudget.hpp"
#include "recovery/inspection/AuthenticationScope.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"

namespace galdrine::recovery {

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
