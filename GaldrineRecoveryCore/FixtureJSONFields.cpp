#include "GaldrineRecoveryCore/FixtureJSONFields.hpp"

#include <cmath>
#include <limits>
#include <utility>

namespace {

// Every double from -2^63 up to but not including 2^63 that is integral fits a signed 64-bit
// integer; 2^64 bounds the unsigned ones the same way.
constexpr double twoToThe63 = 9223372036854775808.0;
constexpr double twoToThe64 = 18446744073709551616.0;

[[nodiscard]] bool isIntegral(double number) { return std::isfinite(number) && std::trunc(number) == number; }

}  // namespace

FixtureJSONFields::FixtureJSONFields(const nlohmann::json& value, bool& faulted)
    : object_(value.is_object() ? &value : nullptr), faulted_(&faulted) {
  if (object_ == nullptr) fault();
}

const nlohmann::json* FixtureJSONFields::member(const char* key) const {
  if (object_ == nullptr) return nullptr;
  const auto found = object_->find(key);
  if (found == object_->end() || found->is_null()) {
    fault();
    return nullptr;
  }
  return &*found;
}

std::string FixtureJSONFields::text(const char* key) const {
  const nlohmann::json* value = member(key);
  if (value == nullptr) return {};
  if (!value->is_string()) {
    fault();
    return {};
  }
  return value->get_ref<const std::string&>();
}

std::uint64_t FixtureJSONFields::unsignedInteger(const char* key) const {
  const nlohmann::json* value = member(key);
  if (value == nullptr) return 0;
  if (value->is_number_unsigned()) return value->get<std::uint64_t>();
  if (value->is_number_float()) {
    const double number = value->get<double>();
    if (isIntegral(number) && number >= 0.0 && number < twoToThe64) return static_cast<std::uint64_t>(number);
  }
  fault();  // a negative integer, a fraction, or no number at all
  return 0;
}

std::int64_t FixtureJSONFields::signedInteger(const char* key) const {
  const nlohmann::json* value = member(key);
  if (value == nullptr) return 0;
  if (value->is_number_unsigned()) {
    const auto number = value->get<std::uint64_t>();
    if (number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
      return static_cast<std::int64_t>(number);
  } else if (value->is_number_integer()) {
    return value->get<std::int64_t>();
  } else if (value->is_number_float()) {
    const double number = value->get<double>();
    if (isIntegral(number) && number >= -twoToThe63 && number < twoToThe63) return static_cast<std::int64_t>(number);
  }
  fault();
  return 0;
}

FixtureJSONFields FixtureJSONFields::object(const char* key) const {
  static const nlohmann::json nothing;  // null: a reader of it is faulted
  const nlohmann::json* value = member(key);
  return FixtureJSONFields(value == nullptr ? nothing : *value, *faulted_);
}

std::optional<FixtureJSONFields> FixtureJSONFields::optionalObject(const char* key) const {
  if (object_ == nullptr) return std::nullopt;
  const auto found = object_->find(key);
  if (found == object_->end() || found->is_null()) return std::nullopt;
  return FixtureJSONFields(*found, *faulted_);
}

std::vector<FixtureJSONFields> FixtureJSONFields::objects(const char* key) const {
  const nlohmann::json* value = member(key);
  if (value == nullptr) return {};
  if (!value->is_array()) {
    fault();
    return {};
  }
  std::vector<FixtureJSONFields> elements;
  elements.reserve(value->size());
  for (const nlohmann::json& element : *value) elements.emplace_back(element, *faulted_);
  return elements;
}

namespace FixtureJSON {

std::optional<nlohmann::json> parse(ByteView bytes) {
  nlohmann::json document = nlohmann::json::parse(bytes.begin(), bytes.end(), nullptr, /*allow_exceptions=*/false);
  if (document.is_discarded()) return std::nullopt;
  return document;
}

}  // namespace FixtureJSON
