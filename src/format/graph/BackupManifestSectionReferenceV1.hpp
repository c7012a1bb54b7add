#pragma once
// BackupManifestSectionReferenceV1 is how a manifest root names one of its sections:
// the artifact reference of the section's frame, and what the section must hold once opened
// (ordinal, kind, record count, first and last sort key, decoded length and digest).

#include <cstdint>
#include <expected>

#include "format/cbor/CBORBorrowedValue.hpp"
#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupArtifactReferenceV1.hpp"
#include "format/graph/BackupGraphV1Error.hpp"
#include "format/graph/BackupManifestCompressionV1.hpp"
#include "format/graph/BackupManifestSectionKindV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class BackupManifestSectionReferenceV1 {
 public:
  // make checks, in this order, each failure invalidReference unless told otherwise:
  // ordinal at most 4,095, recordCount 1 to 4,096, both sort keys 1 to 32 bytes; lastSortKey
  // does not precede firstSortKey; decodedPlaintextByteCount 1 to 8,388,608;
  // decodedPlaintextSHA256 32 bytes; compression none (unsupportedCompression); the artifact's
  // plaintext length and digest equal the decoded ones.
  [[nodiscard]] static std::expected<BackupManifestSectionReferenceV1, BackupGraphV1Error> make(
      BackupArtifactReferenceV1 artifact, std::uint64_t ordinal, BackupManifestSectionKindV1 kind,
      BackupManifestCompressionV1 compression, std::uint64_t recordCount, Bytes firstSortKey, Bytes lastSortKey,
      std::uint64_t decodedPlaintextByteCount, Bytes decodedPlaintextSHA256);

  [[nodiscard]] const BackupArtifactReferenceV1& artifact() const { return artifact_; }
  [[nodiscard]] std::uint64_t ordinal() const { return ordinal_; }
  [[nodiscard]] BackupManifestSectionKindV1 kind() const { return kind_; }
  [[nodiscard]] BackupManifestCompressionV1 compression() const { return compression_; }
  [[nodiscard]] std::uint64_t recordCount() const { return recordCount_; }
  [[nodiscard]] const Bytes& firstSortKey() const { return firstSortKey_; }
  [[nodiscard]] const Bytes& lastSortKey() const { return lastSortKey_; }
  [[nodiscard]] std::uint64_t decodedPlaintextByteCount() const { return decodedPlaintextByteCount_; }
  [[nodiscard]] const Bytes& decodedPlaintextSHA256() const { return decodedPlaintextSHA256_; }

  // The CBOR form: an array of the nine fields in the order above.
  [[nodiscard]] CBORValue cborValue() const;
  // hasCBORShape: 9 items of the listed kinds, the artifact reference shaped as one, kind in
  // 0...6 and compression in 0...1.
  [[nodiscard]] static bool hasCBORShape(const CBORBorrowedValue& value);
  // fromCBOR checks the shape (malformedArtifact), reads the artifact reference, then builds
  // the section reference through make.
  [[nodiscard]] static std::expected<BackupManifestSectionReferenceV1, BackupGraphV1Error> fromCBOR(
      const CBORBorrowedValue& value);

  friend bool operator==(const BackupManifestSectionReferenceV1&, const BackupManifestSectionReferenceV1&) = default;

 private:
  BackupManifestSectionReferenceV1(BackupArtifactReferenceV1 artifact, std::uint64_t ordinal,
                                   BackupManifestSectionKindV1 kind, BackupManifestCompressionV1 compression,
                                   std::uint64_t recordCount, Bytes firstSortKey, Bytes lastSortKey,
                                   std::uint64_t decodedPlaintextByteCount, Bytes decodedPlaintextSHA256);

  BackupArtifactReferenceV1 artifact_;
  std::uint64_t ordinal_;
  BackupManifestSectionKindV1 kind_;
  BackupManifestCompressionV1 compression_;
  std::uint64_t recordCount_;
  Bytes firstSortKey_;
  Bytes lastSortKey_;
  std::uint64_t decodedPlaintextByteCount_;
  Bytes decodedPlaintextSHA256_;
};

}  // namespace galdrine::format
