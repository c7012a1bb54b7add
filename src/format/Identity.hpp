#pragma once
// Identity holds the product's fixed words.

#include <array>
#include <cstdint>
#include <string_view>

namespace galdrine::format {

namespace Identity {

inline constexpr std::string_view displayName = "Galdrine";
inline constexpr std::string_view technicalNamespace = "galdrine";
inline constexpr std::int64_t prototypeFormatVersion = 0;
inline constexpr std::array<std::string_view, 3> launchLocaleIdentifiers = {"en", "es", "de"};

}  // namespace Identity

}  // namespace galdrine::format
