#include "keys/RecoveryKeyVocabulary.hpp"

#include <algorithm>

#include "platform/Bytes.hpp"
#include "platform/SHA256.hpp"
#include "platform/UTF8.hpp"

namespace galdrine::keys {

namespace {

std::vector<std::string> nonEmptyLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t newline = text.find('\n');
    const std::string_view line = text.substr(0, newline);
    if (!line.empty()) lines.emplace_back(line);
    text = newline == std::string_view::npos ? std::string_view{} : text.substr(newline + 1);
  }
  return lines;
}

// isStrictlyAscending holds exactly when the list equals its sorted form and has no duplicate.
bool isStrictlyAscending(const std::vector<std::string>& words) {
  return std::ranges::adjacent_find(words, std::ranges::greater_equal{}) == words.end();
}

}  // namespace

std::optional<RecoveryKeyVocabulary> RecoveryKeyVocabulary::load(ByteView list) {
  if (ByteText::lowerHex(platform::SHA256::digest(list)) != fileSHA256) return std::nullopt;
  if (!platform::UTF8::isValid(list)) return std::nullopt;
  std::vector<std::string> words = nonEmptyLines(ByteText::text(list));
  if (words.size() != wordCount || !isStrictlyAscending(words)) return std::nullopt;
  return RecoveryKeyVocabulary(std::move(words));
}

std::optional<std::uint16_t> RecoveryKeyVocabulary::indexOf(std::string_view word) const {
  const auto found = std::ranges::lower_bound(words_, word, std::ranges::less{},
                                              [](const std::string& entry) { return std::string_view(entry); });
  if (found == words_.end() || *found != word) return std::nullopt;
  return static_cast<std::uint16_t>(found - words_.begin());
}

}  // namespace galdrine::keys
