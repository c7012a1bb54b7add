#pragma once
// Unicode scalars of UTF-8 text, and the two character classes every text rule of the system
// shares: control characters (general category Cc or Cf) and whitespace (the White_Space
// property, line breaks included).

#include <optional>
#include <string_view>
#include <vector>

namespace GaldrineUnicodeScalars {

// scalars decodes UTF-8 text into its scalars, or gives nothing for invalid UTF-8.
[[nodiscard]] std::optional<std::u32string> scalars(std::string_view text);

[[nodiscard]] bool isControl(char32_t scalar);
[[nodiscard]] bool isWhiteSpace(char32_t scalar);

// trimmingWhiteSpace removes whitespace scalars from both ends of valid UTF-8 text.
[[nodiscard]] std::string_view trimmingWhiteSpace(std::string_view text);

}  // namespace GaldrineUnicodeScalars
