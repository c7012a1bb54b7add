#pragma once
// BackupManifestSectionV1 is one section of a manifest: 1 to 4,096 record blobs of one
// kind, in strictly ascending order of sort key, at a position (`ordinal`, at most 4,095) of
// the manifest named by `manifestIdentifier`. Sections are never compressed.

#include <cstdint>
#include <expected>
#include <vector>

#include "format/graph/BackupGraphV1Error.hpp"
#include "format/graph/BackupManifestCompressionV1.hpp"
#include "format/graph/BackupManifestSectionKindV1.hpp"
#include "format/manifest/BackupManifestRecordBlobV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class BackupManifestSectionV1 {
 public:
  // make checks, in this order: the three identifiers are 16 bytes (invalidIdentifier); the
  // ordinal is at most 4,095 and there are 1 to 4,096 records (invalidRecordSet); the sort
  // keys strictly ascend (invalidRecordSet); the compression is none (unsupportedCompression).
  [[nodiscard]] static std::expected<BackupManifestSectionV1, BackupGraphV1Error> make(
      Bytes identifier, Bytes manifestIdentifier, Bytes libraryDomainIdentifier, std::uint64_t ordinal,
      BackupManifestSectionKindV1 kind, BackupManifestCompressionV1 compression,
      std::vector<BackupManifestRecordBlobV1> records);

  [[nodiscard]] const Bytes& identifier() const { return identifier_; }
  [[nodiscard]] const Bytes& manifestIdentifier() const { return manifestIdentifier_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] std::uint64_t ordinal() const { return ordinal_; }
  [[nodiscard]] BackupManifestSectionKindV1 kind() const { return kind_; }
  [[nodiscard]] BackupManifestCompressionV1 compression() const { return compression_; }
  [[nodiscard]] const std::vector<BackupManifestRecordBlobV1>& records() const { return records_; }

  // encoded gives the canonical CBOR map under the section limits; a section whose records
  // do not fit in 8 MiB is malformedArtifact (see encodedByteCount).
  [[nodiscard]] std::expected<Bytes, BackupGraphV1Error> encoded() const;
  // encodedByteCount gives the length of the canonical encoding without building it, so a
  // writer can cut records into sections cheaply.
  [[nodiscard]] std::uint64_t encodedByteCount() const;
  // decode reads a section: the shape of every field and every record blob first
  // (malformedArtifact), then each blob's lengths (invalidRecordSet), then the rules of make.
  // Each record's bytes are copied exactly once, out of `plaintext`.
  [[nodiscard]] static std::expected<BackupManifestSectionV1, BackupGraphV1Error> decode(ByteView plaintext);

  friend bool operator==(const BackupManifestSectionV1&, const BackupManifestSectionV1&) = default;

 private:
  BackupManifestSectionV1(Bytes identifier, Bytes manifestIdentifier, Bytes libraryDomainIdentifier,
                          std::uint64_t ordinal, BackupManifestSectionKindV1 kind,
                          BackupManifestCompressionV1 compression, std::vector<BackupManifestRecordBlobV1> records);

  Bytes identifier_;
  Bytes manifestIdentifier_;
  Bytes libraryDomainIdentifier_;
  std::uint64_t ordinal_;
  BackupManifestSectionKindV1 kind_;
  BackupManifestCompressionV1 compression_;
  std::vector<BackupManifestRecordBlobV1> records_;
};

}  // namespace galdrine::format
