#include "platform/UnicodeText.hpp"

#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include "platform/UTF8.hpp"

namespace galdrine::platform {

namespace {

using TextResult = std::expected<std::string, UnicodeTextError>;
using UTF16Result = std::expected<icu::UnicodeString, UnicodeTextError>;

UTF16Result serviceFailure() { return std::unexpected(UnicodeTextError::textServiceFailed); }

// utf16 checks the bounds and the encoding before the library sees a byte.
UTF16Result utf16(std::string_view text) {
  if (text.size() > UnicodeText::maximumUTF8ByteCount) {
    return std::unexpected(UnicodeTextError::textTooLong);
  }
  if (!UTF8::isValid(text)) return std::unexpected(UnicodeTextError::invalidUTF8);
  icu::UnicodeString converted =
      icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
  if (converted.isBogus()) return serviceFailure();
  return converted;
}

TextResult utf8(const UTF16Result& text) {
  if (!text) return std::unexpected(text.error());
  if (text->isBogus()) return std::unexpected(UnicodeTextError::textServiceFailed);
  std::string converted;
  text->toUTF8String(converted);
  return converted;
}

using NormalizerInstance = const icu::Normalizer2* (*)(UErrorCode&);

UTF16Result normalized(const UTF16Result& text, NormalizerInstance instance) {
  if (!text) return text;
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* normalizer = instance(status);
  if (U_FAILURE(status) || normalizer == nullptr) return serviceFailure();
  icu::UnicodeString result = normalizer->normalize(*text, status);
  if (U_FAILURE(status) || result.isBogus()) return serviceFailure();
  return result;
}

// emptyWithCapacity avoids regrowing a result scalar by scalar.
icu::UnicodeString emptyWithCapacity(std::int32_t capacity) { return icu::UnicodeString(capacity, UChar32{0}, 0); }

UTF16Result withoutNonspacingMarks(const UTF16Result& text) {
  if (!text) return text;
  icu::UnicodeString result = emptyWithCapacity(text->length());
  for (std::int32_t index = 0; index < text->length();) {
    const UChar32 scalar = text->char32At(index);
    index += U16_LENGTH(scalar);
    if (u_charType(scalar) != U_NON_SPACING_MARK) result.append(scalar);
  }
  if (result.isBogus()) return serviceFailure();
  return result;
}

UTF16Result fullyCaseFolded(UTF16Result text) {
  if (!text) return text;
  // UnicodeString::foldCase is u_strFoldCase: full case folding, default (non-Turkic) mappings.
  text->foldCase(U_FOLD_CASE_DEFAULT);
  if (text->isBogus()) return serviceFailure();
  return text;
}

bool isWidthVariant(UChar32 scalar) {
  const auto type = u_getIntPropertyValue(scalar, UCHAR_DECOMPOSITION_TYPE);
  return type == U_DT_WIDE || type == U_DT_NARROW;
}

UTF16Result widthFolded(const UTF16Result& text) {
  if (!text) return text;
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* compatibility = icu::Normalizer2::getNFKDInstance(status);
  if (U_FAILURE(status) || compatibility == nullptr) return serviceFailure();
  icu::UnicodeString result = emptyWithCapacity(text->length());
  icu::UnicodeString decomposition;
  for (std::int32_t index = 0; index < text->length();) {
    const UChar32 scalar = text->char32At(index);
    index += U16_LENGTH(scalar);
    // The raw mapping is the one-level decomposition that carries the <wide>/<narrow> tag.
    if (isWidthVariant(scalar) && compatibility->getRawDecomposition(scalar, decomposition)) {
      result.append(decomposition);
    } else {
      result.append(scalar);
    }
  }
  if (result.isBogus()) return serviceFailure();
  return result;
}

UTF16Result caseAndDiacriticFoldedUTF16(const UTF16Result& text) {
  const auto withoutMarks = withoutNonspacingMarks(normalized(text, icu::Normalizer2::getNFDInstance));
  const auto folded = fullyCaseFolded(withoutMarks);
  const auto refolded = withoutNonspacingMarks(normalized(folded, icu::Normalizer2::getNFDInstance));
  return normalized(refolded, icu::Normalizer2::getNFCInstance);
}

}  // namespace

namespace UnicodeText {

std::expected<std::string, UnicodeTextError> normalizedNFC(std::string_view text) {
  return utf8(normalized(utf16(text), icu::Normalizer2::getNFCInstance));
}

std::expected<std::string, UnicodeTextError> normalizedNFKD(std::string_view text) {
  return utf8(normalized(utf16(text), icu::Normalizer2::getNFKDInstance));
}

std::expected<std::string, UnicodeTextError> lowercased(std::string_view text) {
  UTF16Result converted = utf16(text);
  if (converted) converted->toLower(icu::Locale::getRoot());
  return utf8(converted);
}

std::expected<std::string, UnicodeTextError> caseFolded(std::string_view text) {
  return utf8(fullyCaseFolded(utf16(text)));
}

std::expected<std::string, UnicodeTextError> caseAndDiacriticFolded(std::string_view text) {
  return utf8(caseAndDiacriticFoldedUTF16(utf16(text)));
}

std::expected<std::string, UnicodeTextError> caseDiacriticAndWidthFolded(std::string_view text) {
  return utf8(caseAndDiacriticFoldedUTF16(widthFolded(utf16(text))));
}

}  // namespace UnicodeText

}  // namespace galdrine::platform
