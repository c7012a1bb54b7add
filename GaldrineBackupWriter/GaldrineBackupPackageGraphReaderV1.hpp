#pragma once
// GaldrineBackupPackageGraphReaderV1 reads back what a package already holds, as the writer
// needs it before it appends: every commit and head, authenticated under the package master key,
// and the snapshot and manifest records of one commit. It trusts nothing it reads: files are
// read with a bound fixed before the read, opened against the references that name them, and
// the graph directories may hold nothing but artifacts of their kind.

#include <expected>
#include <filesystem>
#include <vector>

#include "GaldrineBackupWriter/GaldrineBackupWriterV1Failure.hpp"
#include "GaldrineCore/GaldrineBackupPackageV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineAuthenticatedBackupCommitV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineAuthenticatedBackupHeadV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRootV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupSnapshotV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

// The manifest of one commit, down from its snapshot.
struct GaldrineBackupStoredManifestV1 {
  GaldrineBackupSnapshotV1 snapshot;
  std::filesystem::path snapshotFile;
  GaldrineBackupManifestRootV1 root;
  std::filesystem::path rootFile;
  std::vector<std::filesystem::path> sectionFiles;
  std::vector<GaldrineBackupManifestRecordV1> records;  // in section order
};

namespace GaldrineBackupPackageGraphReaderV1 {

// discoverCommits and discoverHeads list "commits" or "heads" (at most 20,000 names), require
// every name to be the canonical file name of an identifier (unreadablePackage), read each file
// as a regular file of 1 to 66,560 bytes without following a link (unreadablePackage), and
// open it as a discovered commit or head (the graph's error). Results ascend by identifier.
[[nodiscard]] std::expected<std::vector<GaldrineAuthenticatedBackupCommitV1>, GaldrineBackupWriterV1Failure>
discoverCommits(const GaldrineBackupPackageV1& package, ByteView libraryDomainIdentifier, ByteView bpmk);
[[nodiscard]] std::expected<std::vector<GaldrineAuthenticatedBackupHeadV1>, GaldrineBackupWriterV1Failure> discoverHeads(
    const GaldrineBackupPackageV1& package, ByteView libraryDomainIdentifier, ByteView bpmk);

// readManifest reads the snapshot of `commit`, its manifest root and every section, each
// opened against the reference above it (the graph's error), and decodes the records (the
// codec's error). A file that cannot be read within its reference's length is unreadablePackage.
[[nodiscard]] std::expected<GaldrineBackupStoredManifestV1, GaldrineBackupWriterV1Failure> readManifest(
    const GaldrineBackupPackageV1& package, const GaldrineBackupCommitV1& commit, ByteView libraryDomainIdentifier,
    ByteView bpmk);

}  // namespace GaldrineBackupPackageGraphReaderV1
