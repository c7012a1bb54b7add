#pragma once
// BackupManifestRootV1 is the root of one manifest: the record counts, the byte total,
// the digest of the required payload set, and the ordered references to its sections with the
// digest over them.

#include <cstdint>
#include <expected>
#include <vector>

#include "format/graph/BackupGraphV1Error.hpp"
#include "format/graph/BackupManifestCountsV1.hpp"
#include "format/graph/BackupManifestSectionReferenceV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class BackupManifestRootV1 {
 public:
  // make checks, in this order: the three identifiers are 16 bytes (invalidIdentifier);
  // logicalPlaintextByteCount is at most 2^40 (invalidCount); requiredPayloadSetSHA256 is 32
  // bytes (invalidDigest); the section-set rules (BackupGraphV1::validateSectionSet);
  // sectionSetSHA256 equals the digest recomputed over `sections` (verificationFailed).
  [[nodiscard]] static std::expected<BackupManifestRootV1, BackupGraphV1Error> make(
      Bytes identifier, Bytes libraryDomainIdentifier, Bytes snapshotIdentifier, std::int64_t createdAtUTCMilliseconds,
      BackupManifestCountsV1 counts, std::uint64_t logicalPlaintextByteCount, Bytes requiredPayloadSetSHA256,
      std::vector<BackupManifestSectionReferenceV1> sections, Bytes sectionSetSHA256);

  [[nodiscard]] const Bytes& identifier() const { return identifier_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] const Bytes& snapshotIdentifier() const { return snapshotIdentifier_; }
  [[nodiscard]] std::int64_t createdAtUTCMilliseconds() const { return createdAtUTCMilliseconds_; }
  [[nodiscard]] const BackupManifestCountsV1& counts() const { return counts_; }
  [[nodiscard]] std::uint64_t logicalPlaintextByteCount() const { return logicalPlaintextByteCount_; }
  [[nodiscard]] const Bytes& requiredPayloadSetSHA256() const { return requiredPayloadSetSHA256_; }
  [[nodiscard]] const std::vector<BackupManifestSectionReferenceV1>& sections() const { return sections_; }
  [[nodiscard]] const Bytes& sectionSetSHA256() const { return sectionSetSHA256_; }

  // encoded gives the canonical CBOR map under the manifest root limits.
  [[nodiscard]] std::expected<Bytes, BackupGraphV1Error> encoded() const;
  // decode checks the shape of every field and section reference (malformedArtifact), reads
  // the timestamp, the counts and each section reference, then applies the rules of make.
  [[nodiscard]] static std::expected<BackupManifestRootV1, BackupGraphV1Error> decode(ByteView plaintext);

  friend bool operator==(const BackupManifestRootV1&, const BackupManifestRootV1&) = default;

 private:
  BackupManifestRootV1(Bytes identifier, Bytes libraryDomainIdentifier, Bytes snapshotIdentifier,
                       std::int64_t createdAtUTCMilliseconds, BackupManifestCountsV1 counts,
                       std::uint64_t logicalPlaintextByteCount, Bytes requiredPayloadSetSHA256,
                       std::vector<BackupManifestSectionReferenceV1> sections, Bytes sectionSetSHA256);

  Bytes identifier_;
  Bytes libraryDomainIdentifier_;
  Bytes snapshotIdentifier_;
  std::int64_t createdAtUTCMilliseconds_;
  BackupManifestCountsV1 counts_;
  std::uint64_t logicalPlaintextByteCount_;
  Bytes requiredPayloadSetSHA256_;
  std::vector<BackupManifestSectionReferenceV1> sections_;
  Bytes sectionSetSHA256_;
};

}  // namespace galdrine::format
