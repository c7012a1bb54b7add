#pragma once
// RecoveryKeyVocabulary is the recovery key word list, read from its file and checked
// on every load: the file's SHA-256 must be the published list's, and its 2048 words must be
// valid UTF-8, one a line, distinct and in ascending order. There is no cache, so a file that
// changes on disk is caught on the next operation.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keys/RecoveryKeyMnemonicV1Error.hpp"

namespace galdrine::keys {

class RecoveryKeyVocabulary {
 public:
  static constexpr std::size_t wordCount = 2048;
  // The published list is 13116 bytes; a file above this bound is refused before it is read.
  static constexpr std::size_t maximumFileByteCount = 65536;
  static constexpr std::string_view fileSHA256 = "2f5eed53a4727b4bf8880d8f3f199efc90e58503646d9ff8eff3a2ed3b24dbda";

  // load reads and checks the file. Any fault (missing, not a regular file, too long,
  // unreadable, another digest, a malformed list) is invalidWordList.
  [[nodiscard]] static std::expected<RecoveryKeyVocabulary, RecoveryKeyMnemonicV1Error> load(
      const std::filesystem::path& file);

  // word gives the word at an index below wordCount.
  [[nodiscard]] std::string_view word(std::uint16_t index) const { return words_[index]; }

  // indexOf gives the index of a word of the list, or nothing.
  [[nodiscard]] std::optional<std::uint16_t> indexOf(std::string_view word) const;

 private:
  explicit RecoveryKeyVocabulary(std::vector<std::string> words) : words_(std::move(words)) {}
  std::vector<std::string> words_;  // ascending, so a binary search is the table from word to index
};

}  // namespace galdrine::keys
