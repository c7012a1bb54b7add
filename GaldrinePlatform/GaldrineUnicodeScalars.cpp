#include "GaldrinePlatform/GaldrineUnicodeScalars.hpp"

#include <algorithm>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include "GaldrinePlatform/GaldrineUTF8.hpp"

namespace {

// nextScalar decodes the scalar at `offset` of text already known to be valid UTF-8.
char32_t nextScalar(std::string_view text, std::size_t& offset) {
  UChar32 scalar = 0;
  std::int32_t index = static_cast<std::int32_t>(offset);
  U8_NEXT(reinterpret_cast<const std::uint8_t*>(text.data()), index, static_cast<std::int32_t>(text.size()), scalar);
  offset = static_cast<std::size_t>(index);
  return static_cast<char32_t>(scalar);
}

}  // namespace

namespace GaldrineUnicodeScalars {

std::optional<std::u32string> scalars(std::string_view text) {
  if (!GaldrineUTF8::isValid(text)) return std::nullopt;
  std::u32string result;
  result.reserve(text.size());
  for (std::size_t offset = 0; offset < text.size();) result.push_back(nextScalar(text, offset));
  return result;
}

bool isControl(char32_t scalar) {
  const auto category = u_charType(static_cast<UChar32>(scalar));
  return category == U_CONTROL_CHAR || category == U_FORMAT_CHAR;
}

bool isWhiteSpace(char32_t scalar) { return u_isUWhiteSpace(static_cast<UChar32>(scalar)); }

std::string_view trimmingWhiteSpace(std::string_view text) {
  if (!GaldrineUTF8::isValid(text)) return text;
  std::size_t start = text.size();
  std::size_t end = 0;
  for (std::size_t offset = 0; offset < text.size();) {
    const std::size_t scalarStart = offset;
    if (!isWhiteSpace(nextScalar(text, offset))) {
      start = std::min(start, scalarStart);
      end = offset;
    }
  }
  return start >= end ? std::string_view{} : text.substr(start, end - start);
}

}  // namespace GaldrineUnicodeScalars
