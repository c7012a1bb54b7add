#include <gtest/gtest.h>

#include "format/MediaTypeClassifier.hpp"

namespace galdrine::format {

namespace {

std::optional<platform::UniformType> noRegistry(std::string_view) { return std::nullopt; }

TEST(MediaTypeClassifier, FixedSetsDecideWithoutARegistry) {
  for (const std::string_view image : MediaTypeClassifier::knownImageIdentifiers) {
    EXPECT_TRUE(MediaTypeClassifier::isImage(image, noRegistry)) << image;
    EXPECT_FALSE(MediaTypeClassifier::isMovie(image, noRegistry)) << image;
  }
  for (const std::string_view movie : MediaTypeClassifier::knownMovieIdentifiers) {
    EXPECT_TRUE(MediaTypeClassifier::isMovie(movie, noRegistry)) << movie;
    EXPECT_FALSE(MediaTypeClassifier::isImage(movie, noRegistry)) << movie;
  }
  EXPECT_FALSE(MediaTypeClassifier::isImage("public.image", noRegistry));
  EXPECT_FALSE(MediaTypeClassifier::isImage("PUBLIC.JPEG", noRegistry));  // the sets compare exactly
}

TEST(MediaTypeClassifier, RegistryAddsConformingTypesOutsideTheSets) {
  struct ClassifyCase { std::string_view identifier; bool image; bool movie; };
  const ClassifyCase cases[] = {
      {"public.jpeg", true, false},          {"public.image", true, false},
      {"com.canon.cr3-raw-image", true, false}, {"Public.JPEG", true, false},
      {"public.movie", false, true},         {"public.video", false, true},
      {"org.matroska.mkv", false, true},     {"com.apple.m4v-video", false, true},
      {"com.apple.live-photo", false, false}, {"public.data", false, false},
      {"", false, false},
  };
  for (const ClassifyCase& classifyCase : cases) {
    EXPECT_EQ(MediaTypeClassifier::isImage(classifyCase.identifier), classifyCase.image) << classifyCase.identifier;
    EXPECT_EQ(MediaTypeClassifier::isMovie(classifyCase.identifier), classifyCase.movie) << classifyCase.identifier;
  }
}

TEST(MediaTypeClassifier, LivePhotoAndAbstractTypesAreExactMatches) {
  EXPECT_TRUE(MediaTypeClassifier::isLivePhoto("com.apple.live-photo"));
  EXPECT_FALSE(MediaTypeClassifier::isLivePhoto("com.apple.live-photo "));
  EXPECT_TRUE(MediaTypeClassifier::isAbstractMediaType("public.video"));
  EXPECT_FALSE(MediaTypeClassifier::isAbstractMediaType("public.jpeg"));
  EXPECT_FALSE(MediaTypeClassifier::isAbstractMediaType("Public.Image"));
}

}  // namespace

}  // namespace galdrine::format
