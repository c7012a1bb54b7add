#pragma once
// BackupManifestRecordBlobV1 is one manifest record as a section stores it: the sort
// key that orders it (1 to 32 bytes) and its canonical encoding (1 to 1,048,576 bytes). What
// the bytes mean belongs to the record codec; a section only keeps and orders them.

#include <expected>

#include "format/cbor/CBORBorrowedValue.hpp"
#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupGraphV1Error.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class BackupManifestRecordBlobV1 {
 public:
  // make fails with invalidRecordSet when either length is outside its range.
  [[nodiscard]] static std::expected<BackupManifestRecordBlobV1, BackupGraphV1Error> make(Bytes sortKey,
                                                                                          Bytes canonicalRecord);

  [[nodiscard]] const Bytes& sortKey() const { return sortKey_; }
  [[nodiscard]] const Bytes& canonicalRecord() const { return canonicalRecord_; }

  // The CBOR form: an array of exactly 2 byte strings, sort key first.
  [[nodiscard]] CBORValue cborValue() const;
  [[nodiscard]] static bool hasCBORShape(const CBORBorrowedValue& value);
  // fromCBOR checks the shape (malformedArtifact), then copies both strings once into a blob
  // built through make.
  [[nodiscard]] static std::expected<BackupManifestRecordBlobV1, BackupGraphV1Error> fromCBOR(
      const CBORBorrowedValue& value);

  friend bool operator==(const BackupManifestRecordBlobV1&, const BackupManifestRecordBlobV1&) = default;

 private:
  BackupManifestRecordBlobV1(Bytes sortKey, Bytes canonicalRecord);

  Bytes sortKey_;
  Bytes canonicalRecord_;
};

}  // namespace galdrine::format
