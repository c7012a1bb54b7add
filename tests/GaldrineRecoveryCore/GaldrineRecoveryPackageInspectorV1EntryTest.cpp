// The inspector's entry and discovery on packages without a graph: which case each way in and
// each misplaced commit or head name ends in.

#include "GaldrineRecoveryCore/GaldrineRecoveryPackageInspectorV1.hpp"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCore/GaldrineBackupPackageV1.hpp"
#include "GaldrineCryptoSupport/GaldrineArgon2id.hpp"
#include "GaldrineRecoveryCore/RecoveryTestPackages.hpp"
#include "Support/GaldrineFileFixtures.hpp"
#include "Support/GaldrineTemporaryDirectory.hpp"

namespace {

namespace fs = std::filesystem;
namespace Inspector = GaldrineRecoveryPackageInspectorV1;
using namespace RecoveryTestPackages;
using Error = GaldrineRecoveryPackageInspectorV1Error;
using GaldrineFileFixtures::makeDirectory;
using GaldrineFileFixtures::makeSymbolicLink;
using GaldrineFileFixtures::writeFile;

// An error is a bare case: nothing of a path, a name or a lower reason can travel with it.
static_assert(std::is_enum_v<Error> && sizeof(Error) == 1);

const std::string kCommitName = "000102030405060708090a0b0c0d0e0f.commit";

class InspectorEntryTest : public testing::Test {
 protected:
  void SetUp() override { createPackage(packageURL(), identifier(1)); }
  [[nodiscard]] fs::path packageURL() const { return directory_ / "library.galdrine"; }
  [[nodiscard]] std::optional<Error> inspectionError() const {
    const auto inspection = Inspector::inspectWithRecoveryKey(packageURL(), kRecoveryKey);
    if (inspection) return std::nullopt;
    return inspection.error();
  }

  GaldrineTemporaryDirectory directory_;
};

TEST_F(InspectorEntryTest, AnEmptyPackageHasNoPublishedHead) {
  const auto inspection = Inspector::inspectWithRecoveryKey(packageURL(), kRecoveryKey);
  ASSERT_TRUE(inspection.has_value());
  EXPECT_EQ(inspection->packageIdentifier, identifier(1));
  EXPECT_EQ(inspection->libraryDomainIdentifier, kLibraryDomainIdentifier);
  EXPECT_EQ(inspection->formatIdentifier, GaldrineBackupFormatV1::canonicalFormatIdentifier);
  EXPECT_EQ(inspection->formatVersion, 1u);
  EXPECT_EQ(inspection->unlockedFactor, GaldrineRecoveryPortableFactorV1::recoveryKey);
  EXPECT_EQ(inspection->branchDisposition, GaldrineRecoveryBranchDispositionV1::noPublishedHead());
  EXPECT_TRUE(inspection->preservedBranches.empty());
  EXPECT_TRUE(inspection->authenticatedSnapshots.empty());
  EXPECT_EQ(inspection->authenticatedCommitCount, 0);
  EXPECT_EQ(inspection->authenticatedHeadCount, 0);
  EXPECT_EQ(inspection->maximumWriterEpoch, 0u);
  const auto reader = Inspector::openEnvelopeReader(packageURL());
  ASSERT_TRUE(reader.has_value());
  EXPECT_EQ(inspection->keyEnvelopeSetSHA256, reader->envelopeSetSHA256());
}

TEST_F(InspectorEntryTest, ACredentialThatDoesNotOpenIsUnlockFailed) {
  Bytes wrongKey = kRecoveryKey;
  wrongKey[0] ^= 0x80;
  EXPECT_EQ(Inspector::inspectWithRecoveryKey(packageURL(), wrongKey).error(), Error::unlockFailed);
  EXPECT_EQ(Inspector::inspectWithRecoveryKey(packageURL(), ByteView(kRecoveryKey).first(31)).error(), Error::unlockFailed);
  // No passphrase envelope: refused as a failed unlock, and without spending a derivation.
  const auto derivationsBefore = GaldrineArgon2id::derivationCount();
  EXPECT_EQ(Inspector::inspectWithBackupPassphrase(packageURL(), GaldrineByteText::view(kPassphrase)).error(),
            Error::unlockFailed);
  EXPECT_EQ(GaldrineArgon2id::derivationCount(), derivationsBefore);
}

TEST_F(InspectorEntryTest, APackageThatDoesNotOpenOrBindIsInvalid) {
  EXPECT_EQ(Inspector::inspectWithRecoveryKey(directory_ / "absent.galdrine", kRecoveryKey).error(), Error::invalidPackage);
  EXPECT_EQ(Inspector::openEnvelopeReader(directory_.path()).error(), Error::invalidPackage);
  const fs::path foreignURL = directory_ / "foreign.galdrine";
  createPackage(foreignURL, identifier(2));
  fs::copy_file(foreignURL / GaldrineBackupPackageV1::keyEnvelopesName,
                packageURL() / GaldrineBackupPackageV1::keyEnvelopesName, fs::copy_options::overwrite_existing);
  EXPECT_EQ(inspectionError(), Error::invalidPackage);
  fs::remove(packageURL() / GaldrineBackupPackageV1::keyEnvelopesName);
  EXPECT_EQ(inspectionError(), Error::invalidPackage);
}

TEST_F(InspectorEntryTest, AnythingButACanonicalFrameInCommitsOrHeadsStopsTheInspection) {
  struct Case {
    std::string name;
    std::function<void(const fs::path& commits, const fs::path& heads)> place;
    Error expected;
  };
  const std::vector<Case> cases{
      {"a stray file", [](const fs::path& commits, const fs::path&) { writeFile(commits / "README", "x"); },
       Error::integrityFailure},
      {"upper-case digits in heads",
       [](const fs::path&, const fs::path& heads) { writeFile(heads / "000102030405060708090A0B0C0D0E0F.head", "x"); },
       Error::integrityFailure},
      {"a frame that does not open", [](const fs::path& commits, const fs::path&) { writeFile(commits / kCommitName, "x"); },
       Error::integrityFailure},
      {"a symbolic link", [](const fs::path& commits, const fs::path&) { makeSymbolicLink(commits / "x", commits / kCommitName); },
       Error::integrityFailure},
      {"a directory", [](const fs::path& commits, const fs::path&) { makeDirectory(commits / kCommitName); },
       Error::integrityFailure},
      {"a frame larger than any commit",
       [](const fs::path& commits, const fs::path&) { writeFile(commits / kCommitName, Bytes(66'561, 0xA0)); },
       Error::integrityFailure},
  };
  for (const Case& testCase : cases) {
    GaldrineTemporaryDirectory scratch;
    const fs::path url = scratch / "case.galdrine";
    createPackage(url, identifier(1));
    testCase.place(url / "commits", url / "heads");
    EXPECT_EQ(Inspector::inspectWithRecoveryKey(url, kRecoveryKey).error(), testCase.expected) << testCase.name;
  }
}

TEST_F(InspectorEntryTest, TwentyThousandCommitNamesAreListedAndOneMoreIsALimit) {
  const fs::path commits = packageURL() / "commits";
  for (int index = 0; index < 20'000; ++index) {
    char name[64];
    std::snprintf(name, sizeof name, "%032x.commit", index);
    writeFile(commits / name, "x");
  }
  // The listing passes its bound; the first frame then fails to open.
  EXPECT_EQ(inspectionError(), Error::integrityFailure);
  writeFile(commits / "one-more", "x");
  EXPECT_EQ(inspectionError(), Error::resourceLimitExceeded);
}

}  // namespace
