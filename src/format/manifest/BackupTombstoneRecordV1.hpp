#pragma once
// BackupTombstoneRecordV1 says that an item was deleted, when, and which of its
// resources (up to 8, possibly none) went with it.

#include <cstdint>
#include <expected>
#include <span>
#include <vector>

#include "format/cbor/CBORBorrowedValue.hpp"
#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupIdentifierV1.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

class BackupTombstoneRecordV1 {
 public:
  // Fields are read by make and copied; they need to live only for the call.
  struct Fields {
    ByteView itemIdentifier;
    std::int64_t deletedAtUTCMilliseconds;
    std::span<const ByteView> resourceIdentifiers;
  };

  // make checks, in this order: `itemIdentifier` is 16 bytes (invalidIdentifier); at most 8
  // resource identifiers of 16 bytes in strictly ascending order (invalidValue).
  [[nodiscard]] static std::expected<BackupTombstoneRecordV1, BackupManifestRecordV1Error> make(const Fields& fields);
  // fromCBOR reads the decoded record map: its shape and field types (malformedRecord), signed
  // values beyond 64 bits (invalidValue), then the rules of make.
  [[nodiscard]] static std::expected<BackupTombstoneRecordV1, BackupManifestRecordV1Error> fromCBOR(
      const CBORBorrowedValue& value);

  [[nodiscard]] CBORValue cborValue() const;
  // sortKey is the item identifier.
  [[nodiscard]] ByteView sortKey() const { return itemIdentifier_; }

  [[nodiscard]] const BackupIdentifierV1& itemIdentifier() const { return itemIdentifier_; }
  [[nodiscard]] std::int64_t deletedAtUTCMilliseconds() const { return deletedAtUTCMilliseconds_; }
  [[nodiscard]] const std::vector<BackupIdentifierV1>& resourceIdentifiers() const { return resourceIdentifiers_; }

  friend bool operator==(const BackupTombstoneRecordV1&, const BackupTombstoneRecordV1&) = default;

 private:
  BackupTombstoneRecordV1() = default;

  BackupIdentifierV1 itemIdentifier_{};
  std::int64_t deletedAtUTCMilliseconds_ = 0;
  std::vector<BackupIdentifierV1> resourceIdentifiers_;
};

}  // namespace galdrine::format
