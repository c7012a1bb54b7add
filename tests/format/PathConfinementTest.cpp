#include "format/package/PathConfinement.hpp"

#include <unistd.h>

#include <gtest/gtest.h>

#include <system_error>

#include "platform/Random.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::format {

namespace {

namespace fs = std::filesystem;
using Error = PathConfinementError;
using namespace testsupport::FileFixtures;

// RootLink is a symbolic link directly under "/", the only place a trusted link may stand,
// removed again when it goes out of scope.
struct RootLink {
  explicit RootLink(const fs::path& target) { makeSymbolicLink(target, path); }
  ~RootLink() {
    std::error_code ignored;
    fs::remove(path, ignored);
  }
  const fs::path path = fs::path("/") / ("galdrine-confinement-" + platform::Random::lowercaseUUIDText().value_or("x"));
};

}  // namespace

TEST(PathConfinement, PassesOnlyAPathWalkedThroughRealDirectoriesOrOneTrustedLink) {
  ASSERT_EQ(::geteuid(), 0u) << "links owned by user 0 need a root test run";
  testsupport::TemporaryDirectory directory;
  const fs::path root = directory.path();
  makeDirectory(root / "a");
  makeDirectory(root / "a" / "b");
  writeFile(root / "file", "x");
  makeSymbolicLink(root / "a", root / "link");
  const RootLink trusted(root), untrusted(root), toFile(root / "file");
  ASSERT_EQ(::lchown(untrusted.path.c_str(), 4242, 4242), 0);
  const std::expected<void, Error> passes{}, invalidPath = std::unexpected(Error::invalidPath),
                                             unavailable = std::unexpected(Error::unavailableDirectory);
  const std::pair<fs::path, std::expected<void, Error>> cases[] = {
      {"/", passes},
      {root / "a" / "b", passes},
      {root / "a" / ".." / "a" / "." / "b", passes},
      {trusted.path, passes},
      {trusted.path / "a" / "b", passes},
      {"", invalidPath},
      {"relative/a", invalidPath},
      {root / "missing", unavailable},
      {root / "file", unavailable},
      {root / "link", unavailable},
      {trusted.path / "link" / "b", unavailable},  // past the trusted link every other link is refused
      {untrusted.path, unavailable},
      {toFile.path, unavailable},
  };
  const std::size_t before = testsupport::openDescriptorCount();
  for (const auto& [path, expected] : cases) {
    EXPECT_EQ(PathConfinement::requireExistingDirectoryWithoutUntrustedSymbolicLinks(path), expected) << path;
  }
  EXPECT_EQ(testsupport::openDescriptorCount(), before);  // no descriptor is held afterwards, whatever the result
}

}  // namespace galdrine::format
