// How the writer places commits in a package's graph. That the recovery engine reads the forks,
// healed forks, unpublished commits and shared snapshots the writer makes is for its own suite;
// here are what the writer decides: epochs, generations, kept payloads and its refusals.

#include <gtest/gtest.h>

#include "support/BackupWriterTestSupport.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::writer {

namespace {

using namespace testsupport::BackupWriterTestSupport;
using Parent = BackupCommitParent;

[[nodiscard]] BackupLibrarySnapshot sampleLibrary() {
  return testsupport::BackupSampleLibrary::make({.photoCount = 4, .livePhotoCount = 1, .videoCount = 1});
}

TEST(BackupCommitLineage, AnAppendedCommitKeepsUnchangedPayloadsAndWritesOnlyWhatChanged) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  auto library = sampleLibrary();
  const auto first = writer.writeCommit(library);
  ASSERT_TRUE(first);

  // One photo gets new content and a new item comes.
  library.items[0].resources[0].content = testsupport::BackupSampleLibrary::content(99, 1500);
  library.items.push_back(
      testsupport::BackupSampleLibrary::make({.seed = 5, .photoCount = 1, .livePhotoCount = 0, .videoCount = 0})
          .items.front());
  const auto second = writer.writeCommit(library);
  ASSERT_TRUE(second);

  EXPECT_EQ(second->commit.commit().parent(), first->commit.reference());
  EXPECT_EQ(second->commit.commit().generation(), 1u);
  EXPECT_EQ(second->commit.commit().writerEpoch(), first->commit.commit().writerEpoch());
  const std::set changed{library.items[0].resources[0].identifier, library.items.back().resources[0].identifier};
  for (const auto& resource : second->resources) {
    EXPECT_EQ(resource.payloadReused, !changed.contains(resource.identifier));
    if (const auto* before = first->resource(resource.identifier); resource.payloadReused && before != nullptr) {
      EXPECT_EQ(resource.partFiles, before->partFiles);
      EXPECT_EQ(resource.payloadKeyIdentifier, before->payloadKeyIdentifier);
    }
  }
  // Files the second commit shares were written by the first one and are left as they were.
  std::map<fs::path, fs::file_time_type> firstFiles;
  for (const auto& file : first->payloadFiles) firstFiles[file.path] = fs::last_write_time(file.path);
  for (const auto& file : second->payloadFiles) {
    EXPECT_EQ(file.newlyWritten, !firstFiles.contains(file.path)) << file.path;
    if (!file.newlyWritten) {
      EXPECT_EQ(fs::last_write_time(file.path), firstFiles[file.path]) << file.path;
    }
  }
  const auto inspection = inspected(writer);
  ASSERT_TRUE(inspection);
  for (const auto& snapshot : inspection->authenticatedSnapshots) {
    EXPECT_EQ(snapshot.payloadFileEvidence.matchingFileCount, snapshot.payloadFileEvidence.requiredFileCount);
  }
}

TEST(BackupCommitLineage, AForkBecomesReadOnlyAndAHealingCommitSettlesIt) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  const auto library = sampleLibrary();
  const auto base = writer.writeCommit(library);
  ASSERT_TRUE(base);
  const auto left = writer.writeCommit(library, {.parent = Parent::commit(base->commitIdentifier)});
  const auto right = writer.writeCommit(library, {.parent = Parent::commit(base->commitIdentifier)});
  ASSERT_TRUE(left && right);
  EXPECT_EQ(writer.writeCommit(library).error(), Failure(Error::readOnlyFork));

  // Healing builds on the first tip, acknowledges the other, and takes a new epoch.
  const auto healed = writer.writeCommit(library, {.healFork = true});
  ASSERT_TRUE(healed);
  const auto& healing = healed->commit.commit();
  EXPECT_EQ(healing.writerEpoch(), base->commit.commit().writerEpoch() + 1);
  EXPECT_EQ(healing.generation(), 1u);
  const bool leftFirst = ByteOrder::precedes(left->commitIdentifier, right->commitIdentifier);
  EXPECT_EQ(healing.parent(), (leftFirst ? left : right)->commit.reference());
  EXPECT_EQ(healing.acknowledgedAlternateTips(), std::vector{(leftFirst ? right : left)->commit.reference()});

  // The next commit stays in the healing epoch and repeats what it acknowledged, also from a
  // writer that opened the package afresh.
  const auto next = writer.writeCommit(library);
  ASSERT_TRUE(next);
  EXPECT_EQ(next->commit.commit().writerEpoch(), healing.writerEpoch());
  EXPECT_EQ(next->commit.commit().generation(), 2u);
  EXPECT_EQ(next->commit.commit().acknowledgedAlternateTips(), healing.acknowledgedAlternateTips());
  auto reopened = Writer::openWithRecoveryKey(directory / "Library.galdrine", kRecoveryKey, settings(8));
  ASSERT_TRUE(reopened);
  const auto after = reopened->writeCommit(library);
  ASSERT_TRUE(after);
  EXPECT_EQ(after->commit.commit().parent(), next->commit.reference());
  EXPECT_EQ(after->commit.commit().generation(), 3u);
}

TEST(BackupCommitLineage, LineageRefusalsComeBeforeAnyFile) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  const auto library = sampleLibrary();
  EXPECT_EQ(writer.writeCommit(library, {.healFork = true}).error(), Failure(Error::nothingToHeal));
  const auto base = writer.writeCommit(library);
  ASSERT_TRUE(base);
  const Identifier unknown{0x77};
  const struct {
    std::string_view name;
    BackupCommitRequest request;
    Failure expected;
  } cases[] = {
      {"unknown parent", {.parent = Parent::commit(unknown)}, Error::unknownCommit},
      {"unknown tip", {.acknowledgedTips = {unknown}}, Error::unknownCommit},
      {"root that acknowledges",
       {.parent = Parent::root(), .acknowledgedTips = {base->commitIdentifier}},
       Error::invalidLineage},
      {"single tip to heal", {.healFork = true}, Error::nothingToHeal},
      {"the parent acknowledged",
       {.acknowledgedTips = {base->commitIdentifier}},
       format::BackupCommitGraphError::invalidLineage},
  };
  const auto before = filesUnder(directory / "Library.galdrine");
  for (const auto& test : cases)
    EXPECT_EQ(writer.writeCommit(library, test.request).error(), test.expected) << test.name;
  EXPECT_EQ(filesUnder(directory / "Library.galdrine"), before);
  EXPECT_EQ(writer.commits().size(), 1u);
  EXPECT_EQ(writer.writeCommitSharingSnapshot(unknown).error(), Failure(Error::unknownCommit));
}

// A commit may go without a head, and a later one may share its snapshot: it adds its commit
// and head files and nothing else, and carries the snapshot's time.
TEST(BackupCommitLineage, ACommitSharingASnapshotWritesOnlyItself) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  const auto unpublished = writer.writeCommit(sampleLibrary(), {.publishHead = false});
  ASSERT_TRUE(unpublished);
  EXPECT_FALSE(unpublished->head);
  EXPECT_TRUE(fs::is_empty(directory / "Library.galdrine" / "heads"));

  const auto before = filesUnder(directory / "Library.galdrine");
  const auto shared = writer.writeCommitSharingSnapshot(unpublished->commitIdentifier,
                                                        {.parent = Parent::commit(unpublished->commitIdentifier)});
  ASSERT_TRUE(shared);
  EXPECT_EQ(shared->snapshotReference, unpublished->snapshotReference);
  EXPECT_EQ(shared->commit.commit().createdAtUTCMilliseconds(), unpublished->snapshot.createdAtUTCMilliseconds());
  EXPECT_EQ(shared->records, unpublished->records);
  std::set<fs::path> added;
  std::ranges::set_difference(filesUnder(directory / "Library.galdrine"), before, std::inserter(added, added.end()));
  EXPECT_EQ(added, (std::set{shared->commitFile, shared->head->file}));
  for (const auto& file : shared->payloadFiles) EXPECT_FALSE(file.newlyWritten);
}

}  // namespace

}  // namespace galdrine::writer
