#pragma once
// GaldrineBackupRequiredPayloadSetV1 collects the payload files that a manifest needs: one
// entry per pack segment or chunk file, with its container, length, digest and the payload
// key that opens it, and the places (artifact ordinals) that resource parts occupy in it. It
// belongs to the manifest checks and is built while resources are read.

#include <cstdint>
#include <expected>
#include <unordered_set>

#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierHasherV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadContainerKindV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadPartRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupRecordSetV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"

class GaldrineBackupRequiredPayloadSetV1 {
 public:
  struct RequiredArtifact {
    GaldrineBackupIdentifierV1 identifier;
    GaldrineBackupPayloadContainerKindV1 container;
    std::uint64_t fileByteCount;
    GaldrineSHA256Digest fileSHA256;
    GaldrineBackupIdentifierV1 payloadKeyIdentifier;

    friend bool operator==(const RequiredArtifact&, const RequiredArtifact&) = default;
  };

  // require enters the artifact that holds `part`, opened by `payloadKeyIdentifier`, and
  // occupies the part's place in it. An artifact known already must agree in every field, and
  // the place must be free; else conflictingReference, and nothing changes.
  [[nodiscard]] std::expected<void, GaldrineBackupManifestRecordV1Error> require(
      const GaldrineBackupPayloadPartRecordV1& part, const GaldrineBackupIdentifierV1& payloadKeyIdentifier);

  // encryptedPayloadByteCount sums the files' lengths, each file once; arithmeticOverflow when
  // the sum leaves 64 bits.
  [[nodiscard]] std::expected<std::uint64_t, GaldrineBackupManifestRecordV1Error> encryptedPayloadByteCount() const;

  // digest is SHA-256 over the domain text, a zero byte, the artifact count, then each artifact
  // by ascending identifier: identifier, container raw value, file length, file digest, key
  // identifier; every number as 8 big-endian bytes.
  [[nodiscard]] Bytes digest() const;

  [[nodiscard]] std::size_t size() const { return artifacts_.size(); }

 private:
  // A place is the artifact's position in the set and an ordinal within it.
  using Place = std::array<std::uint8_t, 16>;
  [[nodiscard]] static Place placeOf(std::uint64_t artifactPosition, std::uint64_t artifactOrdinal);

  GaldrineBackupRecordSetV1<GaldrineBackupIdentifierV1, RequiredArtifact> artifacts_;
  std::unordered_set<Place, GaldrineBackupIdentifierHasherV1> occupiedPlaces_;
};
