#include "GaldrineCore/GaldrinePathConfinement.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <system_error>

#include "GaldrinePlatform/GaldrinePlatformRandom.hpp"
#include "Support/GaldrineFileFixtures.hpp"
#include "Support/GaldrineOpenDescriptorCount.hpp"
#include "Support/GaldrineTemporaryDirectory.hpp"

namespace {

namespace fs = std::filesystem;
using Error = GaldrinePathConfinementError;
using GaldrinePathConfinement::requireExistingDirectoryWithoutUntrustedSymbolicLinks;

// RootLink is a symbolic link directly under "/", the only place a trusted link may stand,
// removed again when it goes out of scope.
class RootLink {
 public:
  explicit RootLink(const fs::path& target)
      : path_(fs::path("/") / ("galdrine-confinement-" + GaldrinePlatformRandom::lowercaseUUIDText().value_or("x"))) {
    GaldrineFileFixtures::makeSymbolicLink(target, path_);
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

class GaldrinePathConfinementTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(::geteuid(), 0u) << "links owned by user 0 need a root test run";
    GaldrineFileFixtures::makeDirectory(directory_ / "a");
    GaldrineFileFixtures::makeDirectory(directory_ / "a" / "b");
    GaldrineFileFixtures::writeFile(directory_ / "file", "x");
    GaldrineFileFixtures::makeSymbolicLink(directory_ / "a", directory_ / "link");
    GaldrineFileFixtures::makeSymbolicLink(directory_ / "nowhere", directory_ / "a" / "dangling");
  }

  // check runs the confinement and shows that it held no descriptor afterwards.
  [[nodiscard]] std::expected<void, Error> check(const fs::path& path) const {
    const std::size_t before = openDescriptorCount();
    auto result = requireExistingDirectoryWithoutUntrustedSymbolicLinks(path);
    EXPECT_EQ(openDescriptorCount(), before) << path;
    return result;
  }

  GaldrineTemporaryDirectory directory_;
};

TEST_F(GaldrinePathConfinementTest, RefusesEveryPathNotWalkedThroughRealDirectories) {
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

TEST_F(GaldrinePathConfinementTest, TrustsAFirstComponentLinkOnlyWhileUserZeroOwnsIt) {
  RootLink link(directory_.path());
  EXPECT_EQ(check(link.path() / "a" / "b"), (std::expected<void, Error>{}));
  EXPECT_EQ(check(link.path()), (std::expected<void, Error>{}));
  // Past the trusted link, every other link is refused as before.
  EXPECT_EQ(check(link.path() / "link" / "b"), std::unexpected(Error::unavailableDirectory));

  ASSERT_EQ(::lchown(link.path().c_str(), 4242, 4242), 0);
  EXPECT_EQ(check(link.path() / "a" / "b"), std::unexpected(Error::unavailableDirectory));
  EXPECT_EQ(check(link.path()), std::unexpected(Error::unavailableDirectory));
}

TEST_F(GaldrinePathConfinementTest, ATrustedLinkMustLeadToADirectory) {
  RootLink toFile(directory_ / "file");
  RootLink dangling(directory_ / "nowhere");
  EXPECT_EQ(check(toFile.path()), std::unexpected(Error::unavailableDirectory));
  EXPECT_EQ(check(dangling.path()), std::unexpected(Error::unavailableDirectory));
}

}  // namespace
