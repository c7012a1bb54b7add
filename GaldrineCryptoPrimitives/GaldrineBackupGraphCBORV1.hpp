#pragma once
// GaldrineBackupGraphCBORV1 holds what the CBOR forms of the graph records share: reading a
// record map, checking field kinds, signed timestamps, and encoding under an object's limits.
// Decoding is borrowed: byte strings are views into the decoded input until a record copies
// them, so every stored byte is copied exactly once.

#include <cstdint>
#include <expected>
#include <string_view>

#include "GaldrineCore/GaldrineCBORBorrowedValue.hpp"
#include "GaldrineCore/GaldrineCBORLimits.hpp"
#include "GaldrineCore/GaldrineCBORValue.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1Error.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

namespace GaldrineBackupGraphCBORV1 {

// decodeRecordMap decodes `bytes` under `limits` and requires a map whose key set is exactly
// {0, ..., lastKey} and whose key 0 is the text `schema`. Any failure is malformedArtifact;
// the codec's own reason stays here. The result borrows from `bytes`.
[[nodiscard]] std::expected<GaldrineCBORBorrowedValue, GaldrineBackupGraphV1Error> decodeRecordMap(
    ByteView bytes, const GaldrineCBORLimits& limits, std::string_view schema, std::uint64_t lastKey);

// field gives the value under `key` of a map that decodeRecordMap accepted with a larger or
// equal lastKey: its keys are 0, 1, ... in order, so the key is the position.
[[nodiscard]] const GaldrineCBORBorrowedValue& field(const GaldrineCBORBorrowedValue& recordMap, std::uint64_t key);

// item gives the item at `index` of an array whose length was checked.
[[nodiscard]] const GaldrineCBORBorrowedValue& item(const GaldrineCBORBorrowedValue& array, std::size_t index);

[[nodiscard]] bool isByteString(const GaldrineCBORBorrowedValue& value);
[[nodiscard]] bool isUnsigned(const GaldrineCBORBorrowedValue& value);
// isTimestamp: an unsigned or a negative integer, whatever its range.
[[nodiscard]] bool isTimestamp(const GaldrineCBORBorrowedValue& value);
// isArrayOfCount: an array of exactly `count` items.
[[nodiscard]] bool isArrayOfCount(const GaldrineCBORBorrowedValue& value, std::size_t count);

// The payloads of values whose kind was checked.
[[nodiscard]] ByteView byteString(const GaldrineCBORBorrowedValue& value);
[[nodiscard]] Bytes ownedByteString(const GaldrineCBORBorrowedValue& value);
[[nodiscard]] std::uint64_t unsignedInteger(const GaldrineCBORBorrowedValue& value);

// timestamp reads a signed 64-bit timestamp: another kind is malformedArtifact, a value
// outside the signed range invalidTimestamp.
[[nodiscard]] std::expected<std::int64_t, GaldrineBackupGraphV1Error> timestamp(const GaldrineCBORBorrowedValue& value);

// headByteCount is the length of an item's head whose argument (value or length) is
// `argument`, in the shortest form the canonical encoding uses.
[[nodiscard]] std::uint64_t headByteCount(std::uint64_t argument);
// stringByteCount is the encoded length of a byte or text string of `byteCount` bytes.
[[nodiscard]] std::uint64_t stringByteCount(std::uint64_t byteCount);

// encodeRecordMap puts `schema` under key 0 and encodes the map canonically under `limits`.
// A record that has no encoding within its object's limits is malformedArtifact.
[[nodiscard]] std::expected<Bytes, GaldrineBackupGraphV1Error> encodeRecordMap(GaldrineCBORValue::Map fields,
                                                                                std::string_view schema,
                                                                                const GaldrineCBORLimits& limits);

}  // namespace GaldrineBackupGraphCBORV1
