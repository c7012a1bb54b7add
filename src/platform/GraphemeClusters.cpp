#include "platform/GraphemeClusters.hpp"

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/utext.h>

#include <memory>

#include "platform/UTF8.hpp"

namespace galdrine::platform {

namespace {

// characterIterator is made once per thread: an iterator holds its position and text, so it
// cannot be shared, and making one loads rule data.
icu::BreakIterator* characterIterator() {
  thread_local const std::unique_ptr<icu::BreakIterator> iterator = [] {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> made(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status)) made.reset();
    return made;
  }();
  return iterator.get();
}

struct UTextClose {
  void operator()(UText* text) const { utext_close(text); }
};

// boundaries gives the byte offsets where characters begin, then the end of the text. The
// iterator reads the UTF-8 bytes in place, so its positions are byte offsets already.
std::expected<std::vector<std::size_t>, UnicodeTextError> boundaries(std::string_view text) {
  if (text.size() > UnicodeText::maximumUTF8ByteCount) {
    return std::unexpected(UnicodeTextError::textTooLong);
  }
  if (!UTF8::isValid(text)) return std::unexpected(UnicodeTextError::invalidUTF8);
  icu::BreakIterator* iterator = characterIterator();
  if (iterator == nullptr) return std::unexpected(UnicodeTextError::textServiceFailed);
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UText, UTextClose> utext(
      utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status));
  if (U_FAILURE(status)) return std::unexpected(UnicodeTextError::textServiceFailed);
  iterator->setText(utext.get(), status);
  if (U_FAILURE(status)) return std::unexpected(UnicodeTextError::textServiceFailed);
  std::vector<std::size_t> offsets;
  for (std::int32_t offset = iterator->first(); offset != icu::BreakIterator::DONE; offset = iterator->next()) {
    offsets.push_back(static_cast<std::size_t>(offset));
  }
  // Leave no pointer to the caller's bytes inside the iterator of this thread.
  iterator->setText(icu::UnicodeString());
  return offsets;
}

}  // namespace

namespace GraphemeClusters {

std::expected<std::vector<std::string_view>, UnicodeTextError> clusters(std::string_view text) {
  const auto offsets = boundaries(text);
  if (!offsets) return std::unexpected(offsets.error());
  std::vector<std::string_view> result;
  result.reserve(offsets->size());
  for (std::size_t index = 1; index < offsets->size(); ++index) {
    result.push_back(text.substr((*offsets)[index - 1], (*offsets)[index] - (*offsets)[index - 1]));
  }
  return result;
}

std::expected<std::string_view, UnicodeTextError> truncatedToUTF8ByteCount(std::string_view text,
                                                                           std::size_t maximumUTF8ByteCount) {
  const auto offsets = boundaries(text);
  if (!offsets) return std::unexpected(offsets.error());
  std::size_t kept = 0;
  for (const std::size_t offset : *offsets) {
    if (offset > maximumUTF8ByteCount) break;
    kept = offset;
  }
  return text.substr(0, kept);
}

}  // namespace GraphemeClusters

}  // namespace galdrine::platform
