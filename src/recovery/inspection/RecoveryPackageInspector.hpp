#pragma once
// The package inspector answers, for one package and one credential, which snapshots can be
// trusted and how complete each one is on disk. It authenticates every commit, head, snapshot,
// manifest root and section, checks them against one another, and hashes each payload file
// that a manifest requires once, streamed, comparing it with what the manifests promise. It
// writes nothing and keeps nothing between calls.
//
// Missing or damaged payload files are evidence, never failures. Anything that contradicts
// authenticated metadata stops the inspection, and no partial result is ever given. Every
// failure is one case of RecoveryPackageInspectorError, without a path, an identifier or a
// lower reason.

#include <expected>
#include <filesystem>
#include <vector>

#include "envelope/PortableKeyFactorV1.hpp"
#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/graph/BackupSnapshotV1.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"
#include "platform/Bytes.hpp"
#include "reader/BackupKeyEnvelopeSetReader.hpp"
#include "recovery/inspection/AuthenticationBudget.hpp"
#include "recovery/inspection/PayloadFileExamination.hpp"
#include "recovery/inspection/RecoveryPackageInspection.hpp"
#include "recovery/inspection/RecoveryPackageInspectorError.hpp"

namespace galdrine::recovery {

// RecoveryAuthenticatedSnapshot is one commit authenticated down to its records: the commit
// with the reference of the frame it was opened from, its snapshot, and every record of its
// manifest, in section order. It is what an export plans from.
struct RecoveryAuthenticatedSnapshot {
  format::AuthenticatedBackupCommit authenticatedCommit;
  format::BackupSnapshotV1 snapshot;
  std::vector<format::BackupManifestRecordV1> records;

  friend bool operator==(const RecoveryAuthenticatedSnapshot&, const RecoveryAuthenticatedSnapshot&) = default;
};

// ExaminedInspection is an inspection together with what examining each payload file found.
// It serves a caller that must judge the same files once more right after (an export's
// session): for an unchanged expectation it takes the finding over instead of hashing the
// file a second time.
struct ExaminedInspection {
  RecoveryPackageInspection inspection;
  PayloadFileExaminationMap payloadFiles;  // every file some authenticated snapshot requires
};

// inspectWithBackupPassphrase and inspectWithRecoveryKey, in this order: open the package and
// its key envelope file, bound to each other (any failure invalidPackage); unlock the bpmk
// with the factor (any failure, a factor without an active envelope included, unlockFailed);
// inspect. The bpmk they unlocked is wiped on every way out; the credential stays the
// caller's. The forms without limits use the default limits.
[[nodiscard]] std::expected<RecoveryPackageInspection, RecoveryPackageInspectorError> inspectWithBackupPassphrase(
    const std::filesystem::path& packagePath, ByteView passphrase);
[[nodiscard]] std::expected<RecoveryPackageInspection, RecoveryPackageInspectorError> inspectWithBackupPassphrase(
    const std::filesystem::path& packagePath, ByteView passphrase, const RecoveryInspectionLimits& limits);
[[nodiscard]] std::expected<RecoveryPackageInspection, RecoveryPackageInspectorError> inspectWithRecoveryKey(
    const std::filesystem::path& packagePath, ByteView recoveryKey);
[[nodiscard]] std::expected<RecoveryPackageInspection, RecoveryPackageInspectorError> inspectWithRecoveryKey(
    const std::filesystem::path& packagePath, ByteView recoveryKey, const RecoveryInspectionLimits& limits);

// openEnvelopeReader opens the package and binds its key envelope file; any failure is
// invalidPackage. No key is derived.
[[nodiscard]] std::expected<reader::BackupKeyEnvelopeSetReader, RecoveryPackageInspectorError> openEnvelopeReader(
    const std::filesystem::path& packagePath);

// inspect inspects the package of `reader` with a bpmk the caller already holds and keeps
// owning: it is not wiped here. In this order: discover and open the commits, then the heads;
// scan the commit graph; authenticate each commit's content, ascending by identifier, within
// one budget and one snapshot cache, merging the payload expectations of each new snapshot
// (a file promised two ways is integrityFailure); hash each required payload file once; give
// every commit its preflight and evidence, every retained tip its lineage, and the package its
// branch disposition. `observer`, if given, is told of every payload read.
[[nodiscard]] std::expected<RecoveryPackageInspection, RecoveryPackageInspectorError> inspect(
    const reader::BackupKeyEnvelopeSetReader& reader, ByteView bpmk, envelope::PortableKeyFactorV1 factor,
    const RecoveryInspectionLimits& limits, const RecoveryPayloadReadObserver& observer = {});

// inspectExamined is inspect, with the same steps and failures, also giving the examination
// behind every file's evidence. The bpmk stays the caller's.
[[nodiscard]] std::expected<ExaminedInspection, RecoveryPackageInspectorError> inspectExamined(
    const reader::BackupKeyEnvelopeSetReader& reader, ByteView bpmk, envelope::PortableKeyFactorV1 factor,
    const RecoveryInspectionLimits& limits, const RecoveryPayloadReadObserver& observer = {});

// authenticatedSnapshot authenticates one commit down to its records for an export: the
// commits are discovered and opened, the one with `commitIdentifier` is found
// (integrityFailure if none), and its content is authenticated with a fresh cache and budget
// at the default limits, keeping every record. Heads are not read and the graph is not
// scanned: the commit rests on its own frame. The bpmk stays the caller's.
[[nodiscard]] std::expected<RecoveryAuthenticatedSnapshot, RecoveryPackageInspectorError> authenticatedSnapshot(
    ByteView commitIdentifier, const reader::BackupKeyEnvelopeSetReader& reader, ByteView bpmk);

}  // namespace galdrine::recovery
