#pragma once
// UniformType is one type of the program's uniform type registry: an identifier such
// as "public.jpeg", whether it conforms to the image or the movie type, and its file name
// extension tags. The registry is fixed at build time; a type it does not list does not
// resolve. Identifiers compare without regard to ASCII case, as uniform type identifiers do.
// Abstract types ("public.image") resolve but carry no tags.

#include <optional>
#include <span>
#include <string_view>

namespace galdrine::platform {

struct UniformTypeEntry;

class UniformType {
 public:
  // fromIdentifier gives the registered type of that identifier, or nothing.
  [[nodiscard]] static std::optional<UniformType> fromIdentifier(std::string_view identifier);

  // fromFileNameExtension gives the first registered type, in table order, that lists
  // `extension` (without the dot) among its tags, compared in full case folding, so "JPG" finds
  // public.jpeg. An empty extension, text that is not UTF-8, or an unlisted tag gives nothing.
  [[nodiscard]] static std::optional<UniformType> fromFileNameExtension(std::string_view extension);

  // identifier is the registered spelling, whatever the spelling of the lookup.
  [[nodiscard]] std::string_view identifier() const;
  [[nodiscard]] bool conformsToImage() const;
  [[nodiscard]] bool conformsToMovie() const;

  // fileNameExtensionTags are lower case, without a dot, the preferred one first.
  [[nodiscard]] std::span<const std::string_view> fileNameExtensionTags() const;
  [[nodiscard]] std::optional<std::string_view> preferredFileNameExtension() const;

  friend bool operator==(const UniformType& left, const UniformType& right) { return left.entry_ == right.entry_; }

 private:
  explicit UniformType(const UniformTypeEntry* entry) : entry_(entry) {}
  const UniformTypeEntry* entry_;  // static registry data, never null
};

}  // namespace galdrine::platform
