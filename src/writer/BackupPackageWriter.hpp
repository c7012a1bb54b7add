#pragma once
// BackupPackageWriter writes backup packages: it creates one with its key envelopes,
// or opens one for appending with either credential, and writes library snapshots into it as
// commits, with their payloads, manifests and heads. Everything it stores goes through the
// format's own operations: the package and envelope file writers, the payload writers, and the
// sealing of graph artifacts and payload keys under the package master key. Files are written
// once and never replaced; only HEAD, when asked for, is replaced whole.
//
// A commit is written bottom up: payload files first, then manifest sections, root, snapshot,
// commit, and last the head that publishes it. Before a single byte is written the manifest is
// assembled with stand-in payload values and checked by the manifest's own validator, and after
// the payloads are written the real manifest is checked again; a library the format would
// refuse is refused, so no reader ever meets it. A failure part way leaves only files that
// nothing references yet (payloads without a manifest, a commit without a head); it never
// leaves a referenced file missing or a file half written.
//
// The writer owns the unlocked package master key and wipes it when it goes away. It keeps the
// package's commits and heads in memory, read when it was opened and extended by its own writes;
// another process writing the same package at the same time is not seen.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "writer/BackupCommitRequest.hpp"
#include "writer/BackupLibrarySnapshot.hpp"
#include "writer/BackupLineage.hpp"
#include "writer/BackupWriterSettings.hpp"
#include "writer/BackupWriterFailure.hpp"
#include "writer/BackupWrittenCommit.hpp"
#include "format/package/BackupPackageV1.hpp"
#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/graph/AuthenticatedBackupHead.hpp"
#include "format/graph/BackupCommitGraph.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::writer {

// The credentials of a new package: a backup passphrase, 32 recovery key bytes, or both. They
// stay the caller's; the writer keeps no copy.
struct BackupPackageCredentials {
  std::optional<ByteView> backupPassphrase;
  std::optional<ByteView> recoveryKey;
};

// Identifiers of a new package that the caller may fix; absent ones are drawn.
struct BackupPackageIdentity {
  std::optional<format::BackupIdentifierV1> packageIdentifier;
  std::optional<format::BackupIdentifierV1> libraryDomainIdentifier;
};

class BackupPackageWriter {
 public:
  // create makes a new package at `packagePath`. In this order: a credential must be given
  // (missingCredential); the layout must be valid (invalidLayout); a passphrase must pass the
  // backup passphrase policy and a recovery key be 32 bytes (the envelope's invalidCredential
  // and invalidRecoveryKeyByteCount); identifiers, the master key (32 random bytes) and the
  // envelopes are made (randomSourceFailed, the envelope's errors); only then is the package
  // created (the package's errors) and key-envelopes.cbor written with one active envelope per
  // credential (the envelope file's errors). A package whose envelope file could not be written
  // is removed again, so a failure leaves nothing at `packagePath`.
  [[nodiscard]] static std::expected<BackupPackageWriter, BackupWriterFailure> create(
      const std::filesystem::path& packagePath, const BackupPackageCredentials& credentials,
      BackupWriterSettings settings = {}, const BackupPackageIdentity& identity = {});

  // openWithBackupPassphrase and openWithRecoveryKey open an existing package for appending: the
  // package (its errors), its envelope file (its errors), the active envelope of the factor
  // (credentialFactorUnavailable), its opening (the envelope's errors, authenticationFailed for
  // a wrong credential), and every commit and head in it (unreadablePackage, the graph's
  // errors), whose graph must be sound (the commit graph's errors).
  [[nodiscard]] static std::expected<BackupPackageWriter, BackupWriterFailure>
  openWithBackupPassphrase(const std::filesystem::path& packagePath, ByteView passphrase,
                           BackupWriterSettings settings = {});
  [[nodiscard]] static std::expected<BackupPackageWriter, BackupWriterFailure> openWithRecoveryKey(
      const std::filesystem::path& packagePath, ByteView recoveryKey, BackupWriterSettings settings = {});

  BackupPackageWriter(BackupPackageWriter&& other) noexcept;
  BackupPackageWriter& operator=(BackupPackageWriter&&) = delete;
  BackupPackageWriter(const BackupPackageWriter&) = delete;
  BackupPackageWriter& operator=(const BackupPackageWriter&) = delete;
  ~BackupPackageWriter();

  // writeCommit stores `library` as a new snapshot and commits it where `request` says. A
  // resource whose identifier, length and SHA-256 equal those of a resource in the parent or in
  // an acknowledged tip keeps that payload (its files and its key record) instead of being
  // written again; "retained" content must find such a resource (unknownRetainedResource).
  // Resources of up to the layout's packed size go into pack segments, larger ones into chunks.
  // Failures: the lineage (unknownCommit, readOnlyFork, nothingToHeal, invalidLineage, the
  // commit graph's errors), the content (contentUnavailable, contentChanged, resourceTooLarge),
  // the records and the manifest (the record's and the validator's errors, manifestTooLarge),
  // and every write (the payload writer's and the file calls' errors).
  [[nodiscard]] std::expected<BackupWrittenCommit, BackupWriterFailure> writeCommit(
      const BackupLibrarySnapshot& library, const BackupCommitRequest& request = {});

  // writeCommitSharingSnapshot commits the snapshot of the commit `snapshotOf` again, without
  // writing any snapshot, manifest or payload; the new commit carries that snapshot's time.
  [[nodiscard]] std::expected<BackupWrittenCommit, BackupWriterFailure> writeCommitSharingSnapshot(
      const format::BackupIdentifierV1& snapshotOf, const BackupCommitRequest& request = {});

  // writeHead publishes a head for the commit `commitIdentifier` (unknownCommit), with the
  // given identifier or a drawn one, at the clock's time.
  [[nodiscard]] std::expected<BackupWrittenHead, BackupWriterFailure> writeHead(
      const format::BackupIdentifierV1& commitIdentifier,
      const std::optional<format::BackupIdentifierV1>& headIdentifier = std::nullopt);

  // writeConvenienceHead writes HEAD as the commit's identifier in 32 lower-case hexadecimal
  // digits and a line feed, replacing an earlier HEAD (unknownCommit for a commit not in the
  // package).
  [[nodiscard]] std::expected<std::filesystem::path, BackupWriterFailure> writeConvenienceHead(
      const format::BackupIdentifierV1& commitIdentifier);

  // scan is the commit graph's verdict on the commits and heads the writer knows.
  [[nodiscard]] std::expected<format::BackupCommitGraphScan, BackupWriterFailure> scan() const;

  [[nodiscard]] const format::BackupPackageV1& package() const { return package_; }
  [[nodiscard]] const format::BackupIdentifierV1& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] const format::BackupIdentifierV1& writerDeviceIdentifier() const { return writerDeviceIdentifier_; }
  // backupPackageMasterKey lends the unlocked key for the writer's lifetime, so that tests can
  // open what was written; it is wiped when the writer goes away.
  [[nodiscard]] ByteView backupPackageMasterKey() const { return bpmk_; }
  [[nodiscard]] std::span<const format::AuthenticatedBackupCommit> commits() const { return commits_; }
  [[nodiscard]] std::span<const format::AuthenticatedBackupHead> heads() const { return heads_; }

 private:
  BackupPackageWriter(format::BackupPackageV1 package, BackupWriterSettings settings,
                                format::BackupIdentifierV1 libraryDomainIdentifier,
                                format::BackupIdentifierV1 writerDeviceIdentifier, Bytes bpmk);

  [[nodiscard]] static std::expected<BackupPackageWriter, BackupWriterFailure> openUnlocked(
      format::BackupPackageV1 package, BackupWriterSettings settings,
      format::BackupIdentifierV1 libraryDomainIdentifier, Bytes bpmk);

  [[nodiscard]] const format::AuthenticatedBackupCommit* findCommit(ByteView identifier) const;

  // SnapshotToCommit is a stored snapshot with its manifest, ready for a commit to name it.
  struct SnapshotToCommit;
  [[nodiscard]] std::expected<BackupWrittenCommit, BackupWriterFailure> commitSnapshot(
      const BackupLineage& lineage, const format::BackupIdentifierV1& commitIdentifier,
      SnapshotToCommit snapshot, const BackupCommitRequest& request);
  // writeCommitFile seals the commit, proves it sound in the graph, writes its file and adds it
  // to the known commits.
  [[nodiscard]] std::expected<std::pair<format::AuthenticatedBackupCommit, std::filesystem::path>,
                              BackupWriterFailure>
  writeCommitFile(const BackupLineage& lineage, const format::BackupIdentifierV1& commitIdentifier,
                  const SnapshotToCommit& snapshot);
  // publish writes the head and HEAD the request asks for, and notes them in `written`.
  [[nodiscard]] std::expected<void, BackupWriterFailure> publish(const BackupCommitRequest& request,
                                                                           BackupWrittenCommit& written);

  format::BackupPackageV1 package_;
  BackupWriterSettings settings_;
  format::BackupIdentifierV1 libraryDomainIdentifier_;
  format::BackupIdentifierV1 writerDeviceIdentifier_;
  Bytes bpmk_;
  std::vector<format::AuthenticatedBackupCommit> commits_;
  std::vector<format::AuthenticatedBackupHead> heads_;
};

}  // namespace galdrine::writer
