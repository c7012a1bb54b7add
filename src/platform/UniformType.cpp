#include "platform/UniformType.hpp"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/UnicodeText.hpp"
#include "platform/UniformTypeRows.hpp"

namespace galdrine::platform {

struct UniformTypeEntry {
  std::string_view identifier;
  UniformTypeConformance conformance;
  std::vector<std::string_view> fileNameExtensionTags;
};

namespace {

std::string asciiLowercased(std::string_view text) {
  std::string lowered(text);
  for (char& character : lowered) {
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
  }
  return lowered;
}

std::vector<std::string_view> splitTags(std::string_view tags) {
  std::vector<std::string_view> split;
  while (!tags.empty()) {
    const std::size_t comma = tags.find(',');
    split.push_back(tags.substr(0, comma));
    tags = comma == std::string_view::npos ? std::string_view{} : tags.substr(comma + 1);
  }
  return split;
}

struct Registry {
  std::vector<UniformTypeEntry> entries;
  std::unordered_map<std::string, std::size_t> indexByLowercasedIdentifier;
};

// registry is built once, on first use; a static local is initialised safely from any thread.
const Registry& registry() {
  static const Registry built = [] {
    Registry made;
    const auto rows = UniformTypeRows::all();
    made.entries.reserve(rows.size());
    for (const UniformTypeRow& row : rows) {
      made.indexByLowercasedIdentifier.emplace(asciiLowercased(row.identifier), made.entries.size());
      made.entries.push_back({row.identifier, row.conformance, splitTags(row.fileNameExtensionTags)});
    }
    return made;
  }();
  return built;
}

}  // namespace

std::optional<UniformType> UniformType::fromIdentifier(std::string_view identifier) {
  const Registry& types = registry();
  const auto found = types.indexByLowercasedIdentifier.find(asciiLowercased(identifier));
  if (found == types.indexByLowercasedIdentifier.end()) return std::nullopt;
  return UniformType(&types.entries[found->second]);
}

std::optional<UniformType> UniformType::fromFileNameExtension(std::string_view extension) {
  if (extension.empty()) return std::nullopt;
  // Tags are lower-case ASCII, which is its own full case folding.
  const auto folded = UnicodeText::caseFolded(extension);
  if (!folded) return std::nullopt;
  const Registry& types = registry();
  const auto found = std::ranges::find_if(types.entries, [&](const UniformTypeEntry& entry) {
    return std::ranges::find(entry.fileNameExtensionTags, *folded) != entry.fileNameExtensionTags.end();
  });
  if (found == types.entries.end()) return std::nullopt;
  return UniformType(&*found);
}

std::string_view UniformType::identifier() const { return entry_->identifier; }

bool UniformType::conformsToImage() const { return entry_->conformance == UniformTypeConformance::image; }

bool UniformType::conformsToMovie() const { return entry_->conformance == UniformTypeConformance::movie; }

std::span<const std::string_view> UniformType::fileNameExtensionTags() const { return entry_->fileNameExtensionTags; }

std::optional<std::string_view> UniformType::preferredFileNameExtension() const {
  if (entry_->fileNameExtensionTags.empty()) return std::nullopt;
  return entry_->fileNameExtensionTags.front();
}

}  // namespace galdrine::platform
