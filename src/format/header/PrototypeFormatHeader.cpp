#include "format/header/PrototypeFormatHeader.hpp"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

#include "platform/UTF8.hpp"

namespace galdrine::format {

namespace {

using Error = PrototypeFormatHeaderError;

std::expected<const nlohmann::json*, Error> member(const nlohmann::json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end()) return std::unexpected(Error::keyNotFound);
  if (found->is_null()) return std::unexpected(Error::valueNotFound);
  return &*found;
}

// signedInteger takes a JSON number as a signed 64-bit integer. A number written with a
// fraction or exponent counts when it is exactly such an integer ("1.0"), as in any JSON
// decoder of integers; anything else is corrupt for this field.
std::expected<std::int64_t, Error> signedInteger(const nlohmann::json& value) {
  if (value.is_number_unsigned()) {
    const auto number = value.get<std::uint64_t>();
    if (number > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
      return std::unexpected(Error::dataCorrupted);
    }
    return static_cast<std::int64_t>(number);
  }
  if (value.is_number_integer()) return value.get<std::int64_t>();
  if (value.is_number_float()) {
    const double number = value.get<double>();
    // 2^63 is exactly representable; every integral double below it and from -2^63 fits.
    if (std::trunc(number) == number && number >= -9223372036854775808.0 && number < 9223372036854775808.0) {
      return static_cast<std::int64_t>(number);
    }
    return std::unexpected(Error::dataCorrupted);
  }
  return std::unexpected(Error::typeMismatch);
}

}  // namespace

std::expected<PrototypeFormatHeader, PrototypeFormatHeaderError> PrototypeFormatHeader::decodeJSON(
    std::string_view json) {
  // Without exceptions: a parse failure gives a discarded value.
  const nlohmann::json document = nlohmann::json::parse(json.begin(), json.end(), nullptr, false);
  if (document.is_discarded()) return std::unexpected(Error::dataCorrupted);
  if (!document.is_object()) return std::unexpected(Error::typeMismatch);
  const auto magic = member(document, "magic");
  if (!magic) return std::unexpected(magic.error());
  if (!(*magic)->is_string()) return std::unexpected(Error::typeMismatch);
  const auto version = member(document, "formatVersion");
  if (!version) return std::unexpected(version.error());
  const auto formatVersion = signedInteger(**version);
  if (!formatVersion) return std::unexpected(formatVersion.error());
  return PrototypeFormatHeader{(*magic)->get<std::string>(), *formatVersion};
}

std::expected<std::string, PrototypeFormatHeaderError> PrototypeFormatHeader::encodeJSON() const {
  // The JSON writer would throw on invalid UTF-8; refuse it before.
  if (!platform::UTF8::isValid(magic)) return std::unexpected(Error::invalidValue);
  const nlohmann::json document = {{"magic", magic}, {"formatVersion", formatVersion}};
  return document.dump();
}

}  // namespace galdrine::format
