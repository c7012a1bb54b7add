#pragma once
// GraphemeClusters splits and cuts UTF-8 text by user-perceived characters: extended
// grapheme clusters with the root locale's rules. "e" with a combining acute, a flag, and a
// family emoji joined by zero width joiners are one character each.
//
// Each operation fails with invalidUTF8, textTooLong (above
// UnicodeText::maximumUTF8ByteCount) or textServiceFailed, and then gives nothing.

#include <cstddef>
#include <expected>
#include <string_view>
#include <vector>

#include "platform/UnicodeText.hpp"

namespace galdrine::platform {

namespace GraphemeClusters {

// clusters gives the characters of `text` in order, as views into `text`: the caller keeps
// `text` alive while it uses them. Their concatenation is `text`.
[[nodiscard]] std::expected<std::vector<std::string_view>, UnicodeTextError> clusters(std::string_view text);

// truncatedToUTF8ByteCount gives the longest prefix of whole characters whose UTF-8 length is
// at most `maximumUTF8ByteCount`. A character is never cut in two, so the result may be
// shorter than the limit, and empty if the first character alone is longer.
[[nodiscard]] std::expected<std::string_view, UnicodeTextError> truncatedToUTF8ByteCount(
    std::string_view text, std::size_t maximumUTF8ByteCount);

}  // namespace GraphemeClusters

}  // namespace galdrine::platform
