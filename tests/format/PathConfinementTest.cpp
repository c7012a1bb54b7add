#include "format/package/PathConfinement.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <system_error>

#include "platform/Random.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::format {

namespace {

namespace fs = std::filesystem;
using Error = PathConfinementError;
using PathConfinement::requireExistingDirectoryWithoutUntrustedSymbolicLinks;

// RootLink is a symbolic link directly under "/", the only place a trusted link may stand,
// removed again when it goes out of scope.
class RootLink {
 public:
  explicit RootLink(const fs::path& target)
      : path_(fs::path("/") / ("galdrine-confinement-" + platform::Random::lowercaseUUIDText().value_or("x"))) {
    testsupport::FileFixtures::makeSymbolicLink(target, path_);
  }
  ~RootLink() {
    std::error_code ignored;
    fs::remove(path_, ignored);
  }
  RootLink(const RootLink&) = delete;
  RootLink& operator=(const RootLink&) = delete;
  [[nodiscard]] const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

class PathConfinementTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(::geteuid(), 0u) << "links owned by user 0 need a root test run";
    testsupport::FileFixtures::makeDirectory(directory_ / "a");
    testsupport::FileFixtures::makeDirectory(directory_ / "a" / "b");
    testsupport::FileFixtures::writeFile(directory_ / "file", "x");
    testsupport::FileFixtures::makeSymbolicLink(directory_ / "a", directory_ / "link");
    testsupport::FileFixtures::makeSymbolicLink(directory_ / "nowhere", directory_ / "a" / "dangling");
  }

  // check runs the confinement and shows that it held no descriptor afterwards.
  [[nodiscard]] std::expected<void, Error> check(const fs::path& path) const {
    const std::size_t before = testsupport::openDescriptorCount();
    auto result = requireExistingDirectoryWithoutUntrustedSymbolicLinks(path);
    EXPECT_EQ(testsupport::openDescriptorCount(), before) << path;
    return result;
  }

  testsupport::TemporaryDirectory directory_;
};

TEST_F(PathConfinementTest, RefusesEveryPathNotWalkedThroughRealDirectories) {
  const fs::path root = directory_.path();
  const struct {
    fs::path path;
    std::expected<void, Error> expected;
  } cases[] = {
      {"/", {}},
      {root, {}},
      {root / "a" / "b", {}},
      {root.string() + "/a/b/", {}},
      {root / "a" / ".." / "a" / "." / "b", {}},
      {"", std::unexpected(Error::invalidPath)},
      {"relative/a", std::unexpected(Error::invalidPath)},
      {root / "missing", std::unexpected(Error::unavailableDirectory)},
      {root / "file", std::unexpected(Error::unavailableDirectory)},
      {root / "file" / "b", std::unexpected(Error::unavailableDirectory)},
      {root / "link", std::unexpected(Error::unavailableDirectory)},
      {root / "link" / "b", std::unexpected(Error::unavailableDirectory)},
      {root / "a" / "dangling", std::unexpected(Error::unavailableDirectory)},
  };
  for (const auto& row : cases) EXPECT_EQ(check(row.path), row.expected) << row.path;
}

TEST_F(PathConfinementTest, TrustsAFirstComponentLinkOnlyWhileUserZeroOwnsIt) {
  RootLink link(directory_.path());
  EXPECT_EQ(check(link.path() / "a" / "b"), (std::expected<void, Error>{}));
  EXPECT_EQ(check(link.path()), (std::expected<void, Error>{}));
  // Past the trusted link, every other link is refused as before.
  EXPECT_EQ(check(link.path() / "link" / "b"), std::unexpected(Error::unavailableDirectory));

  ASSERT_EQ(::lchown(link.path().c_str(), 4242, 4242), 0);
  EXPECT_EQ(check(link.path() / "a" / "b"), std::unexpected(Error::unavailableDirectory));
  EXPECT_EQ(check(link.path()), std::unexpected(Error::unavailableDirectory));
}

TEST_F(PathConfinementTest, ATrustedLinkMustLeadToADirectory) {
  RootLink toFile(directory_ / "file");
  RootLink dangling(directory_ / "nowhere");
  EXPECT_EQ(check(toFile.path()), std::unexpected(Error::unavailableDirectory));
  EXPECT_EQ(check(dangling.path()), std::unexpected(Error::unavailableDirectory));
}

}  // namespace

}  // namespace galdrine::format
