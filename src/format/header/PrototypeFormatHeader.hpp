#pragma once
// PrototypeFormatHeader is the header record of the earlier draft format: a magic text
// and a version, read and written as a JSON object with the keys "magic" and "formatVersion".
// Neither direction validates a value; judging one is the draft form's validator's work.

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>

namespace galdrine::format {

// PrototypeFormatHeaderError: how the keyed JSON form of the draft header fails, in the
// terms of any keyed decoding. No value is judged here.
enum class PrototypeFormatHeaderError : std::uint8_t {
  dataCorrupted,  // not JSON, or a number that is no signed 64-bit integer
  keyNotFound,    // "magic" or "formatVersion" is absent
  valueNotFound,  // a key holds null
  typeMismatch,   // the document is no object, or a key holds a value of another type
  invalidValue,   // encoding: the magic is not valid UTF-8
};

struct PrototypeFormatHeader {
  static constexpr std::string_view expectedMagic = "GALDRINE-DRAFT";

  std::string magic;
  std::int64_t formatVersion = 0;

  // decodeJSON reads the two keys of a JSON object and ignores any other key. A failure tells
  // the first fault, "magic" before "formatVersion", and gives no record.
  [[nodiscard]] static std::expected<PrototypeFormatHeader, PrototypeFormatHeaderError> decodeJSON(
      std::string_view json);

  // encodeJSON writes the compact object with its keys in sorted order:
  // {"formatVersion":0,"magic":"GALDRINE-DRAFT"}. It fails only for a magic that is not UTF-8.
  [[nodiscard]] std::expected<std::string, PrototypeFormatHeaderError> encodeJSON() const;

  friend bool operator==(const PrototypeFormatHeader&, const PrototypeFormatHeader&) = default;
};

}  // namespace galdrine::format
