#pragma once
// BackupRequiredPayloadSetV1 collects the payload files that a manifest needs: one
// entry per pack segment or chunk file, with its container, length, digest and the payload
// key that opens it, and the places (artifact ordinals) that resource parts occupy in it. It
// belongs to the manifest checks and is built while resources are read.

#include <cstdint>
#include <expected>
#include <vector>

#include "format/graph/BackupIdentifierV1.hpp"
#include "format/manifest/BackupFlatIndex.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "format/manifest/BackupPayloadPartRecordV1.hpp"
#include "format/manifest/BackupRecordSet.hpp"
#include "platform/Bytes.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

class BackupRequiredPayloadSetV1 {
 public:
  struct RequiredArtifact {
    BackupIdentifierV1 identifier;
    BackupPayloadContainerKindV1 container;
    std::uint64_t fileByteCount;
    platform::SHA256Digest fileSHA256;
    BackupIdentifierV1 payloadKeyIdentifier;

    friend bool operator==(const RequiredArtifact&, const RequiredArtifact&) = default;
  };

  // Placement is what a part says of the file that holds it, and of its place there.
  struct Placement {
    BackupIdentifierV1 artifactIdentifier;
    BackupPayloadContainerKindV1 container;
    std::uint64_t artifactOrdinal;
    std::uint64_t fileByteCount;
    platform::SHA256Digest fileSHA256;

    [[nodiscard]] static Placement of(const BackupPayloadPartRecordV1& part) {
      return {part.artifactIdentifier(), part.container(), part.artifactOrdinal(), part.artifactFileByteCount(),
              part.artifactFileSHA256()};
    }
  };

  // reserve makes room for the artifacts and places of `partCount` parts.
  void reserve(std::size_t partCount) {
    artifacts_.reserve(partCount);
    lowPlaces_.reserve(partCount);
  }

  // require enters the artifact of `placement`, opened by `payloadKeyIdentifier`, and occupies
  // the placement's place in it. An artifact known already must agree in every field, and the
  // place must be free; else conflictingReference, and nothing changes.
  [[nodiscard]] std::expected<void, BackupManifestRecordV1Error> require(
      const Placement& placement, const BackupIdentifierV1& payloadKeyIdentifier);

  // encryptedPayloadByteCount sums the files' lengths, each file once; arithmeticOverflow when
  // the sum leaves 64 bits.
  [[nodiscard]] std::expected<std::uint64_t, BackupManifestRecordV1Error> encryptedPayloadByteCount() const;

  // digest is SHA-256 over the domain text, a zero byte, the artifact count, then each artifact
  // by ascending identifier: identifier, container raw value, file length, file digest, key
  // identifier; every number as 8 big-endian bytes.
  [[nodiscard]] Bytes digest() const;

  [[nodiscard]] std::size_t size() const { return artifacts_.size(); }

 private:
  // occupy takes the place `artifactOrdinal` of the artifact at `artifactPosition`, or gives
  // false when it is taken. Packs hold at most 32 parts and most chunk files one, so the low 32
  // places of each artifact are bits of one word; only places beyond go to a set.
  [[nodiscard]] bool occupy(std::size_t artifactPosition, std::uint64_t artifactOrdinal);

  BackupRecordSet<BackupIdentifierV1, RequiredArtifact> artifacts_;
  std::vector<std::uint32_t> lowPlaces_;  // by artifact position: bit k is place k
  BackupFlatIndex<16> highPlaces_;        // artifact position and place, for places from 32
};

}  // namespace galdrine::format
