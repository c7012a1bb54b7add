#pragma once
// GaldrineBackupManifestFieldReaderV1 reads the fields of one decoded manifest record. A record
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

#include "GaldrineCore/GaldrineCBORBorrowedValue.hpp"
#include "GaldrineCore/GaldrineRawValue.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1Error.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

class GaldrineBackupManifestFieldReaderV1 {
 public:
  struct Faults {
    bool malformed = false;
    bool signedValueOutOfRange = false;
  };

  // forRecord reads a map whose key set is exactly {0, ..., lastKey} and whose key 0 is the
  // text `schema`; field k is then the map's value under key k.
  [[nodiscard]] static GaldrineBackupManifestFieldReaderV1 forRecord(Faults& faults, const GaldrineCBORBorrowedValue& value,
                                                                     std::string_view schema, std::uint64_t lastKey);
  // forArray reads an array of exactly `itemCount` items; field k is the item at position k.
  [[nodiscard]] static GaldrineBackupManifestFieldReaderV1 forArray(Faults& faults, const GaldrineCBORBorrowedValue& value,
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
  [[nodiscard]] std::span<const GaldrineCBORBorrowedValue> items(std::uint64_t field) const;

  // enumeration reads an unsigned raw value; one outside the enumeration's list is malformed.
  template <GaldrineRawRepresentable Enumeration>
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
  [[nodiscard]] static std::expected<void, GaldrineBackupManifestRecordV1Error> verdict(const Faults& faults);

 private:
  GaldrineBackupManifestFieldReaderV1(Faults& faults, const GaldrineCBORBorrowedValue::Map* entries,
                                      const GaldrineCBORBorrowedValue::Array* items)
      : faults_(&faults), entries_(entries), items_(items) {}

  // field gives the value of field k, or nothing (and a fault) when the shape was wrong.
  [[nodiscard]] const GaldrineCBORBorrowedValue* field(std::uint64_t key) const;
  [[nodiscard]] std::optional<std::int64_t> signedFrom(const GaldrineCBORBorrowedValue& value) const;

  Faults* faults_;
  const GaldrineCBORBorrowedValue::Map* entries_;
  const GaldrineCBORBorrowedValue::Array* items_;
};
