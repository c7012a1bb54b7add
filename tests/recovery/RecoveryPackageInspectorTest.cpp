// The inspector on packages that the package writer made: empty packages, single branches,
// snapshots sharing payloads, forks and their healing, commits without heads, damaged payload
// and metadata files, stray names, the limits, both credentials and every way in refused.

#include "recovery/inspection/RecoveryPackageInspector.hpp"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "support/BackupPackageDamage.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "kdf/Argon2id.hpp"
#include "support/RecoveryTestPackages.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::recovery {

namespace {

namespace Damage = testsupport::BackupPackageDamage;
using namespace testsupport::RecoveryTestPackages;
using InspectorError = RecoveryPackageInspectorError;
using Inspection = RecoveryPackageInspection;
using Evidence = RecoveryPayloadFileEvidence;
using Disposition = RecoveryBranchDisposition;
using Written = writer::BackupWrittenCommit;
using Request = writer::BackupCommitRequest;
using Parent = writer::BackupCommitParent;
using FileDamage = testsupport::BackupFileDamage;
using Metadata = testsupport::BackupMetadataFile;

// An error is a bare case: nothing of a path, a name or a lower reason can travel with it.
static_assert(std::is_enum_v<InspectorError> && sizeof(InspectorError) == 1);

// joined is a library holding the items of both.
[[nodiscard]] writer::BackupLibrarySnapshot joined(writer::BackupLibrarySnapshot first,
                                                     const writer::BackupLibrarySnapshot& second) {
  first.items.insert(first.items.end(), second.items.begin(), second.items.end());
  return first;
}

[[nodiscard]] Evidence allMatching(const Written& written) {
  const auto count = static_cast<std::int64_t>(written.payloadFiles.size());
  return {count, count, 0, 0, 0};
}

// ManifestCost is what authenticating one commit's manifest charges the budget.
struct ManifestCost {
  std::uint64_t plaintextByteCount = 0;
  std::uint64_t recordCount = 0;
};

[[nodiscard]] ManifestCost manifestCost(const Written& written) {
  ManifestCost cost{written.snapshot.manifest().plaintextByteCount(), 0};
  for (const auto& section : written.manifestRoot.sections()) {
    cost.plaintextByteCount += section.artifact().plaintextByteCount();
    cost.recordCount += section.recordCount();
  }
  return cost;
}

class InspectorPackageTest : public testing::Test {
 protected:
  [[nodiscard]] fs::path packagePath() const { return directory_ / "Library.galdrine"; }

  [[nodiscard]] Written write(const writer::BackupLibrarySnapshot& library, const Request& request = {}) {
    auto written = writer_.writeCommit(library, request);
    if (!written) {
      ADD_FAILURE() << "writing failed: " << written.error().index();
      std::abort();
    }
    return std::move(*written);
  }

  [[nodiscard]] std::expected<Inspection, InspectorError> inspect(const RecoveryInspectionLimits& limits = {}) const {
    return inspectWithRecoveryKey(packagePath(), kRecoveryKey, limits);
  }

  // preflightOf finds the preflight of `written`'s commit.
  [[nodiscard]] static const RecoverySnapshotPreflight* preflightOf(const Inspection& inspection,
                                                                             const Written& written) {
    for (const auto& preflight : inspection.authenticatedSnapshots) {
      if (preflight.commitIdentifier == bytesOf(written.commitIdentifier)) return &preflight;
    }
    return nullptr;
  }

  [[nodiscard]] static std::vector<Bytes> lineageOf(const RecoveryPreservedBranch& branch) {
    std::vector<Bytes> commits;
    for (const auto& preflight : branch.snapshots) commits.push_back(preflight.commitIdentifier);
    return commits;
  }

  testsupport::TemporaryDirectory directory_;
  Writer writer_ = createWithRecoveryKey(packagePath());
};

TEST_F(InspectorPackageTest, AnEmptyPackageHasNoPublishedHead) {
  const auto inspection = inspect();
  ASSERT_TRUE(inspection.has_value());
  EXPECT_EQ(inspection->formatIdentifier, format::BackupFormatV1::canonicalFormatIdentifier);
  EXPECT_EQ(inspection->formatVersion, 1u);
  EXPECT_EQ(inspection->unlockedFactor, envelope::PortableKeyFactorV1::recoveryKey);
  EXPECT_EQ(inspection->branchDisposition, Disposition::noPublishedHead());
  EXPECT_TRUE(inspection->preservedBranches.empty() && inspection->authenticatedSnapshots.empty());
  EXPECT_EQ(inspection->authenticatedCommitCount + inspection->authenticatedHeadCount, 0);
  EXPECT_EQ(inspection->maximumWriterEpoch, 0u);
  const auto reader = openEnvelopeReader(packagePath());
  ASSERT_TRUE(reader.has_value());
  EXPECT_EQ(inspection->keyEnvelopeSetSHA256, reader->envelopeSetSHA256());
}

TEST_F(InspectorPackageTest, TwentyThousandCommitNamesAreListedAndOneMoreIsALimit) {
  const fs::path commits = packagePath() / "commits";
  for (int index = 0; index < 20'000; ++index) {
    char name[64];
    std::snprintf(name, sizeof name, "%032x.commit", index);
    testsupport::FileFixtures::writeFile(commits / name, "x");
  }
  // The listing passes its bound; the first frame then fails to open.
  EXPECT_EQ(inspect().error(), InspectorError::integrityFailure);
  testsupport::FileFixtures::writeFile(commits / "one-more", "x");
  EXPECT_EQ(inspect().error(), InspectorError::resourceLimitExceeded);
}

TEST_F(InspectorPackageTest, ASingleBranchIsWhatWasWritten) {
  const Written written = write(testsupport::BackupSampleLibrary::make({}));
  const auto inspection = inspect();
  ASSERT_TRUE(inspection.has_value()) << static_cast<int>(inspection.error());
  const auto& commit = written.commit.commit();
  const RecoverySnapshotPreflight expected{
      bytesOf(written.commitIdentifier), written.snapshot.identifier(), commit.createdAtUTCMilliseconds(),
      commit.writerEpoch(), commit.generation(), true, written.snapshot.counts(), written.snapshot.logicalPlaintextByteCount(),
      written.snapshot.encryptedPayloadByteCount(), allMatching(written)};
  EXPECT_EQ(inspection->authenticatedSnapshots, std::vector{expected});
  const RecoveryPreservedBranch branch{bytesOf(written.commitIdentifier), {expected}};
  EXPECT_EQ(inspection->preservedBranches, std::vector{branch});
  EXPECT_EQ(inspection->branchDisposition, Disposition::singleBranch());
  EXPECT_EQ(inspection->packageIdentifier, writer_.package().header().packageIdentifier());
  EXPECT_EQ(inspection->libraryDomainIdentifier, bytesOf(writer_.libraryDomainIdentifier()));
  EXPECT_EQ(inspection->authenticatedCommitCount, 1);
  EXPECT_EQ(inspection->authenticatedHeadCount, 1);
  EXPECT_EQ(inspection->maximumWriterEpoch, commit.writerEpoch());

  const auto reader = openEnvelopeReader(packagePath());
  ASSERT_TRUE(reader.has_value());
  const auto snapshot = authenticatedSnapshot(bytesOf(written.commitIdentifier), *reader,
                                                         writer_.backupPackageMasterKey());
  ASSERT_TRUE(snapshot.has_value());
  EXPECT_EQ(snapshot->authenticatedCommit, written.commit);
  EXPECT_EQ(snapshot->snapshot, written.snapshot);
  EXPECT_EQ(snapshot->records, written.records);
  EXPECT_EQ(authenticatedSnapshot(Bytes(16, 0xEE), *reader, writer_.backupPackageMasterKey()).error(),
            InspectorError::integrityFailure);
}

TEST_F(InspectorPackageTest, SnapshotsSharingPayloadsHashEachFileOnceAndShareTheBudget) {
  const auto first = library(1, 4, 1);
  const Written one = write(first);
  const Written two = write(joined(first, library(2, 3, 1)));
  const Written three = write(library(2, 3, 1));
  auto sharing = writer_.writeCommitSharingSnapshot(two.commitIdentifier);
  ASSERT_TRUE(sharing.has_value());
  const Written four = std::move(*sharing);

  std::set<fs::path> required;
  for (const Written* written : {&one, &two, &three}) {
    for (const auto& file : written->payloadFiles) required.insert(file.path);
  }
  std::vector<fs::path> readOrder;
  std::map<fs::path, int> endings;
  const auto observer = [&](const fs::path& file, std::size_t byteCount) {
    if (readOrder.empty() || readOrder.back() != file) readOrder.push_back(file);
    if (byteCount == 0) ++endings[file];
  };
  const auto reader = openEnvelopeReader(packagePath());
  ASSERT_TRUE(reader.has_value());
  const auto inspection = recovery::inspect(*reader, writer_.backupPackageMasterKey(),
                                             envelope::PortableKeyFactorV1::recoveryKey, {}, observer);
  ASSERT_TRUE(inspection.has_value()) << static_cast<int>(inspection.error());
  // Each required file was read in one run of reads that ended once: hashed once, shared or not.
  EXPECT_EQ(std::set<fs::path>(readOrder.begin(), readOrder.end()), required);
  EXPECT_EQ(readOrder.size(), required.size());
  for (const auto& [file, count] : endings) EXPECT_EQ(count, 1) << file;
  EXPECT_LT(required.size(), one.payloadFiles.size() + two.payloadFiles.size() + three.payloadFiles.size());

  for (const Written* written : {&one, &two, &three}) {
    const auto* preflight = preflightOf(*inspection, *written);
    ASSERT_NE(preflight, nullptr);
    EXPECT_EQ(preflight->payloadFileEvidence, allMatching(*written));
  }
  const auto* shared = preflightOf(*inspection, four);
  ASSERT_NE(shared, nullptr);
  EXPECT_EQ(shared->snapshotIdentifier, two.snapshot.identifier());
  EXPECT_EQ(shared->payloadFileEvidence, preflightOf(*inspection, two)->payloadFileEvidence);
  EXPECT_TRUE(std::ranges::is_sorted(inspection->authenticatedSnapshots, {}, &RecoverySnapshotPreflight::commitIdentifier));
  ASSERT_EQ(inspection->preservedBranches.size(), 1u);
  EXPECT_EQ(lineageOf(inspection->preservedBranches.front()),
            (std::vector{bytesOf(four.commitIdentifier), bytesOf(three.commitIdentifier), bytesOf(two.commitIdentifier),
                         bytesOf(one.commitIdentifier)}));

  // The shared snapshot's manifest is charged once: a budget of exactly the three manifests passes.
  ManifestCost total;
  for (const Written* written : {&one, &two, &three}) {
    total.plaintextByteCount += manifestCost(*written).plaintextByteCount;
    total.recordCount += manifestCost(*written).recordCount;
  }
  EXPECT_TRUE(inspect({total.plaintextByteCount, total.recordCount}).has_value());
  EXPECT_EQ(inspect({total.plaintextByteCount - 1, total.recordCount}).error(), InspectorError::resourceLimitExceeded);
  EXPECT_EQ(inspect({total.plaintextByteCount, total.recordCount - 1}).error(), InspectorError::resourceLimitExceeded);
}

TEST_F(InspectorPackageTest, AForkStaysUnresolvedUntilACommitHealsIt) {
  const Written root = write(library(1, 2));
  const Written left = write(library(2, 2), {.parent = Parent::commit(root.commitIdentifier)});
  const Written right = write(library(3, 2), {.parent = Parent::commit(root.commitIdentifier)});
  const auto forked = inspect();
  ASSERT_TRUE(forked.has_value()) << static_cast<int>(forked.error());
  EXPECT_EQ(forked->branchDisposition, Disposition::unresolvedFork());
  ASSERT_EQ(forked->preservedBranches.size(), 2u);
  const Bytes lower = std::min(bytesOf(left.commitIdentifier), bytesOf(right.commitIdentifier));
  const Bytes upper = std::max(bytesOf(left.commitIdentifier), bytesOf(right.commitIdentifier));
  EXPECT_EQ(lineageOf(forked->preservedBranches[0]), (std::vector{lower, bytesOf(root.commitIdentifier)}));
  EXPECT_EQ(lineageOf(forked->preservedBranches[1]), (std::vector{upper, bytesOf(root.commitIdentifier)}));
  EXPECT_FALSE(preflightOf(*forked, root)->isRetainedTip);
  EXPECT_TRUE(preflightOf(*forked, left)->isRetainedTip);

  const Written healed = write(library(4, 1), {.parent = Parent::commit(left.commitIdentifier), .healFork = true});
  const auto inspection = inspect();
  ASSERT_TRUE(inspection.has_value()) << static_cast<int>(inspection.error());
  EXPECT_EQ(inspection->branchDisposition, Disposition::canonicalizedBranches(bytesOf(healed.commitIdentifier)));
  std::set<Bytes> tips;
  for (const auto& branch : inspection->preservedBranches) tips.insert(branch.tipCommitIdentifier);
  EXPECT_EQ(tips, (std::set{bytesOf(right.commitIdentifier), bytesOf(healed.commitIdentifier)}));
  EXPECT_EQ(inspection->maximumWriterEpoch, healed.commit.commit().writerEpoch());
  EXPECT_GT(healed.commit.commit().writerEpoch(), left.commit.commit().writerEpoch());
  EXPECT_EQ(inspection->authenticatedCommitCount, 4);
}

TEST_F(InspectorPackageTest, CommitsWithoutAnyHeadAreAuthenticatedButPublishNoBranch) {
  const Written written = write(library(1, 3), {.publishHead = false});
  const auto inspection = inspect();
  ASSERT_TRUE(inspection.has_value()) << static_cast<int>(inspection.error());
  EXPECT_EQ(inspection->branchDisposition, Disposition::noPublishedHead());
  EXPECT_TRUE(inspection->preservedBranches.empty());
  EXPECT_EQ(inspection->authenticatedHeadCount, 0);
  ASSERT_EQ(inspection->authenticatedSnapshots.size(), 1u);
  EXPECT_FALSE(inspection->authenticatedSnapshots.front().isRetainedTip);
  EXPECT_EQ(inspection->authenticatedSnapshots.front().payloadFileEvidence, allMatching(written));
}

TEST_F(InspectorPackageTest, DamagedPayloadFilesAreEvidenceForTheSnapshotsThatNeedThem) {
  const Written photos = write(library(1, 2));
  const Written videos = write(library(2, 0, 8));
  const struct {
    FileDamage damage;
    std::size_t partIndex;
  } damages[] = {
      {FileDamage::remove, 0},          {FileDamage::replaceByEmptyFile, 1},    {FileDamage::alterByte, 0},
      {FileDamage::truncate, 2},        {FileDamage::replaceByDirectory, 0},    {FileDamage::extend, 1},
      {FileDamage::replaceBySymbolicLink, 0}, {FileDamage::replaceBySymbolicLink, 1},
  };
  std::size_t index = 0;
  fs::path danglingLink;
  for (const auto& item : library(2, 0, 8).items) {
    const auto& damage = damages[index++];
    const auto damaged = Damage::damagePayload(videos, item.resources.front().identifier, damage.damage, damage.partIndex);
    ASSERT_TRUE(damaged.has_value());
    danglingLink = *damaged;
  }
  fs::remove(fs::read_symlink(danglingLink));  // the last link now points nowhere

  const auto inspection = inspect();
  ASSERT_TRUE(inspection.has_value()) << static_cast<int>(inspection.error());
  const auto required = static_cast<std::int64_t>(videos.payloadFiles.size());
  // missing: removed; mismatched: empty, altered, cut, directory, lengthened; unreadable: both links.
  EXPECT_EQ(preflightOf(*inspection, videos)->payloadFileEvidence, (Evidence{required, required - 8, 1, 5, 2}));
  EXPECT_EQ(preflightOf(*inspection, photos)->payloadFileEvidence, allMatching(photos));
}

TEST(InspectorDamageTest, DamagedMetadataStopsTheInspection) {
  struct Case {
    std::string name;
    Metadata file;
    FileDamage damage;
  };
  std::vector<Case> cases;
  for (const auto file : {Metadata::commit, Metadata::snapshot, Metadata::manifestRoot, Metadata::manifestSection}) {
    for (const auto damage : {FileDamage::alterByte, FileDamage::remove, FileDamage::truncate, FileDamage::extend,
                              FileDamage::replaceBySymbolicLink, FileDamage::replaceByDirectory}) {
      cases.push_back({"metadata " + std::to_string(static_cast<int>(file)) + " damage " +
                           std::to_string(static_cast<int>(damage)), file, damage});
    }
  }
  cases.push_back({"altered head", Metadata::head, FileDamage::alterByte});
  cases.push_back({"head as a directory", Metadata::head, FileDamage::replaceByDirectory});
  for (const Case& testCase : cases) {
    const testsupport::TemporaryDirectory directory;
    const fs::path path = directory / "Library.galdrine";
    auto writer = createWithRecoveryKey(path);
    const auto written = writer.writeCommit(library(1, 2));
    ASSERT_TRUE(written.has_value());
    const auto file = Damage::metadataFile(*written, testCase.file);
    ASSERT_TRUE(file.has_value());
    ASSERT_TRUE(Damage::damageFile(path, *file, testCase.damage).has_value());
    const auto inspection = inspectWithRecoveryKey(path, kRecoveryKey);
    ASSERT_FALSE(inspection.has_value()) << testCase.name;
    EXPECT_EQ(inspection.error(), InspectorError::integrityFailure) << testCase.name;
  }
}

TEST(InspectorDamageTest, StrayOrMisspelledNamesInCommitsAndHeadsStopTheInspection) {
  for (const std::string_view directoryName : {"commits", "heads"}) {
    for (const bool upperCase : {false, true}) {
      const testsupport::TemporaryDirectory directory;
      const fs::path path = directory / "Library.galdrine";
      auto writer = createWithRecoveryKey(path);
      const auto written = writer.writeCommit(library(1, 1));
      ASSERT_TRUE(written.has_value());
      const fs::path original = directoryName == "commits" ? written->commitFile : written->head->file;
      std::string name = original.filename().string();
      if (upperCase) {
        std::ranges::transform(name, name.begin(), [](char c) { return static_cast<char>(std::toupper(c)); });
        fs::rename(original, original.parent_path() / name);
      } else {
        ASSERT_TRUE(Damage::addStrayFile(path / directoryName, ".DS_Store", ByteText::view("x")).has_value());
      }
      EXPECT_EQ(inspectWithRecoveryKey(path, kRecoveryKey).error(), InspectorError::integrityFailure)
          << directoryName << (upperCase ? " upper case" : " stray");
    }
  }
}

TEST(InspectorCredentialTest, EitherFactorUnlocksAndEveryOtherWayInIsRefused) {
  const testsupport::TemporaryDirectory directory;
  const fs::path path = directory / "Library.galdrine";
  {
    auto writer = createWithBothFactors(path);
    ASSERT_TRUE(writer.writeCommit(library(1, 1)).has_value());
  }
  const auto byPassphrase = inspectWithBackupPassphrase(path, kPassphrase);
  ASSERT_TRUE(byPassphrase.has_value());
  EXPECT_EQ(byPassphrase->unlockedFactor, envelope::PortableKeyFactorV1::backupPassphrase);
  const auto byRecoveryKey = inspectWithRecoveryKey(path, kRecoveryKey);
  ASSERT_TRUE(byRecoveryKey.has_value());
  EXPECT_EQ(byRecoveryKey->unlockedFactor, envelope::PortableKeyFactorV1::recoveryKey);
  EXPECT_EQ(byRecoveryKey->authenticatedSnapshots, byPassphrase->authenticatedSnapshots);

  Bytes wrongPassphrase = kPassphrase;
  wrongPassphrase.back() ^= 0x01;
  EXPECT_EQ(inspectWithBackupPassphrase(path, wrongPassphrase).error(), InspectorError::unlockFailed);
  Bytes wrongKey = kRecoveryKey;
  wrongKey.front() ^= 0x01;
  EXPECT_EQ(inspectWithRecoveryKey(path, wrongKey).error(), InspectorError::unlockFailed);
  EXPECT_EQ(inspectWithRecoveryKey(path, ByteView(kRecoveryKey).first(31)).error(), InspectorError::unlockFailed);

  // A package that does not open or bind costs no derivation.
  const auto derivationsBefore = kdf::Argon2id::derivationCount();
  EXPECT_EQ(inspectWithBackupPassphrase(directory / "Absent.galdrine", kPassphrase).error(),
            InspectorError::invalidPackage);
  EXPECT_EQ(openEnvelopeReader(directory.path()).error(), InspectorError::invalidPackage);
  const fs::path envelopes = path / format::BackupPackageV1::keyEnvelopesName;
  const Writer other = createWithRecoveryKey(directory / "Other.galdrine", 8);
  fs::copy_file(other.package().packagePath() / format::BackupPackageV1::keyEnvelopesName, envelopes,
                fs::copy_options::overwrite_existing);
  EXPECT_EQ(inspectWithBackupPassphrase(path, kPassphrase).error(), InspectorError::invalidPackage);
  fs::remove(envelopes);
  EXPECT_EQ(inspectWithBackupPassphrase(path, kPassphrase).error(), InspectorError::invalidPackage);
  EXPECT_EQ(kdf::Argon2id::derivationCount(), derivationsBefore);
}

}  // namespace

}  // namespace galdrine::recovery
