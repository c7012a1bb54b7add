#include "platform/UnicodeScalars.hpp"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>

#include "platform/UTF8.hpp"

namespace galdrine::platform {

namespace {

// nextScalar decodes the scalar at `offset` of text already known to be valid UTF-8. It counts
// in std::size_t, so no length of text can overflow it.
char32_t nextScalar(std::string_view text, std::size_t& offset) {
  const auto byteAt = [&](std::size_t index) { return static_cast<std::uint8_t>(text[index]); };
  const std::uint8_t lead = byteAt(offset);
  const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  char32_t scalar = length == 1 ? lead : static_cast<char32_t>(lead & (0x7F >> length));
  for (std::size_t index = 1; index < length; ++index) scalar = (scalar << 6) | (byteAt(offset + index) & 0x3F);
  offset += length;
  return scalar;
}

bool isScalarValue(char32_t value) { return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF); }

std::uint32_t categoryMask(char32_t scalar) { return U_GET_GC_MASK(static_cast<UChar32>(scalar)); }

}  // namespace

namespace UnicodeScalars {

std::optional<std::u32string> scalars(std::string_view text) {
  if (!UTF8::isValid(text)) return std::nullopt;
  std::u32string result;
  result.reserve(text.size());
  for (std::size_t offset = 0; offset < text.size();) result.push_back(nextScalar(text, offset));
  return result;
}

std::string utf8(std::u32string_view scalars) {
  std::string result;
  result.reserve(scalars.size());
  for (const char32_t value : scalars) {
    const UChar32 scalar = isScalarValue(value) ? static_cast<UChar32>(value) : 0xFFFD;
    std::uint8_t encoded[U8_MAX_LENGTH] = {};
    std::int32_t length = 0;
    [[maybe_unused]] UBool unusedError = false;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsign-conversion"  // inside ICU's macro, on a scalar proven valid
    U8_APPEND(encoded, length, U8_MAX_LENGTH, scalar, unusedError);
#pragma GCC diagnostic pop
    result.append(reinterpret_cast<const char*>(encoded), static_cast<std::size_t>(length));
  }
  return result;
}

bool isControl(char32_t scalar) {
  const auto category = u_charType(static_cast<UChar32>(scalar));
  return category == U_CONTROL_CHAR || category == U_FORMAT_CHAR;
}

bool isWhiteSpace(char32_t scalar) { return u_isUWhiteSpace(static_cast<UChar32>(scalar)); }

bool isLetter(char32_t scalar) { return (categoryMask(scalar) & U_GC_L_MASK) != 0; }

bool isNumber(char32_t scalar) { return (categoryMask(scalar) & U_GC_N_MASK) != 0; }

std::string_view trimmingWhiteSpace(std::string_view text) {
  if (!UTF8::isValid(text)) return text;
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

std::optional<std::vector<std::string_view>> splittingOnWhiteSpace(std::string_view text) {
  if (!UTF8::isValid(text)) return std::nullopt;
  std::vector<std::string_view> pieces;
  std::size_t pieceStart = 0;
  for (std::size_t offset = 0; offset < text.size();) {
    const std::size_t scalarStart = offset;
    if (isWhiteSpace(nextScalar(text, offset))) {
      if (scalarStart > pieceStart) pieces.push_back(text.substr(pieceStart, scalarStart - pieceStart));
      pieceStart = offset;
    }
  }
  if (text.size() > pieceStart) pieces.push_back(text.substr(pieceStart));
  return pieces;
}

std::optional<std::string> keepingLettersAndNumbers(std::string_view text, std::size_t maximumScalarCount) {
  if (!UTF8::isValid(text)) return std::nullopt;
  std::string kept;
  std::size_t keptScalarCount = 0;
  for (std::size_t offset = 0; offset < text.size() && keptScalarCount < maximumScalarCount;) {
    const std::size_t scalarStart = offset;
    const char32_t scalar = nextScalar(text, offset);
    if (isLetter(scalar) || isNumber(scalar)) {
      kept.append(text.substr(scalarStart, offset - scalarStart));
      ++keptScalarCount;
    }
  }
  return kept;
}

}  // namespace UnicodeScalars

}  // namespace galdrine::platform
