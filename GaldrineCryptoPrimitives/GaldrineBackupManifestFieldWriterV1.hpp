#pragma once
// How manifest records spell their fields in CBOR: optional values as null when absent,
// signed values as unsigned or negative integers, enumerations as their raw values, and a
// record as a map whose key 0 is its schema and whose keys 1 ... n are its fields in order.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "GaldrineCore/GaldrineCBORValue.hpp"
#include "GaldrineCore/GaldrineRawValue.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

namespace GaldrineBackupManifestFieldWriterV1 {

[[nodiscard]] inline GaldrineCBORValue bytes(ByteView value) { return GaldrineCBORValue::byteString(value); }

[[nodiscard]] inline GaldrineCBORValue text(std::string_view value) { return GaldrineCBORValue::textString(std::string(value)); }

[[nodiscard]] inline GaldrineCBORValue optionalBytes(const std::optional<GaldrineBackupIdentifierV1>& value) {
  return value ? bytes(*value) : GaldrineCBORValue::null();
}

[[nodiscard]] inline GaldrineCBORValue optionalSigned(std::optional<std::int64_t> value) {
  return value ? GaldrineCBORValue::signedInteger(*value) : GaldrineCBORValue::null();
}

[[nodiscard]] inline GaldrineCBORValue optionalUnsigned(std::optional<std::uint64_t> value) {
  return value ? GaldrineCBORValue::unsignedInteger(*value) : GaldrineCBORValue::null();
}

template <GaldrineRawRepresentable Enumeration>
[[nodiscard]] GaldrineCBORValue enumeration(Enumeration value) {
  return GaldrineCBORValue::unsignedInteger(rawValue(value));
}

// Arrays are sized first and then filled by assignment: pushing a moved value into the vector
// trips a false array-bounds warning of g++ 12.
[[nodiscard]] inline GaldrineCBORValue::Array nullArray(std::size_t count) {
  return GaldrineCBORValue::Array(count, GaldrineCBORValue::null());
}

[[nodiscard]] inline GaldrineCBORValue identifiers(const std::vector<GaldrineBackupIdentifierV1>& values) {
  auto items = nullArray(values.size());
  for (std::size_t index = 0; index < values.size(); ++index) items[index] = bytes(values[index]);
  return GaldrineCBORValue::array(std::move(items));
}

// RecordMap builds the map {0: schema, 1: first field, 2: second field, ...}; fields are
// moved in, never copied.
class RecordMap {
 public:
  explicit RecordMap(std::string_view schema) { entries_.emplace_hint(entries_.end(), 0, text(schema)); }
  RecordMap& add(GaldrineCBORValue field) {
    entries_.emplace_hint(entries_.end(), entries_.size(), std::move(field));
    return *this;
  }
  [[nodiscard]] GaldrineCBORValue take() { return GaldrineCBORValue::map(std::move(entries_)); }

 private:
  GaldrineCBORValue::Map entries_;
};

}  // namespace GaldrineBackupManifestFieldWriterV1
