#include <gtest/gtest.h>

#include "platform/FileNameParts.hpp"

namespace galdrine::platform {

TEST(FileNameParts, SplitsAtTheLastDotUnlessItStandsFirst) {
  struct SplitCase { std::string_view name; FileNameParts expected; };
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
    EXPECT_EQ(FileNameParts::split(splitCase.name), splitCase.expected) << splitCase.name;
  }
}

}  // namespace galdrine::platform
