#include <gtest/gtest.h>

#include "GaldrinePlatform/GaldrineFileNameParts.hpp"

TEST(GaldrineFileNameParts, SplitsAtTheLastDotUnlessItStandsFirst) {
  struct SplitCase { std::string_view name; GaldrineFileNameParts expected; };
  const SplitCase cases[] = {
      {"IMG_0001.HEIC", {"IMG_0001", "HEIC"}},
      {"a.b.c", {"a.b", "c"}},
      {".jpg", {".jpg", ""}},
      {"a.", {"a", ""}},
      {"..jpg", {".", "jpg"}},
      {".", {".", ""}},
      {"", {"", ""}},
      {"noextension", {"noextension", ""}},
      {"R\u00E9sum\u00E9.jpg", {"R\u00E9sum\u00E9", "jpg"}},
  };
  for (const SplitCase& splitCase : cases) {
    EXPECT_EQ(GaldrineFileNameParts::split(splitCase.name), splitCase.expected) << splitCase.name;
  }
}
