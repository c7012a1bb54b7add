#pragma once
// GaldrineBackupSnapshotV1 is one state of a library: it names the manifest root that
// catalogues it and repeats the manifest's section-set digest, payload-set digest, counts and
// byte totals, so a reader can check the manifest against the snapshot that led to it.

#include <cstdint>
#include <expected>

#include "GaldrineCryptoPrimitives/GaldrineBackupArtifactReferenceV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestCountsV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupSnapshotV1 {
 public:
  // make checks, in this order: identifier and libraryDomainIdentifier are 16 bytes
  // (invalidIdentifier); both digests are 32 bytes (invalidDigest); both byte totals are at
  // most 2^40 (invalidCount).
  [[nodiscard]] static std::expected<GaldrineBackupSnapshotV1, GaldrineBackupGraphV1Error> make(
      Bytes identifier, Bytes libraryDomainIdentifier, std::int64_t createdAtUTCMilliseconds,
      GaldrineBackupArtifactReferenceV1 manifest, Bytes manifestSectionSetSHA256, Bytes requiredPayloadSetSHA256,
      GaldrineBackupManifestCountsV1 counts, std::uint64_t logicalPlaintextByteCount,
      std::uint64_t encryptedPayloadByteCount);

  [[nodiscard]] const Bytes& identifier() const { return identifier_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] std::int64_t createdAtUTCMilliseconds() const { return createdAtUTCMilliseconds_; }
  [[nodiscard]] const GaldrineBackupArtifactReferenceV1& manifest() const { return manifest_; }
  [[nodiscard]] const Bytes& manifestSectionSetSHA256() const { return manifestSectionSetSHA256_; }
  [[nodiscard]] const Bytes& requiredPayloadSetSHA256() const { return requiredPayloadSetSHA256_; }
  [[nodiscard]] const GaldrineBackupManifestCountsV1& counts() const { return counts_; }
  [[nodiscard]] std::uint64_t logicalPlaintextByteCount() const { return logicalPlaintextByteCount_; }
  [[nodiscard]] std::uint64_t encryptedPayloadByteCount() const { return encryptedPayloadByteCount_; }

  // encoded gives the canonical CBOR map under the graph descriptor limits.
  [[nodiscard]] std::expected<Bytes, GaldrineBackupGraphV1Error> encoded() const;
  // decode checks the shape of every field (malformedArtifact), reads the timestamp, the
  // manifest reference and the counts, then applies the rules of make.
  [[nodiscard]] static std::expected<GaldrineBackupSnapshotV1, GaldrineBackupGraphV1Error> decode(ByteView plaintext);

  friend bool operator==(const GaldrineBackupSnapshotV1&, const GaldrineBackupSnapshotV1&) = default;

 private:
  GaldrineBackupSnapshotV1(Bytes identifier, Bytes libraryDomainIdentifier, std::int64_t createdAtUTCMilliseconds,
                           GaldrineBackupArtifactReferenceV1 manifest, Bytes manifestSectionSetSHA256,
                           Bytes requiredPayloadSetSHA256, GaldrineBackupManifestCountsV1 counts,
                           std::uint64_t logicalPlaintextByteCount, std::uint64_t encryptedPayloadByteCount);

  Bytes identifier_;
  Bytes libraryDomainIdentifier_;
  std::int64_t createdAtUTCMilliseconds_;
  GaldrineBackupArtifactReferenceV1 manifest_;
  Bytes manifestSectionSetSHA256_;
  Bytes requiredPayloadSetSHA256_;
  GaldrineBackupManifestCountsV1 counts_;
  std::uint64_t logicalPlaintextByteCount_;
  std::uint64_t encryptedPayloadByteCount_;
};
