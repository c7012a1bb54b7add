#include "format/MediaTypeClassifier.hpp"

#include <algorithm>

namespace galdrine::format {

namespace MediaTypeClassifier {

bool isLivePhoto(std::string_view identifier) { return identifier == livePhotoIdentifier; }

bool isAbstractMediaType(std::string_view identifier) {
  return std::ranges::find(abstractIdentifiers, identifier) != abstractIdentifiers.end();
}

bool isImage(std::string_view identifier, TypeLookup lookup) {
  const auto type = lookup(identifier);
  if (type && type->conformsToImage()) return true;
  return std::ranges::find(knownImageIdentifiers, identifier) != knownImageIdentifiers.end();
}

bool isMovie(std::string_view identifier, TypeLookup lookup) {
  const auto type = lookup(identifier);
  if (type && type->conformsToMovie()) return true;
  return std::ranges::find(knownMovieIdentifiers, identifier) != knownMovieIdentifiers.end();
}

}  // namespace MediaTypeClassifier

}  // namespace galdrine::format
