// The inspector on packages that the package writer made: empty packages, single branches,
// snapshots sharing payloads, forks and their healing, commits without heads, damaged payload
// and metadata files, the limits, both credentials and every way in refused.

#include "recovery/inspection/RecoveryPackageInspector.hpp"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "format/header/BackupFormatV1.hpp"
#include "kdf/Argon2id.hpp"
#include "support/BackupPackageDamage.hpp"
#include "support/RecoveryTestPackages.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::recovery {

namespace {

namespace Damage = testsupport::BackupPackageDamage;
using namespace testsupport::RecoveryTestPackages;
using InspectorError = RecoveryPackageInspectorError;
using Evidence = RecoveryPayloadFileEvidence;
using Disposition = RecoveryBranchDisposition;
using Written = writer::BackupWrittenCommit;
using Parent = writer::BackupCommitParent;
using FileDamage = testsupport::BackupFileDamage;
using Metadata = testsupport::BackupMetadataFile;
using Factor = envelope::PortableKeyFactorV1;

[[nodiscard]] Evidence allMatching(const Written& written) {
  const auto count = static_cast<std::int64_t>(written.payloadFiles.size());
  return {count, count, 0, 0, 0};
}

[[nodiscard]] std::vector<Bytes> lineageOf(const RecoveryPreservedBranch& branch) {
  std::vector<Bytes> commits;
  for (const auto& preflight : branch.snapshots) commits.push_back(preflight.commitIdentifier);
  return commits;
}

// preflightOf finds the preflight of `written`'s commit.
[[nodiscard]] const RecoverySnapshotPreflight* preflightOf(const RecoveryPackageInspection& inspection,
                                                           const Written& written) {
  const auto found = std::ranges::find(inspection.authenticatedSnapshots, bytesOf(written.commitIdentifier),
                                       &RecoverySnapshotPreflight::commitIdentifier);
  return found == inspection.authenticatedSnapshots.end() ? nullptr : &*found;
}

class InspectorPackageTest : public testing::Test {
 protected:
  [[nodiscard]] fs::path packagePath() const { return directory_ / "Library.galdrine"; }
  [[nodiscard]] std::expected<RecoveryPackageInspection, InspectorError> inspect(
      const RecoveryInspectionLimits& limits = {}) const {
    return inspectWithRecoveryKey(packagePath(), kRecoveryKey, limits);
  }

  testsupport::TemporaryDirectory directory_;
  Writer writer_ = createWithRecoveryKey(packagePath());
};

TEST_F(InspectorPackageTest, EmptyPackagesAndCommitsWithoutHeadsPublishNoBranch) {
  const auto empty = inspect();
  ASSERT_TRUE(empty.has_value());
  EXPECT_EQ(empty->branchDisposition, Disposition::noPublishedHead());
  EXPECT_TRUE(empty->preservedBranches.empty() && empty->authenticatedSnapshots.empty());
  EXPECT_EQ(empty->authenticatedCommitCount + empty->authenticatedHeadCount, 0);
  EXPECT_EQ(empty->keyEnvelopeSetSHA256, openEnvelopeReader(packagePath())->envelopeSetSHA256());

  const auto written = writer_.writeCommit(library(1, 3), {.publishHead = false});
  ASSERT_TRUE(written.has_value());
  const auto headless = inspect();
  ASSERT_TRUE(headless.has_value());
  EXPECT_EQ(headless->branchDisposition, Disposition::noPublishedHead());
  EXPECT_TRUE(headless->preservedBranches.empty() && headless->authenticatedHeadCount == 0);
  ASSERT_EQ(headless->authenticatedSnapshots.size(), 1u);
  EXPECT_FALSE(headless->authenticatedSnapshots.front().isRetainedTip);
  EXPECT_EQ(headless->authenticatedSnapshots.front().payloadFileEvidence, allMatching(*written));
}

TEST_F(InspectorPackageTest, ASingleBranchIsWhatWasWritten) {
  const auto written = writer_.writeCommit(testsupport::BackupSampleLibrary::make({}));
  ASSERT_TRUE(written.has_value());
  const auto inspection = inspect();
  ASSERT_TRUE(inspection.has_value()) << static_cast<int>(inspection.error());
  const auto& commit = written->commit.commit();
  const RecoverySnapshotPreflight expected{bytesOf(written->commitIdentifier),
                                           written->snapshot.identifier(),
                                           commit.createdAtUTCMilliseconds(),
                                           commit.writerEpoch(),
                                           commit.generation(),
                                           true,
                                           written->snapshot.counts(),
                                           written->snapshot.logicalPlaintextByteCount(),
                                           written->snapshot.encryptedPayloadByteCount(),
                                           allMatching(*written)};
  EXPECT_EQ(inspection->authenticatedSnapshots, std::vector{expected});
  EXPECT_EQ(inspection->preservedBranches,
            (std::vector{RecoveryPreservedBranch{bytesOf(written->commitIdentifier), {expected}}}));
  EXPECT_EQ(inspection->branchDisposition, Disposition::singleBranch());
  EXPECT_EQ(inspection->packageIdentifier, writer_.package().header().packageIdentifier());
  EXPECT_EQ(inspection->libraryDomainIdentifier, bytesOf(writer_.libraryDomainIdentifier()));
  EXPECT_EQ(inspection->authenticatedCommitCount + inspection->authenticatedHeadCount, 2);
  // The writer's suite reads a written snapshot's records back; a commit never written has none.
  EXPECT_EQ(authenticatedSnapshot(Bytes(16, 0xEE), *openEnvelopeReader(packagePath()), writer_.backupPackageMasterKey())
                .error(),
            InspectorError::integrityFailure);
}

TEST_F(InspectorPackageTest, SnapshotsSharingPayloadsHashEachFileOnceAndShareTheBudget) {
  auto first = library(1, 4, 1);
  const auto one = writer_.writeCommit(first);
  const auto& extra = library(2, 3, 1).items;
  first.items.insert(first.items.end(), extra.begin(), extra.end());
  const auto two = writer_.writeCommit(first);
  const auto three = writer_.writeCommit(library(2, 3, 1));
  ASSERT_TRUE(one && two && three);
  const auto four = writer_.writeCommitSharingSnapshot(two->commitIdentifier);
  ASSERT_TRUE(four.has_value());

  std::set<fs::path> required;
  std::uint64_t manifestBytes = 0;
  std::uint64_t manifestRecords = 0;
  for (const Written* written : {&*one, &*two, &*three}) {
    for (const auto& file : written->payloadFiles) required.insert(file.path);
    manifestBytes += written->snapshot.manifest().plaintextByteCount();
    for (const auto& section : written->manifestRoot.sections()) {
      manifestBytes += section.artifact().plaintextByteCount();
      manifestRecords += section.recordCount();
    }
  }
  std::vector<fs::path> readOrder;
  std::map<fs::path, int> endings;
  const auto observer = [&](const fs::path& file, std::size_t byteCount) {
    if (readOrder.empty() || readOrder.back() != file) readOrder.push_back(file);
    if (byteCount == 0) ++endings[file];
  };
  const auto inspection = recovery::inspect(*openEnvelopeReader(packagePath()), writer_.backupPackageMasterKey(),
                                            Factor::recoveryKey, {}, observer);
  ASSERT_TRUE(inspection.has_value()) << static_cast<int>(inspection.error());
  // Each required file was read in one run of reads that ended once: hashed once, shared or not.
  EXPECT_EQ(std::set<fs::path>(readOrder.begin(), readOrder.end()), required);
  EXPECT_EQ(readOrder.size(), required.size());
  for (const auto& [file, count] : endings) EXPECT_EQ(count, 1) << file;
  EXPECT_LT(required.size(), one->payloadFiles.size() + two->payloadFiles.size() + three->payloadFiles.size());
  for (const Written* written : {&*one, &*two, &*three}) {
    EXPECT_EQ(preflightOf(*inspection, *written)->payloadFileEvidence, allMatching(*written));
  }
  EXPECT_EQ(preflightOf(*inspection, *four)->snapshotIdentifier, two->snapshot.identifier());
  EXPECT_EQ(preflightOf(*inspection, *four)->payloadFileEvidence, allMatching(*two));
  ASSERT_EQ(inspection->preservedBranches.size(), 1u);
  EXPECT_EQ(lineageOf(inspection->preservedBranches.front()),
            (std::vector{bytesOf(four->commitIdentifier), bytesOf(three->commitIdentifier),
                         bytesOf(two->commitIdentifier), bytesOf(one->commitIdentifier)}));

  // The shared snapshot's manifest is charged once: a budget of exactly the three manifests passes.
  EXPECT_TRUE(inspect({manifestBytes, manifestRecords}).has_value());
  EXPECT_EQ(inspect({manifestBytes - 1, manifestRecords}).error(), InspectorError::resourceLimitExceeded);
  EXPECT_EQ(inspect({manifestBytes, manifestRecords - 1}).error(), InspectorError::resourceLimitExceeded);
}

TEST_F(InspectorPackageTest, AForkStaysUnresolvedUntilACommitHealsIt) {
  const auto root = writer_.writeCommit(library(1, 2));
  ASSERT_TRUE(root.has_value());
  const auto left = writer_.writeCommit(library(2, 2), {.parent = Parent::commit(root->commitIdentifier)});
  const auto right = writer_.writeCommit(library(3, 2), {.parent = Parent::commit(root->commitIdentifier)});
  ASSERT_TRUE(left && right);
  const auto forked = inspect();
  ASSERT_TRUE(forked.has_value()) << static_cast<int>(forked.error());
  EXPECT_EQ(forked->branchDisposition, Disposition::unresolvedFork());
  ASSERT_EQ(forked->preservedBranches.size(), 2u);
  const Bytes lower = std::min(bytesOf(left->commitIdentifier), bytesOf(right->commitIdentifier));
  const Bytes upper = std::max(bytesOf(left->commitIdentifier), bytesOf(right->commitIdentifier));
  EXPECT_EQ(lineageOf(forked->preservedBranches[0]), (std::vector{lower, bytesOf(root->commitIdentifier)}));
  EXPECT_EQ(lineageOf(forked->preservedBranches[1]), (std::vector{upper, bytesOf(root->commitIdentifier)}));
  EXPECT_FALSE(preflightOf(*forked, *root)->isRetainedTip);
  EXPECT_TRUE(preflightOf(*forked, *left)->isRetainedTip);

  const auto healed =
      writer_.writeCommit(library(4, 1), {.parent = Parent::commit(left->commitIdentifier), .healFork = true});
  ASSERT_TRUE(healed.has_value());
  const auto inspection = inspect();
  ASSERT_TRUE(inspection.has_value()) << static_cast<int>(inspection.error());
  EXPECT_EQ(inspection->branchDisposition, Disposition::canonicalizedBranches(bytesOf(healed->commitIdentifier)));
  ByteSet tips;
  for (const auto& branch : inspection->preservedBranches) tips.insert(branch.tipCommitIdentifier);
  EXPECT_EQ(tips, (ByteSet{bytesOf(right->commitIdentifier), bytesOf(healed->commitIdentifier)}));
  EXPECT_EQ(inspection->maximumWriterEpoch, healed->commit.commit().writerEpoch());
  EXPECT_EQ(inspection->authenticatedCommitCount, 4);
}

TEST_F(InspectorPackageTest, DamagedPayloadFilesAreEvidenceForTheSnapshotsThatNeedThem) {
  const auto photos = writer_.writeCommit(library(1, 2));
  const auto videos = writer_.writeCommit(library(2, 0, 8));
  ASSERT_TRUE(photos && videos);
  const std::pair<FileDamage, std::size_t> damages[] = {
      {FileDamage::remove, 0},
      {FileDamage::replaceByEmptyFile, 1},
      {FileDamage::alterByte, 0},
      {FileDamage::truncate, 2},
      {FileDamage::replaceByDirectory, 0},
      {FileDamage::extend, 1},
      {FileDamage::replaceBySymbolicLink, 0},
      {FileDamage::replaceBySymbolicLink, 1},
  };
  std::size_t index = 0;
  fs::path danglingLink;
  for (const auto& item : library(2, 0, 8).items) {
    const auto [damage, partIndex] = damages[index++];
    const auto damaged = Damage::damagePayload(*videos, item.resources.front().identifier, damage, partIndex);
    ASSERT_TRUE(damaged.has_value());
    danglingLink = *damaged;
  }
  fs::remove(fs::read_symlink(danglingLink));  // the last link now points nowhere

  const auto inspection = inspect();
  ASSERT_TRUE(inspection.has_value()) << static_cast<int>(inspection.error());
  const auto required = static_cast<std::int64_t>(videos->payloadFiles.size());
  // missing: removed; mismatched: empty, altered, cut, directory, lengthened; unreadable: both links.
  EXPECT_EQ(preflightOf(*inspection, *videos)->payloadFileEvidence, (Evidence{required, required - 8, 1, 5, 2}));
  EXPECT_EQ(preflightOf(*inspection, *photos)->payloadFileEvidence, allMatching(*photos));
}

// Damaged metadata stops the inspection as an integrity failure, whatever the damage.
TEST(InspectorDamageTest, DamagedMetadataStopsTheInspection) {
  std::vector<std::pair<Metadata, FileDamage>> cases{{Metadata::head, FileDamage::alterByte}};
  for (const auto file : {Metadata::commit, Metadata::snapshot, Metadata::manifestRoot, Metadata::manifestSection}) {
    for (const auto damage : {FileDamage::alterByte, FileDamage::remove, FileDamage::truncate, FileDamage::extend,
                              FileDamage::replaceBySymbolicLink, FileDamage::replaceByDirectory}) {
      cases.emplace_back(file, damage);
    }
  }
  for (const auto& [file, damage] : cases) {
    const testsupport::TemporaryDirectory directory;
    const fs::path path = directory / "Library.galdrine";
    auto writer = createWithRecoveryKey(path);
    const auto written = writer.writeCommit(library(1, 2));
    ASSERT_TRUE(written.has_value());
    const auto damaged = Damage::metadataFile(*written, file);
    ASSERT_TRUE(damaged && Damage::damageFile(path, *damaged, damage));
    EXPECT_EQ(inspectWithRecoveryKey(path, kRecoveryKey).error(), InspectorError::integrityFailure)
        << "file " << static_cast<int>(file) << ", damage " << static_cast<int>(damage);
  }
}

TEST(InspectorCredentialTest, EitherFactorUnlocksAndEveryOtherWayInIsRefused) {
  const testsupport::TemporaryDirectory directory;
  const fs::path path = directory / "Library.galdrine";
  ASSERT_TRUE(createWithBothFactors(path).writeCommit(library(1, 1)).has_value());
  const auto byPassphrase = inspectWithBackupPassphrase(path, kPassphrase);
  const auto byRecoveryKey = inspectWithRecoveryKey(path, kRecoveryKey);
  ASSERT_TRUE(byPassphrase && byRecoveryKey);
  EXPECT_EQ(byPassphrase->unlockedFactor, Factor::backupPassphrase);
  EXPECT_EQ(byRecoveryKey->unlockedFactor, Factor::recoveryKey);
  EXPECT_EQ(byRecoveryKey->authenticatedSnapshots, byPassphrase->authenticatedSnapshots);
  EXPECT_EQ(byRecoveryKey->formatIdentifier, format::BackupFormatV1::canonicalFormatIdentifier);

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
