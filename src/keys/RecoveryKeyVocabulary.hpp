#pragma once
// RecoveryKeyVocabulary is the recovery key word list, compiled into the program and checked
// on every load: the bytes' SHA-256 must be the published list's, and its 2048 words must be
// valid UTF-8, one a line, distinct and in ascending order. Nothing is cached, so every
// operation that needs the list proves it again.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Bytes.hpp"

namespace galdrine::keys {

class RecoveryKeyVocabulary {
 public:
  static constexpr std::size_t wordCount = 2048;
  static constexpr std::string_view fileSHA256 = "2f5eed53a4727b4bf8880d8f3f199efc90e58503646d9ff8eff3a2ed3b24dbda";

  // publishedList is the bytes of resources/bip39-english-v1.txt as the build compiled them in
  // (a generated source); load still checks them.
  [[nodiscard]] static ByteView publishedList();

  // load checks `list` and builds the table from word to index. Another digest, bytes that are
  // not UTF-8 or a list of another shape give nothing.
  [[nodiscard]] static std::optional<RecoveryKeyVocabulary> load(ByteView list);

  // word gives the word at an index below wordCount.
  [[nodiscard]] std::string_view word(std::uint16_t index) const { return words_[index]; }

  // indexOf gives the index of a word of the list, or nothing.
  [[nodiscard]] std::optional<std::uint16_t> indexOf(std::string_view word) const;

 private:
  explicit RecoveryKeyVocabulary(std::vector<std::string> words) : words_(std::move(words)) {}
  std::vector<std::string> words_;  // ascending, so a binary search is the table from word to index
};

}  // namespace galdrine::keys
