#include "format/header/BackupFormatV1.hpp"

#include <gtest/gtest.h>

#include <string>

namespace galdrine::format {

TEST(BackupFormatV1, PackageRootNames) {
  const auto nameOfByteCount = [](std::size_t byteCount) { return std::string(byteCount - 9, 'a') + ".galdrine"; };
  const struct {
    std::string name;
    bool valid;
  } cases[] = {
      {"a.galdrine", true},
      {"Fotos f\u00FCr Oma \u2014 2024.galdrine", true},
      {nameOfByteCount(128), true},
      {nameOfByteCount(129), false},
      {".galdrine", false},
      {" .galdrine", false},
      {"\u3000\n.galdrine", false},
      {"x.GALDRINE", false},
      {"x.galdrine/", false},
      {"a/b.galdrine", false},
      {"a\\b.galdrine", false},
      {"a\tb.galdrine", false},
      {std::string("a\0b.galdrine", 12), false},
      {"\xC3.galdrine", false},  // not UTF-8
      {"", false},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(BackupFormatV1::isValidPackageRootName(row.name), row.valid) << row.name;
  }
}

}  // namespace galdrine::format
