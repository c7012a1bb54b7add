#pragma once
// BackupGraphCBORV1 holds what the CBOR forms of the graph records share: reading a
// record map, checking field kinds, signed timestamps, and encoding under an object's limits.
// Decoding is borrowed: byte strings are views into the decoded input until a record copies
// them, so every stored byte is copied exactly once.

#include <cstdint>
#include <expected>
#include <string_view>

#include "format/cbor/CBORBorrowedValue.hpp"
#include "format/cbor/CBORLimits.hpp"
#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupGraphV1Error.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

namespace BackupGraphCBORV1 {

// decodeRecordMap decodes `bytes` under `limits` and requires a map whose key set is exactly
// {0, ..., lastKey} and whose key 0 is the text `schema`. Any failure is malformedArtifact;
// the codec's own reason stays here. The result borrows from `bytes`.
[[nodiscard]] std::expected<CBORBorrowedValue, BackupGraphV1Error> decodeRecordMap(ByteView bytes,
                                                                                   const CBORLimits& limits,
                                                                                   std::string_view schema,
                                                                                   std::uint64_t lastKey);

// field gives the value under `key` of a map that decodeRecordMap accepted with a larger or
// equal lastKey: its keys are 0, 1, ... in order, so the key is the position.
[[nodiscard]] const CBORBorrowedValue& field(const CBORBorrowedValue& recordMap, std::uint64_t key);

// item gives the item at `index` of an array whose length was checked.
[[nodiscard]] const CBORBorrowedValue& item(const CBORBorrowedValue& array, std::size_t index);

[[nodiscard]] bool isByteString(const CBORBorrowedValue& value);
[[nodiscard]] bool isUnsigned(const CBORBorrowedValue& value);
// isTimestamp: an unsigned or a negative integer, whatever its range.
[[nodiscard]] bool isTimestamp(const CBORBorrowedValue& value);
// isArrayOfCount: an array of exactly `count` items.
[[nodiscard]] bool isArrayOfCount(const CBORBorrowedValue& value, std::size_t count);

// The payloads of values whose kind was checked.
[[nodiscard]] ByteView byteString(const CBORBorrowedValue& value);
[[nodiscard]] Bytes ownedByteString(const CBORBorrowedValue& value);
[[nodiscard]] std::uint64_t unsignedInteger(const CBORBorrowedValue& value);

// timestamp reads a signed 64-bit timestamp: another kind is malformedArtifact, a value
// outside the signed range invalidTimestamp.
[[nodiscard]] std::expected<std::int64_t, BackupGraphV1Error> timestamp(const CBORBorrowedValue& value);

// headByteCount is the length of an item's head whose argument (value or length) is
// `argument`, in the shortest form the canonical encoding uses.
[[nodiscard]] std::uint64_t headByteCount(std::uint64_t argument);
// stringByteCount is the encoded length of a byte or text string of `byteCount` bytes.
[[nodiscard]] std::uint64_t stringByteCount(std::uint64_t byteCount);

// encodeRecordMap puts `schema` under key 0 and encodes the map canonically under `limits`.
// A record that has no encoding within its object's limits is malformedArtifact.
[[nodiscard]] std::expected<Bytes, BackupGraphV1Error> encodeRecordMap(CBORValue::Map fields, std::string_view schema,
                                                                       const CBORLimits& limits);

}  // namespace BackupGraphCBORV1

}  // namespace galdrine::format
