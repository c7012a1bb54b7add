#pragma once
// BackupSnapshotV1 is one state of a library: it names the manifest root that
// catalogues it and repeats the manifest's section-set digest, payload-set digest, counts and
// byte totals, so a reader can check the manifest against the snapshot that led to it.

#include <cstdint>
#include <expected>

#include "format/graph/BackupArtifactReferenceV1.hpp"
#include "format/graph/BackupGraphV1Error.hpp"
#include "format/graph/BackupManifestCountsV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class BackupSnapshotV1 {
 public:
  // make checks, in this order: identifier and libraryDomainIdentifier are 16 bytes
  // (invalidIdentifier); both digests are 32 bytes (invalidDigest); both byte totals are at
  // most 2^40 (invalidCount).
  [[nodiscard]] static std::expected<BackupSnapshotV1, BackupGraphV1Error> make(
      Bytes identifier, Bytes libraryDomainIdentifier, std::int64_t createdAtUTCMilliseconds,
      BackupArtifactReferenceV1 manifest, Bytes manifestSectionSetSHA256, Bytes requiredPayloadSetSHA256,
      BackupManifestCountsV1 counts, std::uint64_t logicalPlaintextByteCount, std::uint64_t encryptedPayloadByteCount);

  [[nodiscard]] const Bytes& identifier() const { return identifier_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] std::int64_t createdAtUTCMilliseconds() const { return createdAtUTCMilliseconds_; }
  [[nodiscard]] const BackupArtifactReferenceV1& manifest() const { return manifest_; }
  [[nodiscard]] const Bytes& manifestSectionSetSHA256() const { return manifestSectionSetSHA256_; }
  [[nodiscard]] const Bytes& requiredPayloadSetSHA256() const { return requiredPayloadSetSHA256_; }
  [[nodiscard]] const BackupManifestCountsV1& counts() const { return counts_; }
  [[nodiscard]] std::uint64_t logicalPlaintextByteCount() const { return logicalPlaintextByteCount_; }
  [[nodiscard]] std::uint64_t encryptedPayloadByteCount() const { return encryptedPayloadByteCount_; }

  // encoded gives the canonical CBOR map under the graph descriptor limits.
  [[nodiscard]] std::expected<Bytes, BackupGraphV1Error> encoded() const;
  // decode checks the shape of every field (malformedArtifact), reads the timestamp, the
  // manifest reference and the counts, then applies the rules of make.
  [[nodiscard]] static std::expected<BackupSnapshotV1, BackupGraphV1Error> decode(ByteView plaintext);

  friend bool operator==(const BackupSnapshotV1&, const BackupSnapshotV1&) = default;

 private:
  BackupSnapshotV1(Bytes identifier, Bytes libraryDomainIdentifier, std::int64_t createdAtUTCMilliseconds,
                   BackupArtifactReferenceV1 manifest, Bytes manifestSectionSetSHA256, Bytes requiredPayloadSetSHA256,
                   BackupManifestCountsV1 counts, std::uint64_t logicalPlaintextByteCount,
                   std::uint64_t encryptedPayloadByteCount);

  Bytes identifier_;
  Bytes libraryDomainIdentifier_;
  std::int64_t createdAtUTCMilliseconds_;
  BackupArtifactReferenceV1 manifest_;
  Bytes manifestSectionSetSHA256_;
  Bytes requiredPayloadSetSHA256_;
  BackupManifestCountsV1 counts_;
  std::uint64_t logicalPlaintextByteCount_;
  std::uint64_t encryptedPayloadByteCount_;
};

}  // namespace galdrine::format
