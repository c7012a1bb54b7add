#include "format/package/BackupPackageV1.hpp"

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <ostream>

#include "format/package/BoundedDirectoryListing.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::format {

// PrintTo makes a failed comparison readable: the package's root, or which error with its code.
void PrintTo(const std::expected<BackupPackageV1, BackupPackageV1Failure>& result, std::ostream* out) {
  if (result) {
    *out << "package at " << result->packagePath();
    return;
  }
  const BackupPackageV1Failure& failure = result.error();
  if (const auto* own = std::get_if<BackupPackageV1Error>(&failure)) {
    *out << "package error " << static_cast<int>(own->code) << " '" << own->entryName << "'";
  } else if (const auto* header = std::get_if<BackupFormatHeaderV1Error>(&failure)) {
    *out << "header error " << static_cast<int>(header->code) << " " << header->payload;
  } else if (const auto* codec = std::get_if<CBORError>(&failure)) {
    *out << "codec error " << static_cast<int>(codec->code) << " " << codec->payload;
  } else if (const auto* file = std::get_if<platform::FileError>(&failure)) {
    *out << "file error errno " << file->errorNumber;
  }
}

namespace {

namespace fs = std::filesystem;
using Package = BackupPackageV1;
using Error = BackupPackageV1Error;
using Failure = BackupPackageV1Failure;
using testsupport::FileFixtures::makeDirectory;
using testsupport::FileFixtures::makeSymbolicLink;
using testsupport::FileFixtures::writeFile;

template <typename LowerError>
[[nodiscard]] std::unexpected<Failure> fails(LowerError error) {
  return std::unexpected(Failure(std::move(error)));
}

[[nodiscard]] Bytes identifier(std::size_t byteCount = 16) {
  Bytes bytes(byteCount);
  for (std::size_t index = 0; index < byteCount; ++index) bytes[index] = static_cast<std::uint8_t>(0xA0 + index);
  return bytes;
}

[[nodiscard]] Bytes headerBytes() {
  const auto header = BackupFormatHeaderV1::make(identifier());
  const auto encoded = header ? header->encoded() : std::unexpected(CBORError{CBORError::Code::invalidLimits});
  EXPECT_TRUE(encoded.has_value());
  return encoded ? *encoded : Bytes{};
}

// writeValidPackage lays out a package by hand, independently of create: the nine
// directories and a canonical header.
void writeValidPackage(const fs::path& root) {
  makeDirectory(root);
  for (const std::string_view name : Package::requiredDirectoryNames) makeDirectory(root / name);
  writeFile(root / Package::formatHeaderName, headerBytes());
}

void replaceWithFile(const fs::path& entry) {
  fs::remove_all(entry);
  writeFile(entry, "x");
}

void replaceWithDirectory(const fs::path& entry) {
  fs::remove_all(entry);
  makeDirectory(entry);
}

// replaceWithLink moves the entry aside, outside the root, and links to it.
void replaceWithLink(const fs::path& entry) {
  const fs::path aside = entry.parent_path().parent_path() / ("aside-" + entry.filename().string());
  fs::rename(entry, aside);
  makeSymbolicLink(aside, entry);
}

void replaceHeader(const fs::path& root, const Bytes& bytes) { writeFile(root / Package::formatHeaderName, bytes); }

// AccessWatch reports whether a file was opened or read while it watched.
class AccessWatch {
 public:
  explicit AccessWatch(const fs::path& file) : descriptor_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    EXPECT_GE(::inotify_add_watch(descriptor_, file.c_str(), IN_OPEN | IN_ACCESS), 0);
  }
  ~AccessWatch() { ::close(descriptor_); }
  AccessWatch(const AccessWatch&) = delete;
  AccessWatch& operator=(const AccessWatch&) = delete;
  [[nodiscard]] bool sawOpenOrRead() const {
    alignas(inotify_event) char events[4096];
    return ::read(descriptor_, events, sizeof events) > 0;
  }

 private:
  int descriptor_;
};

class BackupPackageV1Test : public testing::Test {
 protected:
  void SetUp() override { writeValidPackage(root_); }

  // open runs the reader and shows that it held no descriptor afterwards.
  [[nodiscard]] static std::expected<Package, Failure> open(const fs::path& path) {
    const std::size_t before = testsupport::openDescriptorCount();
    auto result = Package::open(path);
    EXPECT_EQ(testsupport::openDescriptorCount(), before) << path;
    return result;
  }

  [[nodiscard]] std::vector<std::string> parentEntries() const {
    auto names = BoundedDirectoryListing::names(directory_.path(), 100);
    EXPECT_TRUE(names.has_value());
    if (!names) return {};
    std::ranges::sort(*names);
    return *names;
  }

  testsupport::TemporaryDirectory directory_;
  fs::path root_ = directory_ / "p.galdrine";
};

TEST_F(BackupPackageV1Test, OpensAValidRootWithOrWithoutTheOptionalFiles) {
  const auto bare = open(root_);
  ASSERT_TRUE(bare.has_value());
  EXPECT_EQ(bare->packagePath(), root_);
  EXPECT_EQ(bare->headerData(), headerBytes());
  EXPECT_EQ(bare->header().packageIdentifier(), identifier());

  writeFile(root_ / Package::keyEnvelopesName, "anything");
  writeFile(root_ / Package::convenienceHeadName, "");
  // A trailing separator and dot segments name the same root.
  const auto full = open(root_.string() + "/commits/../.");
  ASSERT_TRUE(full.has_value());
  EXPECT_EQ(*full, *bare);
}

struct OpenCase {
  const char* name;
  std::function<void(const fs::path& root)> damage;
  std::expected<Package, Failure> expected;
};

// One damage to a valid root per row. Where a row does two things, the check that comes first
// must decide.
std::vector<OpenCase> openCases() {
  const std::string header(Package::formatHeaderName);
  const std::string envelopes(Package::keyEnvelopesName);
  const std::string head(Package::convenienceHeadName);
  std::vector<OpenCase> cases{
      {"root is a regular file", [](const fs::path& root) { replaceWithFile(root); }, fails(Error::invalidPackageRoot())},
      {"root is missing", [](const fs::path& root) { fs::remove_all(root); }, fails(Error::invalidPackageRoot())},
      {"a hidden 13th entry", [](const fs::path& root) {
         writeFile(root / Package::keyEnvelopesName, "");
         writeFile(root / Package::convenienceHeadName, "");
         writeFile(root / ".hidden", "");
       }, fails(Error::invalidRootEntrySet())},
      {"a hidden 11th entry", [](const fs::path& root) { makeDirectory(root / ".staging"); }, fails(Error::invalidRootEntrySet())},
      {"a name in the wrong case", [](const fs::path& root) { writeFile(root / "head", ""); }, fails(Error::invalidRootEntrySet())},
      {"header missing", [](const fs::path& root) { fs::remove(root / Package::formatHeaderName); }, fails(Error::invalidRootEntrySet())},
      {"advisory missing", [](const fs::path& root) { fs::remove(root / "advisory"); }, fails(Error::invalidRootEntrySet())},
      {"an extra name comes before a wrong kind", [](const fs::path& root) {
         replaceWithFile(root / "heads");
         writeFile(root / "extra", "");
       }, fails(Error::invalidRootEntrySet())},
      {"table order decides between directories", [](const fs::path& root) {
         replaceWithLink(root / "heads");
         replaceWithFile(root / "commits");
       }, fails(Error::invalidRootEntry("commits"))},
      {"directories come before the optional files", [](const fs::path& root) {
         makeDirectory(root / Package::convenienceHeadName);
         replaceWithFile(root / "advisory");
       }, fails(Error::invalidRootEntry("advisory"))},
      {"key envelopes as a directory", [](const fs::path& root) { makeDirectory(root / Package::keyEnvelopesName); },
       fails(Error::invalidRootEntry(envelopes))},
      {"key envelopes before HEAD", [](const fs::path& root) {
         makeDirectory(root / Package::convenienceHeadName);
         makeSymbolicLink(root / Package::formatHeaderName, root / Package::keyEnvelopesName);
       }, fails(Error::invalidRootEntry(envelopes))},
      {"HEAD as a directory", [](const fs::path& root) { makeDirectory(root / Package::convenienceHeadName); },
       fails(Error::invalidRootEntry(head))},
      {"HEAD before the header size", [](const fs::path& root) {
         makeDirectory(root / Package::convenienceHeadName);
         replaceHeader(root, Bytes(4097, 0));
       }, fails(Error::invalidRootEntry(head))},
      {"header as a symbolic link", [](const fs::path& root) { replaceWithLink(root / Package::formatHeaderName); },
       fails(Error::invalidRootEntry(header))},
      {"header as a directory", [](const fs::path& root) { replaceWithDirectory(root / Package::formatHeaderName); },
       fails(Error::invalidRootEntry(header))},
      {"header as a FIFO", [](const fs::path& root) {
         fs::remove(root / Package::formatHeaderName);
         ASSERT_EQ(::mkfifo((root / Package::formatHeaderName).c_str(), 0600), 0);
       }, fails(Error::invalidRootEntry(header))},
      {"header of 4097 bytes", [](const fs::path& root) { replaceHeader(root, Bytes(4097, 0)); }, fails(Error::headerTooLarge())},
      {"header of a terabyte", [](const fs::path& root) { fs::resize_file(root / Package::formatHeaderName, std::uintmax_t{1} << 40); },
       fails(Error::headerTooLarge())},
      {"header of 4096 bytes is read", [](const fs::path& root) {
         Bytes padded = headerBytes();
         padded.resize(4096, 0);
         replaceHeader(root, padded);
       }, fails(CBORError{CBORError::Code::trailingBytes})},
      {"header empty", [](const fs::path& root) { replaceHeader(root, {}); }, fails(CBORError{CBORError::Code::unexpectedEnd})},
      {"header with a non-shortest integer", [](const fs::path& root) {
         Bytes bytes = headerBytes();
         bytes.insert(bytes.begin() + 68, 0x18);  // key 3: 0x03 0x18 0x01 instead of 0x03 0x01
         replaceHeader(root, bytes);
       }, fails(CBORError{CBORError::Code::nonMinimalIntegerOrLength})},
      {"header with a wrong magic", [](const fs::path& root) {
         Bytes bytes = headerBytes();
         bytes[3] ^= 0x20;
         replaceHeader(root, bytes);
       }, fails(BackupFormatHeaderV1Error::invalidMagic())},
  };
  for (const std::string_view name : Package::requiredDirectoryNames) {
    cases.push_back({"a directory as a regular file", [name](const fs::path& root) { replaceWithFile(root / name); },
                     fails(Error::invalidRootEntry(name))});
    cases.push_back({"a directory as a link to a directory", [name](const fs::path& root) { replaceWithLink(root / name); },
                     fails(Error::invalidRootEntry(name))});
  }
  return cases;
}

TEST_F(BackupPackageV1Test, RefusesEveryShapeOutsideTheClosedRootList) {
  for (const OpenCase& row : openCases()) {
    testsupport::TemporaryDirectory directory;
    const fs::path root = directory / "case.galdrine";
    writeValidPackage(root);
    row.damage(root);
    EXPECT_EQ(open(root), row.expected) << row.name;
  }
}

TEST_F(BackupPackageV1Test, RefusesAWrongExtensionAndALinkedRoot) {
  for (const char* name : {"p.backup", ".galdrine", "p.GALDRINE", "p.galdrine.old", "galdrine"}) {
    writeValidPackage(directory_ / name);
    EXPECT_EQ(open(directory_ / name), fails(Error::invalidPackageExtension())) << name;
  }
  makeSymbolicLink(root_, directory_ / "link.galdrine");
  EXPECT_EQ(open(directory_ / "link.galdrine"), fails(Error::invalidPackageRoot()));
}

TEST_F(BackupPackageV1Test, AnOversizedHeaderIsRefusedBeforeItIsOpened) {
  const fs::path header = root_ / Package::formatHeaderName;
  replaceHeader(root_, Bytes(4097, 0));
  {
    AccessWatch watch(header);
    EXPECT_EQ(open(root_), fails(Error::headerTooLarge()));
    EXPECT_FALSE(watch.sawOpenOrRead());
  }
  replaceHeader(root_, headerBytes());
  AccessWatch watch(header);  // the control: a header within the bound is opened and read
  EXPECT_TRUE(open(root_).has_value());
  EXPECT_TRUE(watch.sawOpenOrRead());
}

TEST_F(BackupPackageV1Test, DirectoryPathReachesOnlyTheNineDirectories) {
  const auto package = open(root_);
  ASSERT_TRUE(package.has_value());
  for (const std::string_view name : Package::requiredDirectoryNames) {
    EXPECT_EQ(package->directoryPath(name), root_ / name);
  }
  for (const std::string_view name : {"HEAD", "format-header.cbor", "key-envelopes.cbor", "", ".", "..", "heads/x", "Heads"}) {
    EXPECT_EQ(package->directoryPath(name), std::unexpected(Error::invalidRootEntry(name))) << name;
  }
}

TEST_F(BackupPackageV1Test, CreatePublishesAPackageThatOpens) {
  const fs::path target = directory_ / "new.galdrine";
  const std::size_t before = testsupport::openDescriptorCount();
  const auto created = Package::create(target, identifier());
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
  ASSERT_TRUE(created.has_value());
  EXPECT_EQ(created, open(target));
  EXPECT_EQ(testsupport::FileFixtures::readFile(target / Package::formatHeaderName), headerBytes());
  auto rootNames = BoundedDirectoryListing::names(target, 12);
  ASSERT_TRUE(rootNames.has_value());
  EXPECT_EQ(rootNames->size(), 10u);  // no key envelopes, no HEAD
  EXPECT_EQ(parentEntries(), (std::vector<std::string>{"new.galdrine", "p.galdrine"}));  // no staging left

  EXPECT_EQ(Package::create(target, Bytes(16, 0)), fails(Error::destinationAlreadyExists()));
  EXPECT_EQ(open(target), created);
}

TEST_F(BackupPackageV1Test, AFailedCreateLeavesNothingOnDisk) {
  writeFile(directory_ / "file", "x");
  makeSymbolicLink(directory_ / "nowhere", directory_ / "dangling.galdrine");
  makeSymbolicLink(directory_.path(), directory_ / "linked");
  const struct {
    const char* name;
    fs::path target;
    Bytes packageIdentifier;
    std::expected<Package, Failure> expected;
  } cases[] = {
      {"wrong extension", directory_ / "new.backup", identifier(), fails(Error::invalidPackageExtension())},
      {"no stem", directory_ / ".galdrine", identifier(), fails(Error::invalidPackageExtension())},
      {"an existing package", root_, identifier(), fails(Error::destinationAlreadyExists())},
      {"a dangling link", directory_ / "dangling.galdrine", identifier(), fails(Error::destinationAlreadyExists())},
      {"a missing parent", directory_ / "missing" / "new.galdrine", identifier(), fails(Error::invalidParentDirectory())},
      {"a file as parent", directory_ / "file" / "new.galdrine", identifier(), fails(Error::invalidParentDirectory())},
      {"a linked parent", directory_ / "linked" / "new.galdrine", identifier(), fails(Error::invalidParentDirectory())},
      {"15-byte identifier", directory_ / "new.galdrine", identifier(15), fails(BackupFormatHeaderV1Error::invalidPackageIdentifier())},
      {"17-byte identifier", directory_ / "new.galdrine", identifier(17), fails(BackupFormatHeaderV1Error::invalidPackageIdentifier())},
      {"the extension comes first", directory_ / "file.backup", identifier(15), fails(Error::invalidPackageExtension())},
  };
  const std::vector<std::string> entriesBefore = parentEntries();
  const std::size_t before = testsupport::openDescriptorCount();
  for (const auto& row : cases) {
    EXPECT_EQ(Package::create(row.target, row.packageIdentifier), row.expected) << row.name;
    EXPECT_EQ(parentEntries(), entriesBefore) << row.name;
  }
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
  EXPECT_TRUE(fs::is_symlink(directory_ / "dangling.galdrine"));
}

TEST_F(BackupPackageV1Test, AFailedWriteRemovesTheStagingDirectory) {
  const std::vector<std::string> entriesBefore = parentEntries();
  const std::size_t before = testsupport::openDescriptorCount();
  {
    // The nine directories exist by now; the header's write runs past the file size limit.
    testsupport::FileFixtures::LimitedFileSize limit(100);
    EXPECT_EQ(Package::create(directory_ / "new.galdrine", identifier()), fails(platform::FileError{EFBIG}));
  }
  EXPECT_EQ(parentEntries(), entriesBefore);
  EXPECT_EQ(testsupport::openDescriptorCount(), before);
}

}  // namespace

}  // namespace galdrine::format
