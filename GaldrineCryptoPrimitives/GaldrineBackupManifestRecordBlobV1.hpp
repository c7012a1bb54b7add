#pragma once
// GaldrineBackupManifestRecordBlobV1 is one manifest record as a section stores it: the sort
// key that orders it (1 to 32 bytes) and its canonical encoding (1 to 1,048,576 bytes). What
// the bytes mean belongs to the record codec; a section only keeps and orders them.

#include <expected>

#include "GaldrineCore/GaldrineCBORBorrowedValue.hpp"
#include "GaldrineCore/GaldrineCBORValue.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1Error.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupManifestRecordBlobV1 {
 public:
  // make fails with invalidRecordSet when either length is outside its range.
  [[nodiscard]] static std::expected<GaldrineBackupManifestRecordBlobV1, GaldrineBackupGraphV1Error> make(
      Bytes sortKey, Bytes canonicalRecord);

  [[nodiscard]] const Bytes& sortKey() const { return sortKey_; }
  [[nodiscard]] const Bytes& canonicalRecord() const { return canonicalRecord_; }

  // The CBOR form: an array of exactly 2 byte strings, sort key first.
  [[nodiscard]] GaldrineCBORValue cborValue() const;
  [[nodiscard]] static bool hasCBORShape(const GaldrineCBORBorrowedValue& value);
  // fromCBOR checks the shape (malformedArtifact), then copies both strings once into a blob
  // built through make.
  [[nodiscard]] static std::expected<GaldrineBackupManifestRecordBlobV1, GaldrineBackupGraphV1Error> fromCBOR(
      const GaldrineCBORBorrowedValue& value);

  friend bool operator==(const GaldrineBackupManifestRecordBlobV1&, const GaldrineBackupManifestRecordBlobV1&) = default;

 private:
  GaldrineBackupManifestRecordBlobV1(Bytes sortKey, Bytes canonicalRecord);

  Bytes sortKey_;
  Bytes canonicalRecord_;
};
