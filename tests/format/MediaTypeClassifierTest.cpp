#include "format/MediaTypeClassifier.hpp"

#include <gtest/gtest.h>

namespace galdrine::format {

// The registry decides by conformance; without it ("alone") only the exact fixed sets count.
TEST(MediaTypeClassifier, ClassifiesByTheRegistryAndElseByTheFixedSets) {
  using namespace MediaTypeClassifier;
  const TypeLookup noRegistry = [](std::string_view) -> std::optional<platform::UniformType> { return std::nullopt; };
  const struct {
    std::string_view identifier;
    bool image, movie, imageAlone, movieAlone;
  } cases[] = {
      {"public.jpeg", true, false, true, false},
      {"public.image", true, false, false, false},
      {"Public.JPEG", true, false, false, false},
      {"public.movie", false, true, false, false},
      {"org.matroska.mkv", false, true, false, true},
      {"com.apple.m4v-video", false, true, false, false},
      {"com.apple.live-photo", false, false, false, false},
      {"", false, false, false, false},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(isImage(row.identifier), row.image) << row.identifier;
    EXPECT_EQ(isMovie(row.identifier), row.movie) << row.identifier;
    EXPECT_EQ(isImage(row.identifier, noRegistry), row.imageAlone) << row.identifier;
    EXPECT_EQ(isMovie(row.identifier, noRegistry), row.movieAlone) << row.identifier;
  }
}

}  // namespace galdrine::format
