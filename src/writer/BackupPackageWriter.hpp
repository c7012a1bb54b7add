#pragma once
// BackupPackageWriter writes backup packages: it creates one with its key envelopes,
// or opens one for appending with either credential, and writes library snapshots into it as
// commits, with their payloads, manifests and heads. Everything it stores goes through the
// format's own operations: the package and envelope file writers, the payload writers, and the
// sealing of graph artifacts and payload keys under the package master key. Files are written
// once and never replaced.
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

#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/graph/AuthenticatedBackupHead.hpp"
#include "format/package/BackupPackageV1.hpp"
#include "platform/Bytes.hpp"
#include "writer/BackupCommitRequest.hpp"
#include "writer/BackupLibrarySnapshot.hpp"
#include "writer/BackupLineage.hpp"
#include "writer/BackupPayloadLayout.hpp"
#include "writer/BackupWriterFailure.hpp"
#include "writer/BackupWriterSources.hpp"
#include "writer/BackupWrittenCommit.hpp"

namespace galdrine::writer {

// The credentials of a new package: a backup passphrase, 32 recovery key bytes, or both. They
// stay the caller's; the writer keeps no copy.
struct BackupPackageCredentials {
  std::optional<ByteView> backupPassphrase;
  std::optional<ByteView> recoveryKey;
};

// BackupWriterSettings is what a package writer is opened with besides the package and the
// credential: where its randomness and time come from and how it lays payloads out. A new
// passphrase envelope always costs 3 passes over 64 MiB.
struct BackupWriterSettings {
  BackupWriterSources sources = BackupWriterSources::system();
  BackupPayloadLayout layout;
  // How many payload files are sealed and verified at once. Each one in flight holds up to a
  // segment's plaintexts (64 MiB by default) or one chunk. One, the default, writes them one
  // after the other: measured on two cores, a second writer spent more processor time and
  // gained no wall time, the payload writers' own reading back being bound by memory and the
  // page cache rather than by the cipher.
  std::size_t concurrentPayloadWriterCount = 1;
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
      BackupWriterSettings settings = {});

  // openWithBackupPassphrase and openWithRecoveryKey open an existing package for appending: the
  // package (its errors), its envelope file (its errors), the active envelope of the factor
  // (credentialFactorUnavailable), its opening (the envelope's errors, authenticationFailed for
  // a wrong credential), and every commit and head in it (unreadablePackage, the graph's
  // errors), whose graph must be sound (the commit graph's errors).
  [[nodiscard]] static std::expected<BackupPackageWriter, BackupWriterFailure> openWithBackupPassphrase(
      const std::filesystem::path& packagePath, ByteView passphrase, BackupWriterSettings settings = {});
  [[nodiscard]] static std::expected<BackupPackageWriter, BackupWriterFailure> openWithRecoveryKey(
      const std::filesystem::path& packagePath, ByteView recoveryKey, BackupWriterSettings settings = {});

  BackupPackageWriter(BackupPackageWriter&& other) noexcept;
  BackupPackageWriter& operator=(BackupPackageWriter&&) = delete;
  BackupPackageWriter(const BackupPackageWriter&) = delete;
  BackupPackageWriter& operator=(const BackupPackageWriter&) = delete;
  ~BackupPackageWriter();

  // writeCommit stores `library` as a new snapshot and commits it where `request` says, at the
  // clock's time. A resource whose identifier, length and SHA-256 equal those of a resource in
  // the parent or in an acknowledged tip keeps that payload (its files and its key record)
  // instead of being written again. Resources of up to the layout's packed size go into pack
  // segments, larger ones into chunks. Failures: the lineage (unknownCommit, readOnlyFork,
  // nothingToHeal, invalidLineage, the commit graph's errors), the content
  // (contentUnavailable, contentChanged, resourceTooLarge), the records and the manifest (the
  // record's and the validator's errors, manifestTooLarge), and every write (the payload
  // writer's and the file calls' errors).
  [[nodiscard]] std::expected<BackupWrittenCommit, BackupWriterFailure> writeCommit(
      const BackupLibrarySnapshot& library, const BackupCommitRequest& request = {});

  // writeCommitSharingSnapshot commits the snapshot of the commit `snapshotOf` again, without
  // writing any snapshot, manifest or payload; the new commit carries that snapshot's time.
  [[nodiscard]] std::expected<BackupWrittenCommit, BackupWriterFailure> writeCommitSharingSnapshot(
      const format::BackupIdentifierV1& snapshotOf, const BackupCommitRequest& request = {});

  [[nodiscard]] const format::BackupPackageV1& package() const { return package_; }
  [[nodiscard]] const format::BackupIdentifierV1& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  // backupPackageMasterKey lends the unlocked key for the writer's lifetime, to key what the
  // caller derives from the package (the backup tool's source identities) and to open what was
  // written; it is wiped when the writer goes away.
  [[nodiscard]] ByteView backupPackageMasterKey() const { return bpmk_; }
  // commits lists the package's commits as read when it was opened, then the writer's own.
  [[nodiscard]] std::span<const format::AuthenticatedBackupCommit> commits() const { return commits_; }

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
      const BackupLineage& lineage, const format::BackupIdentifierV1& commitIdentifier, SnapshotToCommit snapshot,
      const BackupCommitRequest& request);
  // writeCommitFile seals the commit, proves it sound in the graph, writes its file and adds it
  // to the known commits.
  [[nodiscard]] std::expected<std::pair<format::AuthenticatedBackupCommit, std::filesystem::path>, BackupWriterFailure>
  writeCommitFile(const BackupLineage& lineage, const format::BackupIdentifierV1& commitIdentifier,
                  const SnapshotToCommit& snapshot);
  // writeHead publishes a head for the known commit `commit` under a drawn identifier, at the
  // clock's time.
  [[nodiscard]] std::expected<BackupWrittenHead, BackupWriterFailure> writeHead(
      const format::AuthenticatedBackupCommit& commit);

  format::BackupPackageV1 package_;
  BackupWriterSettings settings_;
  format::BackupIdentifierV1 libraryDomainIdentifier_;
  format::BackupIdentifierV1 writerDeviceIdentifier_;
  Bytes bpmk_;
  std::vector<format::AuthenticatedBackupCommit> commits_;
  std::vector<format::AuthenticatedBackupHead> heads_;
};

}  // namespace galdrine::writer
