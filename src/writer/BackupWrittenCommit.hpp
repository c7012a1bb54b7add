#pragma once
// What the package writer leaves on disk, described for its caller: every file it wrote or
// reused, by kind, with the records and references behind it. Tests find through it the file
// that holds a resource or a commit, and compare what a reader gives back with what was meant.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "format/graph/AuthenticatedBackupCommit.hpp"
#include "format/graph/AuthenticatedBackupHead.hpp"
#include "format/graph/BackupIdentifierV1.hpp"
#include "format/graph/BackupManifestRootV1.hpp"
#include "format/graph/BackupSnapshotV1.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"
#include "format/manifest/BackupManifestSemanticValidator.hpp"
#include "format/manifest/BackupPayloadPartRecordV1.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::writer {

// One payload file a snapshot requires: a pack segment under packs/ or a chunk under objects/.
struct BackupWrittenPayloadFile {
  format::BackupIdentifierV1 identifier{};
  format::BackupPayloadContainerKindV1 container{};
  std::filesystem::path path;
  std::uint64_t fileByteCount = 0;
  platform::SHA256Digest fileSHA256{};
  bool newlyWritten = false;  // false: an earlier commit wrote it and this one shares it

  friend bool operator==(const BackupWrittenPayloadFile&, const BackupWrittenPayloadFile&) = default;
};

// Where one resource's bytes lie: the files of its parts in part order (one segment for a
// packed resource, one chunk per part otherwise) and the key record that opens them.
struct BackupWrittenResource {
  format::BackupIdentifierV1 identifier{};
  format::BackupIdentifierV1 itemIdentifier{};
  format::BackupPayloadContainerKindV1 container{};
  format::BackupIdentifierV1 payloadKeyIdentifier{};
  std::vector<std::filesystem::path> partFiles;
  std::uint64_t plaintextByteCount = 0;
  platform::SHA256Digest plaintextSHA256{};
  bool payloadReused = false;  // true: the payload of an earlier commit was kept

  friend bool operator==(const BackupWrittenResource&, const BackupWrittenResource&) = default;
};

struct BackupWrittenHead {
  format::AuthenticatedBackupHead head;
  std::filesystem::path file;

  friend bool operator==(const BackupWrittenHead&, const BackupWrittenHead&) = default;
};

struct BackupWrittenCommit {
  format::BackupIdentifierV1 commitIdentifier{};
  format::AuthenticatedBackupCommit commit;
  std::filesystem::path commitFile;

  format::BackupArtifactReferenceV1 snapshotReference;
  format::BackupSnapshotV1 snapshot;
  std::filesystem::path snapshotFile;  // an earlier commit's when the commit shares its snapshot

  format::BackupManifestRootV1 manifestRoot;
  std::filesystem::path manifestRootFile;
  std::vector<std::filesystem::path> sectionFiles;  // in ordinal order
  format::BackupManifestSemanticSummary summary;
  std::vector<format::BackupManifestRecordV1> records;  // in section order

  std::vector<BackupWrittenResource> resources;        // ascending by identifier
  std::vector<BackupWrittenPayloadFile> payloadFiles;  // ascending by identifier

  std::optional<BackupWrittenHead> head;

  // resource gives the resource `identifier`, or nothing.
  [[nodiscard]] const BackupWrittenResource* resource(ByteView identifier) const {
    const auto found = std::ranges::find_if(
        resources, [&](const auto& resource) { return ByteOrder::equal(resource.identifier, identifier); });
    return found == resources.end() ? nullptr : &*found;
  }
};

}  // namespace galdrine::writer
