#include "GaldrineCore/GaldrineCBORBorrowedValue.hpp"

#include <algorithm>
#include <string>

std::optional<std::uint64_t> GaldrineCBORBorrowedValue::asUnsigned() const {
  if (const auto* value = std::get_if<0>(&storage_)) return *value;
  return std::nullopt;
}

std::optional<ByteView> GaldrineCBORBorrowedValue::asByteString() const {
  if (const auto* value = std::get_if<1>(&storage_)) return *value;
  return std::nullopt;
}

std::optional<std::string_view> GaldrineCBORBorrowedValue::asTextString() const {
  if (const auto* value = std::get_if<2>(&storage_)) return *value;
  return std::nullopt;
}

std::optional<bool> GaldrineCBORBorrowedValue::asBoolean() const {
  if (const auto* value = std::get_if<5>(&storage_)) return *value;
  return std::nullopt;
}

std::optional<std::uint64_t> GaldrineCBORBorrowedValue::asNegativeArgument() const {
  if (const auto* value = std::get_if<6>(&storage_)) return value->argument;
  return std::nullopt;
}

const GaldrineCBORBorrowedValue* GaldrineCBORBorrowedValue::find(std::uint64_t key) const {
  const Map* entries = asMap();
  if (entries == nullptr) return nullptr;
  const auto found = std::ranges::lower_bound(*entries, key, {}, &Map::value_type::first);
  return found == entries->end() || found->first != key ? nullptr : &found->second;
}

bool GaldrineCBORBorrowedValue::hasKeysZeroThrough(std::uint64_t lastKey) const {
  const Map* entries = asMap();
  if (entries == nullptr || entries->empty() || entries->size() - 1 != lastKey) return false;
  return entries->front().first == 0 && entries->back().first == lastKey;
}

GaldrineCBORValue GaldrineCBORBorrowedValue::owned() const {
  switch (kind()) {
    case GaldrineCBORKind::unsignedInteger: return GaldrineCBORValue::unsignedInteger(std::get<0>(storage_));
    case GaldrineCBORKind::byteString: return GaldrineCBORValue::byteString(std::get<1>(storage_));
    case GaldrineCBORKind::textString: return GaldrineCBORValue::textString(std::string(std::get<2>(storage_)));
    case GaldrineCBORKind::array: {
      GaldrineCBORValue::Array items;
      items.reserve(std::get<3>(storage_).size());
      for (const auto& item : std::get<3>(storage_)) items.push_back(item.owned());
      return GaldrineCBORValue::array(std::move(items));
    }
    case GaldrineCBORKind::map: {
      GaldrineCBORValue::Map entries;
      for (const auto& [key, value] : std::get<4>(storage_)) entries.emplace_hint(entries.end(), key, value.owned());
      return GaldrineCBORValue::map(std::move(entries));
    }
    case GaldrineCBORKind::boolean: return GaldrineCBORValue::boolean(std::get<5>(storage_));
    case GaldrineCBORKind::negative: return GaldrineCBORValue::negative(std::get<6>(storage_).argument);
    case GaldrineCBORKind::null: return GaldrineCBORValue::null();
  }
  std::unreachable();
}
