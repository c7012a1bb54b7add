#pragma once
// GaldrineBackupManifestSectionV1 is one section of a manifest: 1 to 4,096 record blobs of one
// kind, in strictly ascending order of sort key, at a position (`ordinal`, at most 4,095) of
// the manifest named by `manifestIdentifier`. Sections are never compressed.

#include <cstdint>
#include <expected>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestCompressionV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordBlobV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSectionKindV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupManifestSectionV1 {
 public:
  // make checks, in this order: the three identifiers are 16 bytes (invalidIdentifier); the
  // ordinal is at most 4,095 and there are 1 to 4,096 records (invalidRecordSet); the sort
  // keys strictly ascend (invalidRecordSet); the compression is none (unsupportedCompression).
  [[nodiscard]] static std::expected<GaldrineBackupManifestSectionV1, GaldrineBackupGraphV1Error> make(
      Bytes identifier, Bytes manifestIdentifier, Bytes libraryDomainIdentifier, std::uint64_t ordinal,
      GaldrineBackupManifestSectionKindV1 kind, GaldrineBackupManifestCompressionV1 compression,
      std::vector<GaldrineBackupManifestRecordBlobV1> records);

  [[nodiscard]] const Bytes& identifier() const { return identifier_; }
  [[nodiscard]] const Bytes& manifestIdentifier() const { return manifestIdentifier_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] std::uint64_t ordinal() const { return ordinal_; }
  [[nodiscard]] GaldrineBackupManifestSectionKindV1 kind() const { return kind_; }
  [[nodiscard]] GaldrineBackupManifestCompressionV1 compression() const { return compression_; }
  [[nodiscard]] const std::vector<GaldrineBackupManifestRecordBlobV1>& records() const { return records_; }

  // encoded gives the canonical CBOR map under the section limits; a section whose records
  // do not fit in 8 MiB is malformedArtifact (see encodedByteCount).
  [[nodiscard]] std::expected<Bytes, GaldrineBackupGraphV1Error> encoded() const;
  // encodedByteCount gives the length of the canonical encoding without building it, so a
  // writer can cut records into sections cheaply.
  [[nodiscard]] std::uint64_t encodedByteCount() const;
  // decode reads a section: the shape of every field and every record blob first
  // (malformedArtifact), then each blob's lengths (invalidRecordSet), then the rules of make.
  // Each record's bytes are copied exactly once, out of `plaintext`.
  [[nodiscard]] static std::expected<GaldrineBackupManifestSectionV1, GaldrineBackupGraphV1Error> decode(
      ByteView plaintext);

  friend bool operator==(const GaldrineBackupManifestSectionV1&, const GaldrineBackupManifestSectionV1&) = default;

 private:
  GaldrineBackupManifestSectionV1(Bytes identifier, Bytes manifestIdentifier, Bytes libraryDomainIdentifier,
                                  std::uint64_t ordinal, GaldrineBackupManifestSectionKindV1 kind,
                                  GaldrineBackupManifestCompressionV1 compression,
                                  std::vector<GaldrineBackupManifestRecordBlobV1> records);

  Bytes identifier_;
  Bytes manifestIdentifier_;
  Bytes libraryDomainIdentifier_;
  std::uint64_t ordinal_;
  GaldrineBackupManifestSectionKindV1 kind_;
  GaldrineBackupManifestCompressionV1 compression_;
  std::vector<GaldrineBackupManifestRecordBlobV1> records_;
};
