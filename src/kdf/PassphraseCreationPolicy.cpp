#include "kdf/PassphraseCreationPolicy.hpp"

#include <set>
#include <string>
#include <vector>

#include "platform/GraphemeClusters.hpp"
#include "platform/UnicodeScalars.hpp"
#include "platform/UnicodeText.hpp"

namespace galdrine::kdf {

namespace {

using Characters = std::vector<std::string_view>;

// A character is whitespace or a number by its first scalar, so a blank that carries a
// combining mark is still a blank, and "1" with an enclosing keycap still a number.
char32_t firstScalar(std::string_view character) {
  const auto scalars = platform::UnicodeScalars::scalars(character);
  return scalars && !scalars->empty() ? scalars->front() : U'\0';
}

bool hasOnlyPermittedScalars(std::string_view text) {
  const auto scalars = platform::UnicodeScalars::scalars(text);
  if (!scalars) return false;
  for (const char32_t scalar : *scalars) {
    if (platform::UnicodeScalars::isControl(scalar)) return false;
    if (platform::UnicodeScalars::isWhiteSpace(scalar) && scalar != U' ') return false;
  }
  return true;
}

std::string withoutWhiteSpaceCharacters(const Characters& characters) {
  std::string rest;
  for (const std::string_view character : characters) {
    if (!platform::UnicodeScalars::isWhiteSpace(firstScalar(character))) rest.append(character);
  }
  return rest;
}

bool hasCharacterOtherThanNumber(const Characters& characters) {
  for (const std::string_view character : characters) {
    if (!platform::UnicodeScalars::isNumber(firstScalar(character))) return true;
  }
  return false;
}

bool hasAtLeastFourDistinctCharacters(const Characters& characters) {
  const std::set<std::string_view> distinct(characters.begin(), characters.end());
  return distinct.size() >= 4;
}

// repeatsAShorterUnit tells whether some unit length k (1 to n / 2, dividing n) makes every
// character equal to the one k places before it.
bool repeatsAShorterUnit(const Characters& characters) {
  const std::size_t count = characters.size();
  for (std::size_t unit = 1; unit <= count / 2; ++unit) {
    if (count % unit != 0) continue;
    bool repeats = true;
    for (std::size_t index = unit; index < count && repeats; ++index) {
      repeats = characters[index] == characters[index % unit];
    }
    if (repeats) return true;
  }
  return false;
}

}  // namespace

namespace PassphraseCreationPolicy {

bool accepts(std::string_view text, std::int64_t minimumCharacterCount, std::int64_t recommendedWordCount) {
  if (minimumCharacterCount < 1 || recommendedWordCount < 1) return false;
  const auto characters = platform::GraphemeClusters::clusters(text);
  if (!characters || characters->size() < static_cast<std::uint64_t>(minimumCharacterCount)) return false;
  if (platform::UnicodeScalars::trimmingWhiteSpace(text).size() != text.size()) return false;
  if (!hasOnlyPermittedScalars(text)) return false;
  const std::string rest = withoutWhiteSpaceCharacters(*characters);
  if (rest.empty()) return false;
  const auto restCharacters = platform::GraphemeClusters::clusters(rest);
  if (!restCharacters || !hasCharacterOtherThanNumber(*restCharacters)) return false;
  const auto folded = platform::UnicodeText::caseDiacriticAndWidthFolded(rest);
  if (!folded) return false;
  const auto foldedCharacters = platform::GraphemeClusters::clusters(*folded);
  if (!foldedCharacters || !hasAtLeastFourDistinctCharacters(*foldedCharacters)) return false;
  return !repeatsAShorterUnit(*foldedCharacters);
}

}  // namespace PassphraseCreationPolicy

}  // namespace galdrine::kdf
