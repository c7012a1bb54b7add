#pragma once
// GaldrineBackupPackageWriterV1 writes backup packages: it creates one with its key envelopes,
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

#include "GaldrineBackupWriter/GaldrineBackupCommitRequestV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupLibrarySnapshotV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupLineageV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupWriterSettingsV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupWriterV1Failure.hpp"
#include "GaldrineBackupWriter/GaldrineBackupWrittenCommitV1.hpp"
#include "GaldrineCore/GaldrineBackupPackageV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineAuthenticatedBackupCommitV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineAuthenticatedBackupHeadV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupCommitGraphScanV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

// The credentials of a new package: a backup passphrase, 32 recovery key bytes, or both. They
// stay the caller's; the writer keeps no copy.
struct GaldrineBackupPackageCredentialsV1 {
  std::optional<ByteView> backupPassphrase;
  std::optional<ByteView> recoveryKey;
};

// Identifiers of a new package that the caller may fix; absent ones are drawn.
struct GaldrineBackupPackageIdentityV1 {
  std::optional<GaldrineBackupIdentifierV1> packageIdentifier;
  std::optional<GaldrineBackupIdentifierV1> libraryDomainIdentifier;
};

class GaldrineBackupPackageWriterV1 {
 public:
  // create makes a new package at `packageURL`. In this order: a credential must be given
  // (missingCredential); the layout must be valid (invalidLayout); a passphrase must pass the
  // backup passphrase policy and a recovery key be 32 bytes (the envelope's invalidCredential
  // and invalidRecoveryKeyByteCount); identifiers, the master key (32 random bytes) and the
  // envelopes are made (randomSourceFailed, the envelope's errors); only then is the package
  // created (the package's errors) and key-envelopes.cbor written with one active envelope per
  // credential (the envelope file's errors). A package whose envelope file could not be written
  // is removed again, so a failure leaves nothing at `packageURL`.
  [[nodiscard]] static std::expected<GaldrineBackupPackageWriterV1, GaldrineBackupWriterV1Failure> create(
      const std::filesystem::path& packageURL, const GaldrineBackupPackageCredentialsV1& credentials,
      GaldrineBackupWriterSettingsV1 settings = {}, const GaldrineBackupPackageIdentityV1& identity = {});

  // openWithBackupPassphrase and openWithRecoveryKey open an existing package for appending: the
  // package (its errors), its envelope file (its errors), the active envelope of the factor
  // (credentialFactorUnavailable), its opening (the envelope's errors, authenticationFailed for
  // a wrong credential), and every commit and head in it (unreadablePackage, the graph's
  // errors), whose graph must be sound (the commit graph's errors).
  [[nodiscard]] static std::expected<GaldrineBackupPackageWriterV1, GaldrineBackupWriterV1Failure>
  openWithBackupPassphrase(const std::filesystem::path& packageURL, ByteView passphrase,
                           GaldrineBackupWriterSettingsV1 settings = {});
  [[nodiscard]] static std::expected<GaldrineBackupPackageWriterV1, GaldrineBackupWriterV1Failure> openWithRecoveryKey(
      const std::filesystem::path& packageURL, ByteView recoveryKey, GaldrineBackupWriterSettingsV1 settings = {});

  GaldrineBackupPackageWriterV1(GaldrineBackupPackageWriterV1&& other) noexcept;
  GaldrineBackupPackageWriterV1& operator=(GaldrineBackupPackageWriterV1&&) = delete;
  GaldrineBackupPackageWriterV1(const GaldrineBackupPackageWriterV1&) = delete;
  GaldrineBackupPackageWriterV1& operator=(const GaldrineBackupPackageWriterV1&) = delete;
  ~GaldrineBackupPackageWriterV1();

  // writeCommit stores `library` as a new snapshot and commits it where `request` says. A
  // resource whose identifier, length and SHA-256 equal those of a resource in the parent or in
  // an acknowledged tip keeps that payload (its files and its key record) instead of being
  // written again; "retained" content must find such a resource (unknownRetainedResource).
  // Resources of up to the layout's packed size go into pack segments, larger ones into chunks.
  // Failures: the lineage (unknownCommit, readOnlyFork, nothingToHeal, invalidLineage, the
  // commit graph's errors), the content (contentUnavailable, contentChanged, resourceTooLarge),
  // the records and the manifest (the record's and the validator's errors, manifestTooLarge),
  // and every write (the payload writer's and the file calls' errors).
  [[nodiscard]] std::expected<GaldrineBackupWrittenCommitV1, GaldrineBackupWriterV1Failure> writeCommit(
      const GaldrineBackupLibrarySnapshotV1& library, const GaldrineBackupCommitRequestV1& request = {});

  // writeCommitSharingSnapshot commits the snapshot of the commit `snapshotOf` again, without
  // writing any snapshot, manifest or payload; the new commit carries that snapshot's time.
  [[nodiscard]] std::expected<GaldrineBackupWrittenCommitV1, GaldrineBackupWriterV1Failure> writeCommitSharingSnapshot(
      const GaldrineBackupIdentifierV1& snapshotOf, const GaldrineBackupCommitRequestV1& request = {});

  // writeHead publishes a head for the commit `commitIdentifier` (unknownCommit), with the
  // given identifier or a drawn one, at the clock's time.
  [[nodiscard]] std::expected<GaldrineBackupWrittenHeadV1, GaldrineBackupWriterV1Failure> writeHead(
      const GaldrineBackupIdentifierV1& commitIdentifier,
      const std::optional<GaldrineBackupIdentifierV1>& headIdentifier = std::nullopt);

  // writeConvenienceHead writes HEAD as the commit's identifier in 32 lower-case hexadecimal
  // digits and a line feed, replacing an earlier HEAD (unknownCommit for a commit not in the
  // package).
  [[nodiscard]] std::expected<std::filesystem::path, GaldrineBackupWriterV1Failure> writeConvenienceHead(
      const GaldrineBackupIdentifierV1& commitIdentifier);

  // scan is the commit graph's verdict on the commits and heads the writer knows.
  [[nodiscard]] std::expected<GaldrineBackupCommitGraphScanV1, GaldrineBackupWriterV1Failure> scan() const;

  [[nodiscard]] const GaldrineBackupPackageV1& package() const { return package_; }
  [[nodiscard]] const GaldrineBackupIdentifierV1& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] const GaldrineBackupIdentifierV1& writerDeviceIdentifier() const { return writerDeviceIdentifier_; }
  // backupPackageMasterKey lends the unlocked key for the writer's lifetime, so that tests can
  // open what was written; it is wiped when the writer goes away.
  [[nodiscard]] ByteView backupPackageMasterKey() const { return bpmk_; }
  [[nodiscard]] std::span<const GaldrineAuthenticatedBackupCommitV1> commits() const { return commits_; }
  [[nodiscard]] std::span<const GaldrineAuthenticatedBackupHeadV1> heads() const { return heads_; }

 private:
  GaldrineBackupPackageWriterV1(GaldrineBackupPackageV1 package, GaldrineBackupWriterSettingsV1 settings,
                                GaldrineBackupIdentifierV1 libraryDomainIdentifier,
                                GaldrineBackupIdentifierV1 writerDeviceIdentifier, Bytes bpmk);

  [[nodiscard]] static std::expected<GaldrineBackupPackageWriterV1, GaldrineBackupWriterV1Failure> openUnlocked(
      GaldrineBackupPackageV1 package, GaldrineBackupWriterSettingsV1 settings,
      GaldrineBackupIdentifierV1 libraryDomainIdentifier, Bytes bpmk);

  [[nodiscard]] const GaldrineAuthenticatedBackupCommitV1* findCommit(ByteView identifier) const;

  // SnapshotToCommit is a stored snapshot with its manifest, ready for a commit to name it.
  struct SnapshotToCommit;
  [[nodiscard]] std::expected<GaldrineBackupWrittenCommitV1, GaldrineBackupWriterV1Failure> commitSnapshot(
      const GaldrineBackupLineageV1& lineage, const GaldrineBackupIdentifierV1& commitIdentifier,
      SnapshotToCommit snapshot, const GaldrineBackupCommitRequestV1& request);
  // writeCommitFile seals the commit, proves it sound in the graph, writes its file and adds it
  // to the known commits.
  [[nodiscard]] std::expected<std::pair<GaldrineAuthenticatedBackupCommitV1, std::filesystem::path>,
                              GaldrineBackupWriterV1Failure>
  writeCommitFile(const GaldrineBackupLineageV1& lineage, const GaldrineBackupIdentifierV1& commitIdentifier,
                  const SnapshotToCommit& snapshot);
  // publish writes the head and HEAD the request asks for, and notes them in `written`.
  [[nodiscard]] std::expected<void, GaldrineBackupWriterV1Failure> publish(const GaldrineBackupCommitRequestV1& request,
                                                                           GaldrineBackupWrittenCommitV1& written);

  GaldrineBackupPackageV1 package_;
  GaldrineBackupWriterSettingsV1 settings_;
  GaldrineBackupIdentifierV1 libraryDomainIdentifier_;
  GaldrineBackupIdentifierV1 writerDeviceIdentifier_;
  Bytes bpmk_;
  std::vector<GaldrineAuthenticatedBackupCommitV1> commits_;
  std::vector<GaldrineAuthenticatedBackupHeadV1> heads_;
};
