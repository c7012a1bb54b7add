#include <gtest/gtest.h>

#include "GaldrineCore/GaldrineMediaTypeClassifier.hpp"

namespace {

std::optional<GaldrineUniformType> noRegistry(std::string_view) { return std::nullopt; }

TEST(GaldrineMediaTypeClassifier, FixedSetsDecideWithoutARegistry) {
  for (const std::string_view image : GaldrineMediaTypeClassifier::knownImageIdentifiers) {
    EXPECT_TRUE(GaldrineMediaTypeClassifier::isImage(image, noRegistry)) << image;
    EXPECT_FALSE(GaldrineMediaTypeClassifier::isMovie(image, noRegistry)) << image;
  }
  for (const std::string_view movie : GaldrineMediaTypeClassifier::knownMovieIdentifiers) {
    EXPECT_TRUE(GaldrineMediaTypeClassifier::isMovie(movie, noRegistry)) << movie;
    EXPECT_FALSE(GaldrineMediaTypeClassifier::isImage(movie, noRegistry)) << movie;
  }
  EXPECT_FALSE(GaldrineMediaTypeClassifier::isImage("public.image", noRegistry));
  EXPECT_FALSE(GaldrineMediaTypeClassifier::isImage("PUBLIC.JPEG", noRegistry));  // the sets compare exactly
}

TEST(GaldrineMediaTypeClassifier, RegistryAddsConformingTypesOutsideTheSets) {
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
    EXPECT_EQ(GaldrineMediaTypeClassifier::isImage(classifyCase.identifier), classifyCase.image) << classifyCase.identifier;
    EXPECT_EQ(GaldrineMediaTypeClassifier::isMovie(classifyCase.identifier), classifyCase.movie) << classifyCase.identifier;
  }
}

TEST(GaldrineMediaTypeClassifier, LivePhotoAndAbstractTypesAreExactMatches) {
  EXPECT_TRUE(GaldrineMediaTypeClassifier::isLivePhoto("com.apple.live-photo"));
  EXPECT_FALSE(GaldrineMediaTypeClassifier::isLivePhoto("com.apple.live-photo "));
  EXPECT_TRUE(GaldrineMediaTypeClassifier::isAbstractMediaType("public.video"));
  EXPECT_FALSE(GaldrineMediaTypeClassifier::isAbstractMediaType("public.jpeg"));
  EXPECT_FALSE(GaldrineMediaTypeClassifier::isAbstractMediaType("Public.Image"));
}

}  // namespace
