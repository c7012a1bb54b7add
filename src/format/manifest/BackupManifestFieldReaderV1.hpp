#pragma once
// BackupManifestFieldReaderV1 reads the fields of one decoded manifest record. A record
// is judged in a fixed order: its shape and every field's CBOR type first (malformedRecord),
// then signed values outside the signed 64-bit range (invalidValue), and only then the rules
// of the record's constructor. So the reader never stops at a fault: it notes it, hands out a
// neutral value, and `verdict` tells the first kind of fault once every field has been read.
// Readers of nested arrays (a resource's parts) share the faults of their record.
//
// The reader holds views into the decoded value, which must outlive it and every view it gave.

#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "format/cbor/CBORBorrowedValue.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "platform/Bytes.hpp"
#include "platform/RawValue.hpp"

namespace galdrine::format {

class BackupManifestFieldReaderV1 {
 public:
  struct Faults {
    bool malformed = false;
    bool signedValueOutOfRange = false;
  };

  // forRecord reads a map whose key set is exactly {0, ..., lastKey} and whose key 0 is the
  // text `schema`; field k is then the map's value under key k.
  [[nodiscard]] static BackupManifestFieldReaderV1 forRecord(Faults& faults, const CBORBorrowedValue& value,
                                                             std::string_view schema, std::uint64_t lastKey);
  // forArray reads an array of exactly `itemCount` items; field k is the item at position k.
  [[nodiscard]] static BackupManifestFieldReaderV1 forArray(Faults& faults, const CBORBorrowedValue& value,
                                                            std::uint64_t itemCount);

  [[nodiscard]] ByteView bytes(std::uint64_t field) const;
  [[nodiscard]] std::optional<ByteView> optionalBytes(std::uint64_t field) const;
  [[nodiscard]] std::string_view text(std::uint64_t field) const;
  [[nodiscard]] bool boolean(std::uint64_t field) const;
  [[nodiscard]] std::uint64_t unsignedInteger(std::uint64_t field) const;
  [[nodiscard]] std::optional<std::uint64_t> optionalUnsignedInteger(std::uint64_t field) const;
  [[nodiscard]] std::int64_t signedInteger(std::uint64_t field) const;
  [[nodiscard]] std::optional<std::int64_t> optionalSignedInteger(std::uint64_t field) const;
  // byteStrings reads an array of byte strings.
  [[nodiscard]] std::vector<ByteView> byteStrings(std::uint64_t field) const;
  // items reads an array whose items the caller reads further.
  [[nodiscard]] std::span<const CBORBorrowedValue> items(std::uint64_t field) const;

  // enumeration reads an unsigned raw value; one outside the enumeration's list is malformed.
  template <RawRepresentable Enumeration>
  [[nodiscard]] Enumeration enumeration(std::uint64_t field) const {
    const auto raw = unsignedInteger(field);
    const auto value = fromRawValue<Enumeration>(raw);
    if (!value) {
      faults_->malformed = true;
      return Enumeration{};
    }
    return *value;
  }

  // verdict: malformedRecord before invalidValue, or nothing found.
  [[nodiscard]] static std::expected<void, BackupManifestRecordV1Error> verdict(const Faults& faults);

 private:
  BackupManifestFieldReaderV1(Faults& faults, const CBORBorrowedValue::Map* entries,
                              const CBORBorrowedValue::Array* items)
      : faults_(&faults), entries_(entries), items_(items) {}

  // field gives the value of field k, or nothing (and a fault) when the shape was wrong.
  [[nodiscard]] const CBORBorrowedValue* field(std::uint64_t key) const;
  [[nodiscard]] std::optional<std::int64_t> signedFrom(const CBORBorrowedValue& value) const;

  Faults* faults_;
  const CBORBorrowedValue::Map* entries_;
  const CBORBorrowedValue::Array* items_;
};

}  // namespace galdrine::format
