#pragma once
// BackupArtifactReferenceV1 is how one graph record names another and authenticates
// its bytes: the artifact's identifier, the length and SHA-256 of its whole frame, and the
// length and SHA-256 of its plaintext. Whoever holds a reference can check a frame without
// trusting anything else about it.

#include <cstdint>
#include <expected>

#include "format/cbor/CBORBorrowedValue.hpp"
#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupGraphV1Error.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class BackupArtifactReferenceV1 {
 public:
  // make checks, in this order: the identifier is 16 bytes (invalidIdentifier); neither count
  // is 0 (invalidReference); both digests are 32 bytes (invalidDigest).
  [[nodiscard]] static std::expected<BackupArtifactReferenceV1, BackupGraphV1Error> make(
      Bytes identifier, std::uint64_t frameByteCount, Bytes frameSHA256, std::uint64_t plaintextByteCount,
      Bytes plaintextSHA256);

  [[nodiscard]] const Bytes& identifier() const { return identifier_; }
  [[nodiscard]] std::uint64_t frameByteCount() const { return frameByteCount_; }
  [[nodiscard]] const Bytes& frameSHA256() const { return frameSHA256_; }
  [[nodiscard]] std::uint64_t plaintextByteCount() const { return plaintextByteCount_; }
  [[nodiscard]] const Bytes& plaintextSHA256() const { return plaintextSHA256_; }

  // The CBOR form: an array of the five fields in the order above.
  [[nodiscard]] CBORValue cborValue() const;
  // hasCBORShape: an array of exactly 5 items of the kinds bytes, unsigned, bytes, unsigned,
  // bytes. A value without it is malformedArtifact wherever it is read.
  [[nodiscard]] static bool hasCBORShape(const CBORBorrowedValue& value);
  // fromCBOR checks the shape, then builds the reference through make.
  [[nodiscard]] static std::expected<BackupArtifactReferenceV1, BackupGraphV1Error> fromCBOR(
      const CBORBorrowedValue& value);

  friend bool operator==(const BackupArtifactReferenceV1&, const BackupArtifactReferenceV1&) = default;

 private:
  BackupArtifactReferenceV1(Bytes identifier, std::uint64_t frameByteCount, Bytes frameSHA256,
                            std::uint64_t plaintextByteCount, Bytes plaintextSHA256);

  Bytes identifier_;
  std::uint64_t frameByteCount_;
  Bytes frameSHA256_;
  std::uint64_t plaintextByteCount_;
  Bytes plaintextSHA256_;
};

}  // namespace galdrine::format
