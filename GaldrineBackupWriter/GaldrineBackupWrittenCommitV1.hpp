#pragma once
// What the package writer leaves on disk, described for its caller: every file it wrote or
// reused, by kind, with the records and references behind it. Tests find through it the file
// that holds a resource or a commit, and compare what a reader gives back with what was meant.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineAuthenticatedBackupCommitV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineAuthenticatedBackupHeadV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRootV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSemanticSummaryV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadContainerKindV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupSnapshotV1.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"

// One payload file a snapshot requires: a pack segment under packs/ or a chunk under objects/.
struct GaldrineBackupWrittenPayloadFileV1 {
  GaldrineBackupIdentifierV1 identifier{};
  GaldrineBackupPayloadContainerKindV1 container{};
  std::filesystem::path path;
  std::uint64_t fileByteCount = 0;
  GaldrineSHA256Digest fileSHA256{};
  bool newlyWritten = false;  // false: an earlier commit wrote it and this one shares it

  friend bool operator==(const GaldrineBackupWrittenPayloadFileV1&, const GaldrineBackupWrittenPayloadFileV1&) = default;
};

// Where one resource's bytes lie: the files of its parts in part order (one segment for a
// packed resource, one chunk per part otherwise) and the key record that opens them.
struct GaldrineBackupWrittenResourceV1 {
  GaldrineBackupIdentifierV1 identifier{};
  GaldrineBackupIdentifierV1 itemIdentifier{};
  GaldrineBackupPayloadContainerKindV1 container{};
  GaldrineBackupIdentifierV1 payloadKeyIdentifier{};
  std::vector<std::filesystem::path> partFiles;
  std::uint64_t plaintextByteCount = 0;
  GaldrineSHA256Digest plaintextSHA256{};
  bool payloadReused = false;  // true: the payload of an earlier commit was kept

  friend bool operator==(const GaldrineBackupWrittenResourceV1&, const GaldrineBackupWrittenResourceV1&) = default;
};

struct GaldrineBackupWrittenHeadV1 {
  GaldrineAuthenticatedBackupHeadV1 head;
  std::filesystem::path file;

  friend bool operator==(const GaldrineBackupWrittenHeadV1&, const GaldrineBackupWrittenHeadV1&) = default;
};

struct GaldrineBackupWrittenCommitV1 {
  GaldrineBackupIdentifierV1 commitIdentifier{};
  GaldrineAuthenticatedBackupCommitV1 commit;
  std::filesystem::path commitFile;

  GaldrineBackupArtifactReferenceV1 snapshotReference;
  GaldrineBackupSnapshotV1 snapshot;
  std::filesystem::path snapshotFile;
  bool snapshotNewlyWritten = true;  // false: the commit shares the snapshot of an earlier one

  GaldrineBackupManifestRootV1 manifestRoot;
  std::filesystem::path manifestRootFile;
  std::vector<std::filesystem::path> sectionFiles;  // in ordinal order
  GaldrineBackupManifestSemanticSummaryV1 summary;
  std::vector<GaldrineBackupManifestRecordV1> records;  // in section order

  std::vector<GaldrineBackupWrittenResourceV1> resources;      // ascending by identifier
  std::vector<GaldrineBackupWrittenPayloadFileV1> payloadFiles;  // ascending by identifier

  std::optional<GaldrineBackupWrittenHeadV1> head;
  std::optional<std::filesystem::path> convenienceHeadFile;

  // resource gives the resource `identifier`, or nothing.
  [[nodiscard]] const GaldrineBackupWrittenResourceV1* resource(ByteView identifier) const {
    const auto found = std::ranges::find_if(
        resources, [&](const auto& resource) { return GaldrineByteOrder::equal(resource.identifier, identifier); });
    return found == resources.end() ? nullptr : &*found;
  }
};
