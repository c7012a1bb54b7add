#pragma once
// GaldrineBackupManifestRootV1 is the root of one manifest: the record counts, the byte total,
// the digest of the required payload set, and the ordered references to its sections with the
// digest over them.

#include <cstdint>
#include <expected>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestCountsV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSectionReferenceV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupManifestRootV1 {
 public:
  // make checks, in this order: the three identifiers are 16 bytes (invalidIdentifier);
  // logicalPlaintextByteCount is at most 2^40 (invalidCount); requiredPayloadSetSHA256 is 32
  // bytes (invalidDigest); the section-set rules (GaldrineBackupGraphV1::validateSectionSet);
  // sectionSetSHA256 equals the digest recomputed over `sections` (verificationFailed).
  [[nodiscard]] static std::expected<GaldrineBackupManifestRootV1, GaldrineBackupGraphV1Error> make(
      Bytes identifier, Bytes libraryDomainIdentifier, Bytes snapshotIdentifier, std::int64_t createdAtUTCMilliseconds,
      GaldrineBackupManifestCountsV1 counts, std::uint64_t logicalPlaintextByteCount, Bytes requiredPayloadSetSHA256,
      std::vector<GaldrineBackupManifestSectionReferenceV1> sections, Bytes sectionSetSHA256);

  [[nodiscard]] const Bytes& identifier() const { return identifier_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] const Bytes& snapshotIdentifier() const { return snapshotIdentifier_; }
  [[nodiscard]] std::int64_t createdAtUTCMilliseconds() const { return createdAtUTCMilliseconds_; }
  [[nodiscard]] const GaldrineBackupManifestCountsV1& counts() const { return counts_; }
  [[nodiscard]] std::uint64_t logicalPlaintextByteCount() const { return logicalPlaintextByteCount_; }
  [[nodiscard]] const Bytes& requiredPayloadSetSHA256() const { return requiredPayloadSetSHA256_; }
  [[nodiscard]] const std::vector<GaldrineBackupManifestSectionReferenceV1>& sections() const { return sections_; }
  [[nodiscard]] const Bytes& sectionSetSHA256() const { return sectionSetSHA256_; }

  // encoded gives the canonical CBOR map under the manifest root limits.
  [[nodiscard]] std::expected<Bytes, GaldrineBackupGraphV1Error> encoded() const;
  // decode checks the shape of every field and section reference (malformedArtifact), reads
  // the timestamp, the counts and each section reference, then applies the rules of make.
  [[nodiscard]] static std::expected<GaldrineBackupManifestRootV1, GaldrineBackupGraphV1Error> decode(ByteView plaintext);

  friend bool operator==(const GaldrineBackupManifestRootV1&, const GaldrineBackupManifestRootV1&) = default;

 private:
  GaldrineBackupManifestRootV1(Bytes identifier, Bytes libraryDomainIdentifier, Bytes snapshotIdentifier,
                               std::int64_t createdAtUTCMilliseconds, GaldrineBackupManifestCountsV1 counts,
                               std::uint64_t logicalPlaintextByteCount, Bytes requiredPayloadSetSHA256,
                               std::vector<GaldrineBackupManifestSectionReferenceV1> sections, Bytes sectionSetSHA256);

  Bytes identifier_;
  Bytes libraryDomainIdentifier_;
  Bytes snapshotIdentifier_;
  std::int64_t createdAtUTCMilliseconds_;
  GaldrineBackupManifestCountsV1 counts_;
  std::uint64_t logicalPlaintextByteCount_;
  Bytes requiredPayloadSetSHA256_;
  std::vector<GaldrineBackupManifestSectionReferenceV1> sections_;
  Bytes sectionSetSHA256_;
};
