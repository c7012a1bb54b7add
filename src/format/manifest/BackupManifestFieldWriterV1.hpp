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

#include "format/cbor/CBORValue.hpp"
#include "format/graph/BackupIdentifierV1.hpp"
#include "platform/Bytes.hpp"
#include "platform/RawValue.hpp"

namespace galdrine::format {

namespace BackupManifestFieldWriterV1 {

[[nodiscard]] inline CBORValue bytes(ByteView value) { return CBORValue::byteString(value); }

[[nodiscard]] inline CBORValue text(std::string_view value) { return CBORValue::textString(std::string(value)); }

[[nodiscard]] inline CBORValue optionalBytes(const std::optional<BackupIdentifierV1>& value) {
  return value ? bytes(*value) : CBORValue::null();
}

[[nodiscard]] inline CBORValue optionalSigned(std::optional<std::int64_t> value) {
  return value ? CBORValue::signedInteger(*value) : CBORValue::null();
}

[[nodiscard]] inline CBORValue optionalUnsigned(std::optional<std::uint64_t> value) {
  return value ? CBORValue::unsignedInteger(*value) : CBORValue::null();
}

template <RawRepresentable Enumeration>
[[nodiscard]] CBORValue enumeration(Enumeration value) {
  return CBORValue::unsignedInteger(rawValue(value));
}

// Arrays are sized first and then filled by assignment: pushing a moved value into the vector
// trips a false array-bounds warning of g++ 12.
[[nodiscard]] inline CBORValue::Array nullArray(std::size_t count) {
  return CBORValue::Array(count, CBORValue::null());
}

[[nodiscard]] inline CBORValue identifiers(const std::vector<BackupIdentifierV1>& values) {
  auto items = nullArray(values.size());
  for (std::size_t index = 0; index < values.size(); ++index) items[index] = bytes(values[index]);
  return CBORValue::array(std::move(items));
}

// RecordMap builds the map {0: schema, 1: first field, 2: second field, ...}; fields are
// moved in, never copied.
class RecordMap {
 public:
  explicit RecordMap(std::string_view schema) { entries_.emplace_hint(entries_.end(), 0, text(schema)); }
  RecordMap& add(CBORValue field) {
    entries_.emplace_hint(entries_.end(), entries_.size(), std::move(field));
    return *this;
  }
  [[nodiscard]] CBORValue take() { return CBORValue::map(std::move(entries_)); }

 private:
  CBORValue::Map entries_;
};

}  // namespace BackupManifestFieldWriterV1

}  // namespace galdrine::format
