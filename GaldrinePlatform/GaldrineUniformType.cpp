#include "GaldrinePlatform/GaldrineUniformType.hpp"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include "GaldrinePlatform/GaldrineUnicodeText.hpp"
#include "GaldrinePlatform/GaldrineUniformTypeRows.hpp"

struct GaldrineUniformTypeEntry {
  std::string_view identifier;
  GaldrineUniformTypeConformance conformance;
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
  std::vector<GaldrineUniformTypeEntry> entries;
  std::unordered_map<std::string, std::size_t> indexByLowercasedIdentifier;
};

// registry is built once, on first use; a static local is initialised safely from any thread.
const Registry& registry() {
  static const Registry built = [] {
    Registry made;
    const auto rows = GaldrineUniformTypeRows::all();
    made.entries.reserve(rows.size());
    for (const GaldrineUniformTypeRow& row : rows) {
      made.indexByLowercasedIdentifier.emplace(asciiLowercased(row.identifier), made.entries.size());
      made.entries.push_back({row.identifier, row.conformance, splitTags(row.fileNameExtensionTags)});
    }
    return made;
  }();
  return built;
}

}  // namespace

std::optional<GaldrineUniformType> GaldrineUniformType::fromIdentifier(std::string_view identifier) {
  const Registry& types = registry();
  const auto found = types.indexByLowercasedIdentifier.find(asciiLowercased(identifier));
  if (found == types.indexByLowercasedIdentifier.end()) return std::nullopt;
  return GaldrineUniformType(&types.entries[found->second]);
}

std::optional<GaldrineUniformType> GaldrineUniformType::fromFileNameExtension(std::string_view extension) {
  if (extension.empty()) return std::nullopt;
  // Tags are lower-case ASCII, which is its own full case folding.
  const auto folded = GaldrineUnicodeText::caseFolded(extension);
  if (!folded) return std::nullopt;
  const Registry& types = registry();
  const auto found = std::ranges::find_if(types.entries, [&](const GaldrineUniformTypeEntry& entry) {
    return std::ranges::find(entry.fileNameExtensionTags, *folded) != entry.fileNameExtensionTags.end();
  });
  if (found == types.entries.end()) return std::nullopt;
  return GaldrineUniformType(&*found);
}

std::string_view GaldrineUniformType::identifier() const { return entry_->identifier; }

bool GaldrineUniformType::conformsToImage() const {
  return entry_->conformance == GaldrineUniformTypeConformance::image;
}

bool GaldrineUniformType::conformsToMovie() const {
  return entry_->conformance == GaldrineUniformTypeConformance::movie;
}

std::span<const std::string_view> GaldrineUniformType::fileNameExtensionTags() const {
  return entry_->fileNameExtensionTags;
}

std::optional<std::string_view> GaldrineUniformType::preferredFileNameExtension() const {
  if (entry_->fileNameExtensionTags.empty()) return std::nullopt;
  return entry_->fileNameExtensionTags.front();
}
