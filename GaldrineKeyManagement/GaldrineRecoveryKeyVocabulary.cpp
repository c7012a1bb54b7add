#include "GaldrineKeyManagement/GaldrineRecoveryKeyVocabulary.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"
#include "GaldrinePlatform/GaldrineScopeGuard.hpp"
#include "GaldrinePlatform/GaldrineUTF8.hpp"

namespace {

using Vocabulary = GaldrineRecoveryKeyVocabulary;

// readBoundedFile reads a regular file of at most `maximumByteCount` bytes. The size is
// checked before any memory is taken, and reading stops one byte past the bound in case the
// file grew meanwhile.
std::optional<Bytes> readBoundedFile(const std::filesystem::path& file, std::size_t maximumByteCount) {
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (descriptor < 0) return std::nullopt;
  const GaldrineScopeGuard closeDescriptor{[descriptor] { ::close(descriptor); }};
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  if (status.st_size < 0 || static_cast<std::uint64_t>(status.st_size) > maximumByteCount) return std::nullopt;
  Bytes bytes(maximumByteCount + 1);
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t count = ::read(descriptor, bytes.data() + filled, bytes.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  if (filled > maximumByteCount) return std::nullopt;
  bytes.resize(filled);
  return bytes;
}

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

std::expected<GaldrineRecoveryKeyVocabulary, GaldrineRecoveryKeyMnemonicV1Error> GaldrineRecoveryKeyVocabulary::load(
    const std::filesystem::path& file) {
  const auto invalid = std::unexpected(GaldrineRecoveryKeyMnemonicV1Error::invalidWordList());
  const auto bytes = readBoundedFile(file, maximumFileByteCount);
  if (!bytes) return invalid;
  if (GaldrineByteText::lowerHex(GaldrinePlatformSHA256::digest(*bytes)) != fileSHA256) return invalid;
  if (!GaldrineUTF8::isValid(*bytes)) return invalid;
  std::vector<std::string> words = nonEmptyLines(GaldrineByteText::text(*bytes));
  if (words.size() != wordCount || !isStrictlyAscending(words)) return invalid;
  return GaldrineRecoveryKeyVocabulary(std::move(words));
}

std::optional<std::uint16_t> GaldrineRecoveryKeyVocabulary::indexOf(std::string_view word) const {
  const auto found = std::ranges::lower_bound(words_, word, std::ranges::less{}, [](const std::string& entry) {
    return std::string_view(entry);
  });
  if (found == words_.end() || *found != word) return std::nullopt;
  return static_cast<std::uint16_t>(found - words_.begin());
}
