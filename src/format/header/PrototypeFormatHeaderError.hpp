#pragma once
// PrototypeFormatHeaderError: how the keyed JSON form of the draft header fails, in the
// terms of any keyed decoding. No value is judged here.

#include <cstdint>

namespace galdrine::format {

enum class PrototypeFormatHeaderError : std::uint8_t {
  dataCorrupted,  // not JSON, or a number that is no signed 64-bit integer
  keyNotFound,    // "magic" or "formatVersion" is absent
  valueNotFound,  // a key holds null
  typeMismatch,   // the document is no object, or a key holds a value of another type
  invalidValue,   // encoding: the magic is not valid UTF-8
};

}  // namespace galdrine::format
