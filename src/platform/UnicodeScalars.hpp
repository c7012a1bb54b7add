#pragma once
// Unicode scalars of UTF-8 text, and the character classes every text rule of the system
// shares: control characters (general category Cc or Cf), whitespace (the White_Space
// property, line breaks included), letters (L*) and numbers (N*).

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace galdrine::platform {

namespace UnicodeScalars {

// scalars decodes UTF-8 text into its scalars, or gives nothing for invalid UTF-8.
[[nodiscard]] std::optional<std::u32string> scalars(std::string_view text);

// utf8 encodes scalars as UTF-8. Every char32_t that is not a scalar (a surrogate, or above
// U+10FFFF) becomes U+FFFD, so the result is always valid.
[[nodiscard]] std::string utf8(std::u32string_view scalars);

[[nodiscard]] bool isControl(char32_t scalar);
[[nodiscard]] bool isWhiteSpace(char32_t scalar);
[[nodiscard]] bool isLetter(char32_t scalar);
[[nodiscard]] bool isNumber(char32_t scalar);

// trimmingWhiteSpace removes whitespace scalars from both ends of valid UTF-8 text.
[[nodiscard]] std::string_view trimmingWhiteSpace(std::string_view text);

// splittingOnWhiteSpace gives the runs of valid UTF-8 text between whitespace scalars, as
// views into `text`, dropping empty runs: leading, trailing and repeated whitespace leave no
// trace. Invalid UTF-8 gives nothing.
[[nodiscard]] std::optional<std::vector<std::string_view>> splittingOnWhiteSpace(std::string_view text);

// keepingLettersAndNumbers keeps the letter and number scalars of valid UTF-8 text, in order,
// and at most the first `maximumScalarCount` of them. Invalid UTF-8 gives nothing.
[[nodiscard]] std::optional<std::string> keepingLettersAndNumbers(std::string_view text,
                                                                  std::size_t maximumScalarCount);

}  // namespace UnicodeScalars

}  // namespace galdrine::platform
