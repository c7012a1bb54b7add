#include "format/cbor/CBORBorrowedValue.hpp"

#include <algorithm>
#include <string>

namespace galdrine::format {

std::optional<std::uint64_t> CBORBorrowedValue::asUnsigned() const {
  if (const auto* value = std::get_if<0>(&storage_)) return *value;
  return std::nullopt;
}

std::optional<ByteView> CBORBorrowedValue::asByteString() const {
  if (const auto* value = std::get_if<1>(&storage_)) return *value;
  return std::nullopt;
}

std::optional<std::string_view> CBORBorrowedValue::asTextString() const {
  if (const auto* value = std::get_if<2>(&storage_)) return *value;
  return std::nullopt;
}

std::optional<bool> CBORBorrowedValue::asBoolean() const {
  if (const auto* value = std::get_if<5>(&storage_)) return *value;
  return std::nullopt;
}

std::optional<std::uint64_t> CBORBorrowedValue::asNegativeArgument() const {
  if (const auto* value = std::get_if<6>(&storage_)) return value->argument;
  return std::nullopt;
}

const CBORBorrowedValue* CBORBorrowedValue::find(std::uint64_t key) const {
  const Map* entries = asMap();
  if (entries == nullptr) return nullptr;
  const auto found = std::ranges::lower_bound(*entries, key, {}, &Map::value_type::first);
  return found == entries->end() || found->first != key ? nullptr : &found->second;
}

bool CBORBorrowedValue::hasKeysZeroThrough(std::uint64_t lastKey) const {
  const Map* entries = asMap();
  if (entries == nullptr || entries->empty() || entries->size() - 1 != lastKey) return false;
  return entries->front().first == 0 && entries->back().first == lastKey;
}

CBORValue CBORBorrowedValue::owned() const {
  switch (kind()) {
    case CBORKind::unsignedInteger:
      return CBORValue::unsignedInteger(std::get<0>(storage_));
    case CBORKind::byteString:
      return CBORValue::byteString(std::get<1>(storage_));
    case CBORKind::textString:
      return CBORValue::textString(std::string(std::get<2>(storage_)));
    case CBORKind::array: {
      CBORValue::Array items;
      items.reserve(std::get<3>(storage_).size());
      for (const auto& item : std::get<3>(storage_)) items.push_back(item.owned());
      return CBORValue::array(std::move(items));
    }
    case CBORKind::map: {
      CBORValue::Map entries;
      for (const auto& [key, value] : std::get<4>(storage_)) entries.emplace_hint(entries.end(), key, value.owned());
      return CBORValue::map(std::move(entries));
    }
    case CBORKind::boolean:
      return CBORValue::boolean(std::get<5>(storage_));
    case CBORKind::negative:
      return CBORValue::negative(std::get<6>(storage_).argument);
    case CBORKind::null:
      return CBORValue::null();
  }
  std::unreachable();
}

}  // namespace galdrine::format
