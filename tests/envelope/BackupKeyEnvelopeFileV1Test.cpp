#include "envelope/BackupKeyEnvelopeFileV1.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <ostream>
#include <regex>
#include <string>
#include <vector>

#include "platform/SHA256.hpp"
#include "EnvelopeFixtures.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::envelope {

inline void PrintTo(BackupKeyEnvelopeFileV1Error error, std::ostream* out) {
  *out << "file error " << static_cast<int>(error);
}

namespace {

namespace fs = std::filesystem;
namespace EnvelopeFile = BackupKeyEnvelopeFileV1;
using namespace EnvelopeFixtures;
using Error = BackupKeyEnvelopeFileV1Error;
using Failure = BackupKeyEnvelopeFileV1Failure;
using FaultPoint = BackupKeyEnvelopeFileFaultPoint;
using Package = format::BackupPackageV1;
using Set = BackupKeyEnvelopeSetV1;
using testsupport::FileFixtures::makeDirectory;
using testsupport::FileFixtures::makeSymbolicLink;
using testsupport::FileFixtures::readFile;
using testsupport::FileFixtures::writeFile;

[[nodiscard]] Bytes digestBytes(ByteView bytes) {
  const platform::SHA256Digest digest = platform::SHA256::digest(bytes);
  return Bytes(digest.begin(), digest.end());
}

[[nodiscard]] Set envelopeSet(std::uint64_t generation, std::uint8_t packageSeed = 1) {
  const auto passphrase = BackupKeyEnvelopeEntryV1::make(
      placeholderEnvelope(Factor::backupPassphrase, identifier(3), identifier(4), generation), true);
  const auto recovery = BackupKeyEnvelopeEntryV1::make(
      placeholderEnvelope(Factor::recoveryKey, identifier(5), identifier(6), generation), true);
  EXPECT_TRUE(passphrase && recovery);
  const auto made = Set::make(identifier(packageSeed), identifier(2), {*passphrase, *recovery});
  EXPECT_TRUE(made.has_value());
  return *made;
}

[[nodiscard]] Bytes encodedSet(const Set& set) {
  const auto bytes = set.encoded();
  EXPECT_TRUE(bytes.has_value());
  return bytes ? *bytes : Bytes{};
}

class BackupKeyEnvelopeFileV1Test : public testing::Test {
 protected:
  void SetUp() override {
    auto created = Package::create(packagePath(), identifier(1));
    ASSERT_TRUE(created.has_value());
    package_.emplace(std::move(*created));
  }

  [[nodiscard]] fs::path packagePath() const { return directory_ / "photos.galdrine"; }
  [[nodiscard]] fs::path filePath() const { return packagePath() / Package::keyEnvelopesName; }
  [[nodiscard]] const Package& package() const { return *package_; }

  // stagedResidue lists what a writer of this file may have left in tmp.
  [[nodiscard]] std::vector<std::string> stagedResidue() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(packagePath() / "tmp")) {
      const std::string name = entry.path().filename().string();
      if (name.starts_with(EnvelopeFile::stagedNamePrefix)) names.push_back(name);
    }
    return names;
  }

  // write runs the writer and shows that it left no descriptor behind.
  [[nodiscard]] std::expected<BackupKeyEnvelopeFileRead, Error> write(
      const Set& set, std::optional<ByteView> replacing, const BackupKeyEnvelopeFileFaultHook& hook = {}) {
    const std::size_t before = testsupport::openDescriptorCount();
    auto result = EnvelopeFile::writeAtomically(set, package(), replacing, hook);
    EXPECT_EQ(testsupport::openDescriptorCount(), before);
    return result;
  }

  // firstWrite publishes `set` where no file exists yet and gives its digest.
  [[nodiscard]] Bytes firstWrite(const Set& set) {
    const auto written = write(set, std::nullopt);
    EXPECT_TRUE(written.has_value());
    return written ? written->encodedSHA256 : Bytes{};
  }

  // replacePackage puts another package, of another identifier, at the same path.
  void replacePackage(std::uint8_t packageSeed) {
    fs::remove_all(packagePath());
    ASSERT_TRUE(Package::create(packagePath(), identifier(packageSeed)).has_value());
  }

  testsupport::TemporaryDirectory directory_;
  std::optional<Package> package_;
};

}  // namespace

TEST_F(BackupKeyEnvelopeFileV1Test, BoundedReadTakesOnlyRegularFilesOfOneTo8192Bytes) {
  const fs::path plain = directory_ / "plain";
  writeFile(plain, Bytes(100, 7));
  writeFile(directory_ / "largest", Bytes(8192, 7));
  writeFile(directory_ / "too-large", Bytes(8193, 7));
  writeFile(directory_ / "empty", Bytes{});
  makeSymbolicLink(plain, directory_ / "link");
  makeDirectory(directory_ / "directory");
  ASSERT_EQ(::mkfifo((directory_ / "pipe").c_str(), 0600), 0);

  EXPECT_EQ(EnvelopeFile::readBoundedRegularFile(plain), Bytes(100, 7));
  EXPECT_EQ(EnvelopeFile::readBoundedRegularFile(directory_ / "largest"), Bytes(8192, 7));
  for (const char* refused : {"too-large", "empty", "link", "directory", "pipe", "missing"}) {
    EXPECT_EQ(failureOf(EnvelopeFile::readBoundedRegularFile(directory_ / refused)), Error::invalidEnvelopeFile) << refused;
  }
}

TEST_F(BackupKeyEnvelopeFileV1Test, ReadBindsTheFileToItsPackage) {
  EXPECT_EQ(failureOf(EnvelopeFile::read(package())), Failure(Error::envelopeFileMissing));
  const auto written = write(envelopeSet(1), std::nullopt);
  ASSERT_TRUE(written.has_value());
  EXPECT_EQ(EnvelopeFile::read(package()), *written);
  EXPECT_EQ(written->encodedSHA256, digestBytes(readFile(filePath())));

  struct ContentCase {
    const char* name;
    Bytes content;
    Failure expected;
  };
  const ContentCase cases[] = {
      {"empty", {}, Error::invalidEnvelopeFile},
      {"8193 bytes", Bytes(8193, 0xA0), Error::invalidEnvelopeFile},
      {"8192 bytes are read, then decoded", Bytes(8192, 0xA0),
       BackupKeyEnvelopeSetV1Failure(BackupKeyEnvelopeSetV1Error::malformedSet())},
      {"a set of another package", encodedSet(envelopeSet(1, 9)), Error::packageBindingMismatch},
  };
  for (const ContentCase& contentCase : cases) {
    writeFile(filePath(), contentCase.content);
    EXPECT_EQ(failureOf(EnvelopeFile::read(package())), contentCase.expected) << contentCase.name;
  }

  // The package itself refuses anything but a regular file under this name.
  fs::remove(filePath());
  makeSymbolicLink(directory_ / "elsewhere", filePath());
  EXPECT_EQ(failureOf(EnvelopeFile::read(package())),
            Failure(format::BackupPackageV1Failure(format::BackupPackageV1Error::invalidRootEntry(Package::keyEnvelopesName))));

  replacePackage(9);
  EXPECT_EQ(failureOf(EnvelopeFile::read(package())), Failure(Error::packageBindingMismatch));
}

TEST_F(BackupKeyEnvelopeFileV1Test, WriteIsACompareAndSwapOnTheDigest) {
  const Set first = envelopeSet(1);
  const Set second = envelopeSet(2);
  EXPECT_EQ(failureOf(write(first, Bytes(31))), Error::invalidExpectedDigest);
  EXPECT_EQ(failureOf(write(envelopeSet(1, 9), std::nullopt)), Error::packageBindingMismatch);
  EXPECT_EQ(failureOf(write(first, Bytes(32))), Error::staleCurrentFile);
  EXPECT_FALSE(fs::exists(filePath()));

  const Bytes firstDigest = firstWrite(first);
  EXPECT_EQ(failureOf(write(first, std::nullopt)), Error::staleCurrentFile);  // even with the same bytes
  const auto replaced = write(second, firstDigest);
  ASSERT_TRUE(replaced.has_value());
  EXPECT_EQ(replaced->envelopeSet, second);
  EXPECT_EQ(readFile(filePath()), encodedSet(second));
  EXPECT_EQ(failureOf(write(first, firstDigest)), Error::staleCurrentFile);
  EXPECT_EQ(readFile(filePath()), encodedSet(second));

  // The current file is read as a reader would: its own failures come through, others do not.
  writeFile(filePath(), Bytes{});
  EXPECT_EQ(failureOf(write(first, firstDigest)), Error::invalidEnvelopeFile);
  writeFile(filePath(), Bytes(100, 0xA0));
  EXPECT_EQ(failureOf(write(first, firstDigest)), Error::publicationFailed);
  writeFile(filePath(), encodedSet(envelopeSet(1, 9)));
  EXPECT_EQ(failureOf(write(first, firstDigest)), Error::packageBindingMismatch);
  EXPECT_TRUE(stagedResidue().empty());

  replacePackage(9);
  EXPECT_EQ(failureOf(write(envelopeSet(1, 9), std::nullopt)), Error::packageBindingMismatch);
}

TEST_F(BackupKeyEnvelopeFileV1Test, EveryFaultPointLeavesTheOldFileOrTheNewAndNoStagedFile) {
  struct FaultCase {
    FaultPoint point;
    Error expected;
    bool newFileStands;
  };
  const FaultCase cases[] = {
      {FaultPoint::afterStagingWrite, Error::publicationFailed, false},
      {FaultPoint::afterStagingSync, Error::publicationFailed, false},
      {FaultPoint::afterStagingVerification, Error::publicationFailed, false},
      {FaultPoint::beforeFinalRename, Error::publicationFailed, false},
      {FaultPoint::afterFinalRename, Error::publicationOutcomeUnknown, true},
      {FaultPoint::afterDirectorySync, Error::publicationOutcomeUnknown, true},
  };
  Set current = envelopeSet(1);
  Bytes currentDigest = firstWrite(current);
  std::uint64_t generation = 2;
  for (const FaultCase& faultCase : cases) {
    const Set next = envelopeSet(generation++);
    std::vector<FaultPoint> passed;
    const auto result = write(next, currentDigest, [&](FaultPoint point) {
      passed.push_back(point);
      return point == faultCase.point;
    });
    EXPECT_EQ(failureOf(result), faultCase.expected) << static_cast<int>(faultCase.point);
    EXPECT_EQ(passed.back(), faultCase.point);
    EXPECT_EQ(passed.size(), static_cast<std::size_t>(faultCase.point) + 1);  // in the order they are named
    EXPECT_TRUE(stagedResidue().empty()) << static_cast<int>(faultCase.point);
    if (faultCase.newFileStands) current = next;
    EXPECT_EQ(readFile(filePath()), encodedSet(current)) << static_cast<int>(faultCase.point);
    currentDigest = digestBytes(readFile(filePath()));
  }
}

TEST_F(BackupKeyEnvelopeFileV1Test, StagesUnderAFreshNameInTmp) {
  std::vector<std::string> stagedNames;
  const auto written = write(envelopeSet(1), std::nullopt, [&](FaultPoint point) {
    if (point == FaultPoint::afterStagingWrite) stagedNames = stagedResidue();
    return false;
  });
  ASSERT_TRUE(written.has_value());
  ASSERT_EQ(stagedNames.size(), 1U);
  EXPECT_TRUE(std::regex_match(stagedNames.front(),
                               std::regex(R"(\.key-envelopes-[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[0-9a-f]{4}-[0-9a-f]{12}\.tmp)")))
      << stagedNames.front();
  EXPECT_TRUE(stagedResidue().empty());
}

// The current file is checked again just before the rename, so a writer that got there
// while this one was staging wins, and a link put in the file's place is never followed.
TEST_F(BackupKeyEnvelopeFileV1Test, SecondCheckCatchesAChangeWhileStaging) {
  const Bytes firstDigest = firstWrite(envelopeSet(1));
  const Set other = envelopeSet(3);
  const auto raced = write(envelopeSet(2), firstDigest, [&](FaultPoint point) {
    if (point == FaultPoint::afterStagingVerification) {
      EXPECT_TRUE(EnvelopeFile::writeAtomically(other, package(), firstDigest).has_value());
    }
    return false;
  });
  EXPECT_EQ(failureOf(raced), Error::staleCurrentFile);
  EXPECT_EQ(readFile(filePath()), encodedSet(other));

  const Bytes otherDigest = digestBytes(encodedSet(other));
  writeFile(directory_ / "aside", encodedSet(other));
  const auto linked = write(envelopeSet(2), otherDigest, [&](FaultPoint point) {
    if (point == FaultPoint::afterStagingSync) {
      fs::remove(filePath());
      makeSymbolicLink(directory_ / "aside", filePath());
    }
    return false;
  });
  EXPECT_EQ(failureOf(linked), Error::invalidEnvelopeFile);
  EXPECT_TRUE(fs::is_symlink(filePath()));
  EXPECT_TRUE(stagedResidue().empty());
}

}  // namespace galdrine::envelope
