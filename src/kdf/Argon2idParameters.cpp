#include "kdf/Argon2idParameters.hpp"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <string_view>

namespace galdrine::kdf {

namespace {

constexpr std::string_view kOperationsLimitKey = "operationsLimit";
constexpr std::string_view kMemoryLimitBytesKey = "memoryLimitBytes";

// A JSON number written with a fraction or exponent still counts when it is an integer the
// field can hold exactly ("3.0"); "3.5", -1 for an unsigned field and out-of-range numbers do not.
template <typename Integer>
std::expected<Integer, platform::JSONDocumentError> exactIntegerOfFloat(double value) {
  // Both bounds are powers of two, so they and the comparisons are exact in a double.
  constexpr double lowest = static_cast<double>(std::numeric_limits<Integer>::min());
  constexpr double beyondHighest = static_cast<double>(std::numeric_limits<Integer>::max() / 2 + 1) * 2.0;
  if (!std::isfinite(value) || std::trunc(value) != value || value < lowest || value >= beyondHighest)
    return std::unexpected(platform::JSONDocumentError::dataCorrupted);
  return static_cast<Integer>(value);
}

template <typename Integer>
std::expected<Integer, platform::JSONDocumentError> integerField(const nlohmann::json& document, std::string_view key) {
  const auto found = document.find(key);
  if (found == document.end()) return std::unexpected(platform::JSONDocumentError::keyNotFound);
  const nlohmann::json& value = *found;
  if (value.is_null()) return std::unexpected(platform::JSONDocumentError::valueNotFound);
  if (value.is_number_unsigned()) {
    const auto number = value.get<std::uint64_t>();
    if (number > static_cast<std::uint64_t>(std::numeric_limits<Integer>::max()))
      return std::unexpected(platform::JSONDocumentError::dataCorrupted);
    return static_cast<Integer>(number);
  }
  if (value.is_number_integer()) {  // negative: the parser keeps non-negative numbers unsigned
    const auto number = value.get<std::int64_t>();
    if (std::numeric_limits<Integer>::is_signed) return static_cast<Integer>(number);
    return std::unexpected(platform::JSONDocumentError::dataCorrupted);
  }
  if (value.is_number_float()) return exactIntegerOfFloat<Integer>(value.get<double>());
  return std::unexpected(platform::JSONDocumentError::typeMismatch);
}

}  // namespace

std::expected<Argon2idParameters, Argon2idError> Argon2idParameters::make(std::uint64_t operationsLimit,
                                                                          std::int64_t memoryLimitBytes) {
  if (operationsLimit < minimumOperationsLimit || operationsLimit > maximumOperationsLimit)
    return std::unexpected(
        Argon2idError::operationsLimitOutOfRange(minimumOperationsLimit, maximumOperationsLimit, operationsLimit));
  if (memoryLimitBytes < minimumMemoryLimitBytes || memoryLimitBytes > maximumMemoryLimitBytes)
    return std::unexpected(
        Argon2idError::memoryLimitOutOfRange(minimumMemoryLimitBytes, maximumMemoryLimitBytes, memoryLimitBytes));
  if (memoryLimitBytes % 1024 != 0)
    return std::unexpected(Argon2idError::memoryLimitMustBeKiBAligned(memoryLimitBytes));
  return Argon2idParameters(operationsLimit, memoryLimitBytes);
}

nlohmann::json Argon2idParameters::encodeDocument() const {
  nlohmann::json document = nlohmann::json::object();
  document[kOperationsLimitKey] = operationsLimit_;
  document[kMemoryLimitBytesKey] = memoryLimitBytes_;
  return document;
}

std::expected<Argon2idParameters, Argon2idParametersDocumentFailure> Argon2idParameters::decodeDocument(
    const nlohmann::json& document) {
  if (!document.is_object()) return std::unexpected(platform::JSONDocumentError::typeMismatch);
  const auto operationsLimit = integerField<std::uint64_t>(document, kOperationsLimitKey);
  if (!operationsLimit) return std::unexpected(operationsLimit.error());
  const auto memoryLimitBytes = integerField<std::int64_t>(document, kMemoryLimitBytesKey);
  if (!memoryLimitBytes) return std::unexpected(memoryLimitBytes.error());
  auto parameters = make(*operationsLimit, *memoryLimitBytes);
  if (!parameters) return std::unexpected(parameters.error());
  return *parameters;
}

}  // namespace galdrine::kdf
