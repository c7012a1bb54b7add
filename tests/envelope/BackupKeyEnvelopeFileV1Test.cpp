#include "envelope/BackupKeyEnvelopeFileV1.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <regex>

#include "EnvelopeFixtures.hpp"
#include "platform/SHA256.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::envelope {

namespace {

namespace fs = std::filesystem;
using namespace EnvelopeFixtures;
using namespace testsupport::FileFixtures;
using Error = BackupKeyEnvelopeFileV1Error;
using FaultPoint = BackupKeyEnvelopeFileFaultPoint;
using Set = BackupKeyEnvelopeSetV1;

// envelopeSet gives a set of both factors at `generation`, for the package of the seed.
[[nodiscard]] Set envelopeSet(std::uint64_t generation, std::uint8_t packageSeed = 1) {
  return setOf({entry(Factor::backupPassphrase, 3, 4, generation), entry(Factor::recoveryKey, 5, 6, generation)},
               packageSeed);
}

// at gives a fault hook that runs `action` at `point` and lets the write go on.
[[nodiscard]] BackupKeyEnvelopeFileFaultHook at(FaultPoint point, const std::function<void()>& action) {
  return [point, action](FaultPoint reached) {
    if (reached == point) action();
    return false;
  };
}

class BackupKeyEnvelopeFileV1Test : public testing::Test {
 protected:
  void SetUp() override {
    auto created = format::BackupPackageV1::create(packagePath_, identifier(1));
    ASSERT_TRUE(created.has_value());
    package_.emplace(std::move(*created));
  }

  // stagedNames lists what a writer of this file has left in tmp.
  [[nodiscard]] std::vector<std::string> stagedNames() const {
    std::vector<std::string> names;
    for (const auto& file : fs::directory_iterator(packagePath_ / "tmp")) names.push_back(file.path().filename());
    return names;
  }

  // write runs the writer and shows that it left no descriptor open.
  [[nodiscard]] std::expected<BackupKeyEnvelopeFileRead, Error> write(const Set& set, std::optional<ByteView> replacing,
                                                                      const BackupKeyEnvelopeFileFaultHook& hook = {}) {
    const std::size_t before = testsupport::openDescriptorCount();
    auto result = BackupKeyEnvelopeFileV1::writeAtomically(set, *package_, replacing, hook);
    EXPECT_EQ(testsupport::openDescriptorCount(), before);
    return result;
  }

  [[nodiscard]] platform::SHA256Digest digestOfFile() const { return platform::SHA256::digest(readFile(filePath_)); }

  testsupport::TemporaryDirectory directory_;
  fs::path packagePath_ = directory_ / "photos.galdrine";
  fs::path filePath_ = packagePath_ / format::BackupPackageV1::keyEnvelopesName;
  std::optional<format::BackupPackageV1> package_;
};

}  // namespace

// The bounded read takes a regular file of 1 to 8192 bytes. (The readers' suite binds a file
// to its package.)
TEST_F(BackupKeyEnvelopeFileV1Test, ReadBindsTheFileToItsPackage) {
  EXPECT_EQ(failureOf(BackupKeyEnvelopeFileV1::read(*package_)),
            BackupKeyEnvelopeFileV1Failure(Error::envelopeFileMissing));
  const auto written = write(envelopeSet(1), std::nullopt);
  ASSERT_TRUE(written.has_value());
  EXPECT_EQ(BackupKeyEnvelopeFileV1::read(*package_), *written);
  EXPECT_TRUE(ByteOrder::equal(written->encodedSHA256, digestOfFile()));
  const std::pair<Bytes, BackupKeyEnvelopeFileV1Failure> cases[] = {
      {Bytes{}, Error::invalidEnvelopeFile},
      {Bytes(8193, 0xA0), Error::invalidEnvelopeFile},
      {Bytes(8192, 0xA0),
       BackupKeyEnvelopeSetV1Failure(BackupKeyEnvelopeSetV1Error::malformedSet())},  // read, then decoded
  };
  for (const auto& [content, expected] : cases) {
    writeFile(filePath_, content);
    EXPECT_EQ(failureOf(BackupKeyEnvelopeFileV1::read(*package_)), expected) << content.size();
  }
}

TEST_F(BackupKeyEnvelopeFileV1Test, WriteIsACompareAndSwapOnTheDigest) {
  const Set first = envelopeSet(1);
  EXPECT_EQ(failureOf(write(first, Bytes(31))), Error::invalidExpectedDigest);
  EXPECT_EQ(failureOf(write(envelopeSet(1, 9), std::nullopt)), Error::packageBindingMismatch);
  EXPECT_EQ(failureOf(write(first, Bytes(32))), Error::staleCurrentFile);
  EXPECT_FALSE(fs::exists(filePath_));
  ASSERT_TRUE(write(first, std::nullopt).has_value());
  const auto firstDigest = digestOfFile();
  EXPECT_EQ(failureOf(write(first, std::nullopt)), Error::staleCurrentFile);  // even with the same bytes
  const auto replaced = write(envelopeSet(2), firstDigest);
  EXPECT_TRUE(replaced && replaced->envelopeSet == envelopeSet(2));
  EXPECT_EQ(failureOf(write(first, firstDigest)), Error::staleCurrentFile);
  // The current file is checked again just before the rename: a writer that got there while
  // this one was staging wins.
  const auto secondDigest = digestOfFile();
  EXPECT_EQ(failureOf(write(
                first, secondDigest,
                at(FaultPoint::afterStagingVerification,
                   [&] {
                     EXPECT_TRUE(
                         BackupKeyEnvelopeFileV1::writeAtomically(envelopeSet(3), *package_, secondDigest).has_value());
                   }))),
            Error::staleCurrentFile);
  EXPECT_EQ(readFile(filePath_), encodedSet(envelopeSet(3)));

  // The current file is read as a reader would, never through a link: its own failures come
  // through, others are publicationFailed.
  const std::pair<Bytes, Error> currentFiles[] = {
      {Bytes{}, Error::invalidEnvelopeFile},
      {Bytes(100, 0xA0), Error::publicationFailed},
      {encodedSet(envelopeSet(1, 9)), Error::packageBindingMismatch},
  };
  for (const auto& [current, expected] : currentFiles) {
    writeFile(filePath_, current);
    EXPECT_EQ(failureOf(write(first, platform::SHA256::digest(current))), expected) << current.size();
  }
  // A link put in the file's place while staging is never followed.
  writeFile(filePath_, encodedSet(first));
  writeFile(directory_ / "aside", encodedSet(first));
  EXPECT_EQ(failureOf(write(envelopeSet(2), digestOfFile(),
                            at(FaultPoint::afterStagingSync,
                               [&] {
                                 fs::remove(filePath_);
                                 makeSymbolicLink(directory_ / "aside", filePath_);
                               }))),
            Error::invalidEnvelopeFile);
  EXPECT_TRUE(fs::is_symlink(filePath_));
  EXPECT_TRUE(stagedNames().empty());
  // Another package at the same path is not the one the caller holds.
  fs::remove_all(packagePath_);
  ASSERT_TRUE(format::BackupPackageV1::create(packagePath_, identifier(9)).has_value());
  EXPECT_EQ(failureOf(write(envelopeSet(1, 9), std::nullopt)), Error::packageBindingMismatch);
}

// The writer passes the fault points in the order they are named. A stop before the rename
// leaves the old file, one after it the new; neither leaves the staged file, which is
// ".key-envelopes-<uuid>.tmp" in tmp.
TEST_F(BackupKeyEnvelopeFileV1Test, EveryFaultPointLeavesTheOldFileOrTheNewAndNoStagedFile) {
  ASSERT_TRUE(write(envelopeSet(1), std::nullopt).has_value());
  Bytes current = readFile(filePath_);
  for (int index = 0; index <= static_cast<int>(FaultPoint::afterDirectorySync); ++index) {
    const auto point = static_cast<FaultPoint>(index);
    const Set next = envelopeSet(static_cast<std::uint64_t>(index) + 2);
    std::vector<FaultPoint> passed;
    std::vector<std::string> staged;
    const auto result = write(next, platform::SHA256::digest(current), [&](FaultPoint reached) {
      if (passed.empty()) staged = stagedNames();
      passed.push_back(reached);
      return reached == point;
    });
    const bool renamed = point >= FaultPoint::afterFinalRename;
    EXPECT_EQ(failureOf(result), renamed ? Error::publicationOutcomeUnknown : Error::publicationFailed) << index;
    EXPECT_EQ(passed.size(), static_cast<std::size_t>(index) + 1) << index;
    ASSERT_EQ(staged.size(), 1U);
    EXPECT_TRUE(std::regex_match(
        staged.front(),
        std::regex(R"(\.key-envelopes-[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[0-9a-f]{4}-[0-9a-f]{12}\.tmp)")));
    EXPECT_TRUE(stagedNames().empty()) << index;
    if (renamed) current = encodedSet(next);
    EXPECT_EQ(readFile(filePath_), current) << index;
  }
}

}  // namespace galdrine::envelope
