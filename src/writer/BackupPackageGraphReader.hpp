#pragma once
// BackupPackageGraphReader reads back what a package already holds, as the writer
// needs it before it appends: every commit and head, authenticated under the package master key,
// and the snapshot and manifest records of one commit. It trusts nothing it reads: files are
// read with a bound fixed before the read, opened against the references that name them, and
// the graph directories may hold nothing but artifacts of their kind.

#include <expected>
#include <filesystem>
#include <vector>

#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/graph/AuthenticatedBackupHead.hpp"
#include "format/graph/BackupManifestRootV1.hpp"
#include "format/graph/BackupSnapshotV1.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"
#include "format/package/BackupPackageV1.hpp"
#include "platform/Bytes.hpp"
#include "writer/BackupWriterFailure.hpp"

namespace galdrine::writer {

// The manifest of one commit, down from its snapshot.
struct BackupStoredManifest {
  format::BackupSnapshotV1 snapshot;
  std::filesystem::path snapshotFile;
  format::BackupManifestRootV1 root;
  std::filesystem::path rootFile;
  std::vector<std::filesystem::path> sectionFiles;
  std::vector<format::BackupManifestRecordV1> records;  // in section order
};

namespace BackupPackageGraphReader {

// discoverCommits and discoverHeads list "commits" or "heads" (at most 20,000 names), require
// every name to be the canonical file name of an identifier (unreadablePackage), read each file
// as a regular file of 1 to 66,560 bytes without following a link (unreadablePackage), and
// open it as a discovered commit or head (the graph's error). Results ascend by identifier.
[[nodiscard]] std::expected<std::vector<format::AuthenticatedBackupCommit>, BackupWriterFailure> discoverCommits(
    const format::BackupPackageV1& package, ByteView libraryDomainIdentifier, ByteView bpmk);
[[nodiscard]] std::expected<std::vector<format::AuthenticatedBackupHead>, BackupWriterFailure> discoverHeads(
    const format::BackupPackageV1& package, ByteView libraryDomainIdentifier, ByteView bpmk);

// readManifest reads the snapshot of `commit`, its manifest root and every section, each
// opened against the reference above it (the graph's error), and decodes the records (the
// codec's error). A file that cannot be read within its reference's length is unreadablePackage.
[[nodiscard]] std::expected<BackupStoredManifest, BackupWriterFailure> readManifest(
    const format::BackupPackageV1& package, const format::BackupCommitV1& commit, ByteView libraryDomainIdentifier,
    ByteView bpmk);

}  // namespace BackupPackageGraphReader

}  // namespace galdrine::writer
