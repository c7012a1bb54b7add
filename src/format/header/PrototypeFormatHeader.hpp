#pragma once
// PrototypeFormatHeader is the header record of the earlier draft format: a magic text
// and a version, read and written as a JSON object with the keys "magic" and "formatVersion".
// Neither direction validates a value; judging one is the draft form's validator's work.

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>

#include "format/header/PrototypeFormatHeaderError.hpp"

namespace galdrine::format {

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
