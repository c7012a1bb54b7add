#include "format/cbor/CBORValue.hpp"

#include <limits>

namespace galdrine::format {

CBORValue CBORValue::signedInteger(std::int64_t value) {
  if (value >= 0) return unsignedInteger(static_cast<std::uint64_t>(value));
  // -1 - argument = value, so argument = -1 - value, which cannot overflow for a negative value.
  return negative(static_cast<std::uint64_t>(-1 - value));
}

std::optional<std::uint64_t> CBORValue::asUnsigned() const {
  if (const auto* value = std::get_if<0>(&storage_)) return *value;
  return std::nullopt;
}

std::optional<bool> CBORValue::asBoolean() const {
  if (const auto* value = std::get_if<5>(&storage_)) return *value;
  return std::nullopt;
}

std::optional<std::uint64_t> CBORValue::asNegativeArgument() const {
  if (const auto* value = std::get_if<6>(&storage_)) return value->argument;
  return std::nullopt;
}

std::expected<std::int64_t, CBORSignedIntegerFault> signedIntegerFrom(std::optional<std::uint64_t> unsignedValue,
                                                                      std::optional<std::uint64_t> negativeArgument) {
  constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (unsignedValue) {
    if (*unsignedValue > largest) return std::unexpected(CBORSignedIntegerFault::outOfRange);
    return static_cast<std::int64_t>(*unsignedValue);
  }
  if (negativeArgument) {
    if (*negativeArgument > largest) return std::unexpected(CBORSignedIntegerFault::outOfRange);
    return -1 - static_cast<std::int64_t>(*negativeArgument);
  }
  return std::unexpected(CBORSignedIntegerFault::notAnInteger);
}

const CBORValue* CBORValue::find(std::uint64_t key) const {
  const Map* entries = asMap();
  if (entries == nullptr) return nullptr;
  const auto found = entries->find(key);
  return found == entries->end() ? nullptr : &found->second;
}

bool CBORValue::hasKeysZeroThrough(std::uint64_t lastKey) const {
  const Map* entries = asMap();
  if (entries == nullptr || entries->size() - 1 != lastKey) return false;
  // Keys are unique and ordered, so n keys that start at 0 and end at n - 1 are exactly 0 ... n - 1.
  return !entries->empty() && entries->begin()->first == 0 && entries->rbegin()->first == lastKey;
}

}  // namespace galdrine::format
