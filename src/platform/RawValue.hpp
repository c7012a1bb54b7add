#pragma once
// Enumerations with raw values (text or numbers). Each such enumeration specialises
// RawValueTable beside its definition with one array `rawValues`, written in case
// order; rawValue, fromRawValue and allCases are then derived from that one table, so a
// case and its raw value can never drift apart.

#include <array>
#include <cstddef>
#include <optional>
#include <type_traits>
#include <utility>

namespace galdrine {

template <typename Enumeration>
struct RawValueTable;

template <typename Enumeration>
concept RawRepresentable = std::is_enum_v<Enumeration> && requires {
  RawValueTable<Enumeration>::rawValues.size();
};

template <RawRepresentable Enumeration>
using RawValueType = typename decltype(RawValueTable<Enumeration>::rawValues)::value_type;

// rawValue gives the raw value of a case.
template <RawRepresentable Enumeration>
[[nodiscard]] constexpr RawValueType<Enumeration> rawValue(Enumeration value) {
  return RawValueTable<Enumeration>::rawValues[static_cast<std::size_t>(std::to_underlying(value))];
}

// fromRawValue gives the case whose raw value equals `raw` exactly, or nothing.
template <RawRepresentable Enumeration>
[[nodiscard]] constexpr std::optional<Enumeration> fromRawValue(const RawValueType<Enumeration>& raw) {
  const auto& rawValues = RawValueTable<Enumeration>::rawValues;
  for (std::size_t index = 0; index < rawValues.size(); ++index) {
    if (rawValues[index] == raw) return static_cast<Enumeration>(index);
  }
  return std::nullopt;
}

// allCases lists every case in declaration order.
template <RawRepresentable Enumeration>
inline constexpr auto allCases = []<std::size_t... Index>(std::index_sequence<Index...>) {
  return std::array<Enumeration, sizeof...(Index)>{static_cast<Enumeration>(Index)...};
}
(std::make_index_sequence<RawValueTable<Enumeration>::rawValues.size()>{});

}  // namespace galdrine
