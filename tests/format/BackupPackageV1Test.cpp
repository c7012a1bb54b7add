#include "format/package/BackupPackageV1.hpp"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <system_error>

#include "format/package/BoundedDirectoryListing.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::format {

namespace {

namespace fs = std::filesystem;
using namespace testsupport::FileFixtures;
using Package = BackupPackageV1;
using Error = BackupPackageV1Error;
using Result = std::expected<Package, BackupPackageV1Failure>;

template <typename LowerError>
[[nodiscard]] std::unexpected<BackupPackageV1Failure> fails(LowerError error) {
  return std::unexpected(BackupPackageV1Failure(std::move(error)));
}

[[nodiscard]] Bytes identifier(std::size_t byteCount = 16) { return Bytes(byteCount, 0xA5); }

[[nodiscard]] Bytes headerBytes() {
  const auto header = BackupFormatHeaderV1::make(identifier());
  return header ? header->encoded().value_or(Bytes{}) : Bytes{};
}

// writeValidPackage lays out a package by hand, independently of create: the nine
// directories and a canonical header.
void writeValidPackage(const fs::path& root) {
  makeDirectory(root);
  for (const std::string_view name : Package::requiredDirectoryNames) makeDirectory(root / name);
  writeFile(root / Package::formatHeaderName, headerBytes());
}

enum class Shape { removed, file, directory, link, fifo, terabyte };

// reshape puts an entry of the given shape at `entry`; a link points to the entry's former
// content, moved aside out of the root.
void reshape(const fs::path& entry, Shape shape) {
  std::error_code ignored;
  if (shape == Shape::link) {
    const fs::path aside = entry.parent_path().parent_path() / ("aside-" + entry.filename().string());
    fs::rename(entry, aside, ignored);
    return makeSymbolicLink(aside, entry);
  }
  fs::remove_all(entry, ignored);
  if (shape == Shape::file || shape == Shape::terabyte) writeFile(entry, "x");
  if (shape == Shape::terabyte) fs::resize_file(entry, std::uintmax_t{1} << 40);
  if (shape == Shape::directory) makeDirectory(entry);
  if (shape == Shape::fifo && ::mkfifo(entry.c_str(), 0600) != 0) ADD_FAILURE() << "cannot make a FIFO at " << entry;
}

// open runs the reader and shows that it held no descriptor afterwards.
[[nodiscard]] Result open(const fs::path& path) {
  const std::size_t before = testsupport::openDescriptorCount();
  auto result = Package::open(path);
  EXPECT_EQ(testsupport::openDescriptorCount(), before) << path;
  return result;
}

class BackupPackageV1Test : public testing::Test {
 protected:
  void SetUp() override { writeValidPackage(root_); }

  [[nodiscard]] std::vector<std::string> parentEntries() const {
    auto names = BoundedDirectoryListing::names(directory_.path(), 100);
    EXPECT_TRUE(names.has_value());
    if (names) std::ranges::sort(*names);
    return names.value_or(std::vector<std::string>{});
  }

  testsupport::TemporaryDirectory directory_;
  fs::path root_ = directory_ / "p.galdrine";
};

TEST_F(BackupPackageV1Test, OpensAValidRootAndReachesOnlyItsNineDirectories) {
  const auto bare = open(root_);
  ASSERT_TRUE(bare.has_value());
  EXPECT_EQ(bare->packagePath(), root_);
  EXPECT_EQ(bare->headerData(), headerBytes());
  writeFile(root_ / Package::keyEnvelopesName, "anything");
  writeFile(root_ / Package::convenienceHeadName, "");
  EXPECT_EQ(open(root_.string() + "/commits/../."), *bare);  // dot segments name the same root
  for (const std::string_view name : Package::requiredDirectoryNames)
    EXPECT_EQ(bare->directoryPath(name), root_ / name);
  for (const std::string_view name :
       {"HEAD", "format-header.cbor", "key-envelopes.cbor", "", "..", "heads/x", "Heads"}) {
    EXPECT_EQ(bare->directoryPath(name), std::unexpected(Error::invalidRootEntry(name))) << name;
  }
}

// One damaged root per row: root entries reshaped (an empty name is the root itself), and the
// header's bytes replaced. Where a row does several things, the check that comes first decides.
TEST_F(BackupPackageV1Test, OpenRefusesEveryShapeOutsideTheClosedRootList) {
  using enum Shape;
  const std::string header(Package::formatHeaderName), envelopes(Package::keyEnvelopesName),
      head(Package::convenienceHeadName);
  Bytes nonShortest = headerBytes(), wrongMagic = headerBytes(), padded = headerBytes();
  nonShortest.insert(nonShortest.begin() + 68, 0x18);  // key 3: 0x03 0x18 0x01 instead of 0x03 0x01
  wrongMagic[3] ^= 0x20;
  padded.resize(4096, 0);
  struct OpenCase {
    std::string name;
    std::vector<std::pair<std::string, Shape>> reshaped;
    std::optional<Bytes> headerFile;
    Result expected;
  };
  std::vector<OpenCase> cases{
      {"root is a regular file", {{"", file}}, {}, fails(Error::invalidPackageRoot())},
      {"a hidden 13th entry",
       {{envelopes, file}, {head, file}, {".hidden", file}},
       {},
       fails(Error::invalidRootEntrySet())},
      {"a hidden 11th entry", {{".staging", directory}}, {}, fails(Error::invalidRootEntrySet())},
      {"header missing", {{header, removed}}, {}, fails(Error::invalidRootEntrySet())},
      {"advisory missing", {{"advisory", removed}}, {}, fails(Error::invalidRootEntrySet())},
      {"an extra name before a wrong kind",
       {{"heads", file}, {"extra", file}},
       {},
       fails(Error::invalidRootEntrySet())},
      {"table order between directories",
       {{"heads", link}, {"commits", file}},
       {},
       fails(Error::invalidRootEntry("commits"))},
      {"directories before optional files",
       {{head, directory}, {"advisory", file}},
       {},
       fails(Error::invalidRootEntry("advisory"))},
      {"key envelopes before HEAD",
       {{head, directory}, {envelopes, link}},
       {},
       fails(Error::invalidRootEntry(envelopes))},
      {"HEAD before the header size", {{head, directory}}, Bytes(4097, 0), fails(Error::invalidRootEntry(head))},
      {"header as a symbolic link", {{header, link}}, {}, fails(Error::invalidRootEntry(header))},
      {"header as a FIFO", {{header, fifo}}, {}, fails(Error::invalidRootEntry(header))},
      {"header of a terabyte", {{header, terabyte}}, {}, fails(Error::headerTooLarge())},
      {"header of 4097 bytes", {}, Bytes(4097, 0), fails(Error::headerTooLarge())},
      {"header of 4096 bytes is read", {}, padded, fails(CBORError{CBORError::Code::trailingBytes})},
      {"header with a non-shortest integer",
       {},
       nonShortest,
       fails(CBORError{CBORError::Code::nonMinimalIntegerOrLength})},
      {"header with a wrong magic", {}, wrongMagic, fails(BackupFormatHeaderV1Error::invalidMagic())},
  };
  for (const std::string_view name : Package::requiredDirectoryNames) {
    cases.push_back(
        {std::string(name) + " as a file", {{std::string(name), file}}, {}, fails(Error::invalidRootEntry(name))});
    cases.push_back(
        {std::string(name) + " as a link", {{std::string(name), link}}, {}, fails(Error::invalidRootEntry(name))});
  }
  for (const OpenCase& row : cases) {
    testsupport::TemporaryDirectory directory;
    const fs::path root = directory / "case.galdrine";
    writeValidPackage(root);
    if (row.headerFile) writeFile(root / header, *row.headerFile);
    for (const auto& [name, shape] : row.reshaped) reshape(name.empty() ? root : root / name, shape);
    EXPECT_EQ(open(root), row.expected) << row.name;
  }
  for (const char* name : {"p.backup", ".galdrine", "p.GALDRINE", "p.galdrine.old"}) {
    writeValidPackage(directory_ / name);
    EXPECT_EQ(open(directory_ / name), fails(Error::invalidPackageExtension())) << name;
  }
  makeSymbolicLink(root_, directory_ / "link.galdrine");
  EXPECT_EQ(open(directory_ / "link.galdrine"), fails(Error::invalidPackageRoot()));
}

TEST_F(BackupPackageV1Test, CreatePublishesAPackageThatOpens) {
  const fs::path target = directory_ / "new.galdrine";
  const std::size_t before = testsupport::openDescriptorCount();
  const auto created = Package::create(target, identifier());
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
  ASSERT_TRUE(created.has_value());
  EXPECT_EQ(created, open(target));
  EXPECT_EQ(BoundedDirectoryListing::names(target, 12).value_or(std::vector<std::string>{}).size(),
            10u);                                                                        // no envelopes, no HEAD
  EXPECT_EQ(parentEntries(), (std::vector<std::string>{"new.galdrine", "p.galdrine"}));  // no staging left
  EXPECT_EQ(Package::create(target, Bytes(16, 0)), fails(Error::destinationAlreadyExists()));
  EXPECT_EQ(open(target), created);
}

TEST_F(BackupPackageV1Test, AFailedCreateLeavesNothingOnDisk) {
  writeFile(directory_ / "file", "x");
  makeSymbolicLink(directory_ / "nowhere", directory_ / "dangling.galdrine");
  makeSymbolicLink(directory_.path(), directory_ / "linked");
  const struct {
    fs::path target;
    Bytes packageIdentifier;
    Result expected;
  } cases[] = {
      {directory_ / ".galdrine", identifier(), fails(Error::invalidPackageExtension())},
      {directory_ / "file.backup", identifier(15), fails(Error::invalidPackageExtension())},
      {root_, identifier(), fails(Error::destinationAlreadyExists())},
      {directory_ / "dangling.galdrine", identifier(), fails(Error::destinationAlreadyExists())},
      {directory_ / "file" / "new.galdrine", identifier(), fails(Error::invalidParentDirectory())},
      {directory_ / "linked" / "new.galdrine", identifier(), fails(Error::invalidParentDirectory())},
      {directory_ / "new.galdrine", identifier(15), fails(BackupFormatHeaderV1Error::invalidPackageIdentifier())},
  };
  const std::vector<std::string> entriesBefore = parentEntries();
  const std::size_t before = testsupport::openDescriptorCount();
  for (const auto& row : cases) {
    EXPECT_EQ(Package::create(row.target, row.packageIdentifier), row.expected) << row.target;
    EXPECT_EQ(parentEntries(), entriesBefore) << row.target;
  }
  {
    // Fault point: the nine directories exist by now, and the header's write runs past the file size limit.
    LimitedFileSize limit(100);
    EXPECT_EQ(Package::create(directory_ / "new.galdrine", identifier()), fails(platform::FileError{EFBIG}));
  }
  EXPECT_EQ(parentEntries(), entriesBefore);
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
}

}  // namespace

}  // namespace galdrine::format
