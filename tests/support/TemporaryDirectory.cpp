#include "support/TemporaryDirectory.hpp"

#include <stdlib.h>

#include <gtest/gtest.h>

#include <string>
#include <system_error>

namespace galdrine::testsupport {

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "galdrine-test-XXXXXX").string();
  // Canonical, so that tests compare against the same spelling the code under test sees.
  if (const char* made = ::mkdtemp(pattern.data()); made != nullptr) path_ = std::filesystem::canonical(made);
  if (path_.empty()) ADD_FAILURE() << "mkdtemp failed";
}

TemporaryDirectory::~TemporaryDirectory() {
  if (path_.empty()) return;
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace galdrine::testsupport
