#pragma once
// GaldrineBackupTombstoneRecordV1 says that an item was deleted, when, and which of its
// resources (up to 8, possibly none) went with it.

#include <cstdint>
#include <expected>
#include <span>
#include <vector>

#include "GaldrineCore/GaldrineCBORBorrowedValue.hpp"
#include "GaldrineCore/GaldrineCBORValue.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1Error.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupTombstoneRecordV1 {
 public:
  // Fields are read by make and copied; they need to live only for the call.
  struct Fields {
    ByteView itemIdentifier;
    std::int64_t deletedAtUTCMilliseconds;
    std::span<const ByteView> resourceIdentifiers;
  };

  // make checks, in this order: `itemIdentifier` is 16 bytes (invalidIdentifier); at most 8
  // resource identifiers of 16 bytes in strictly ascending order (invalidValue).
  [[nodiscard]] static std::expected<GaldrineBackupTombstoneRecordV1, GaldrineBackupManifestRecordV1Error> make(
      const Fields& fields);
  // fromCBOR reads the decoded record map: its shape and field types (malformedRecord), signed
  // values beyond 64 bits (invalidValue), then the rules of make.
  [[nodiscard]] static std::expected<GaldrineBackupTombstoneRecordV1, GaldrineBackupManifestRecordV1Error> fromCBOR(
      const GaldrineCBORBorrowedValue& value);

  [[nodiscard]] GaldrineCBORValue cborValue() const;
  // sortKey is the item identifier.
  [[nodiscard]] ByteView sortKey() const { return itemIdentifier_; }

  [[nodiscard]] const GaldrineBackupIdentifierV1& itemIdentifier() const { return itemIdentifier_; }
  [[nodiscard]] std::int64_t deletedAtUTCMilliseconds() const { return deletedAtUTCMilliseconds_; }
  [[nodiscard]] const std::vector<GaldrineBackupIdentifierV1>& resourceIdentifiers() const { return resourceIdentifiers_; }

  friend bool operator==(const GaldrineBackupTombstoneRecordV1&, const GaldrineBackupTombstoneRecordV1&) = default;

 private:
  GaldrineBackupTombstoneRecordV1() = default;

  GaldrineBackupIdentifierV1 itemIdentifier_{};
  std::int64_t deletedAtUTCMilliseconds_ = 0;
  std::vector<GaldrineBackupIdentifierV1> resourceIdentifiers_;
};
