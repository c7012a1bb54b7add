#include <gtest/gtest.h>

#include "format/graph/BackupCommitGraph.hpp"
#include "support/TemporaryDirectory.hpp"
#include "support/BackupWriterTestSupport.hpp"

namespace galdrine::writer {

namespace {

using namespace testsupport::BackupWriterTestSupport;
using Parent = BackupCommitParent;

[[nodiscard]] BackupLibrarySnapshot sampleLibrary() {
  testsupport::BackupSampleLibraryShape shape;
  shape.photoCount = 4;
  shape.livePhotoCount = 1;
  shape.videoCount = 1;
  return testsupport::BackupSampleLibrary::make(shape);
}

[[nodiscard]] BackupWrittenCommit committed(std::expected<BackupWrittenCommit, Failure> written) {
  if (!written) {
    ADD_FAILURE() << "commit failed: " << written.error().index();
    std::abort();
  }
  return std::move(*written);
}

// tipsOf gives the identifiers of the scan's retained tips and whether one is canonical.
struct Tips {
  std::vector<Identifier> retained;
  std::optional<Identifier> canonical;
  bool fork = false;
};

[[nodiscard]] Tips tipsOf(const Writer& writer) {
  const auto scan = scanFromDisk(writer);
  if (!scan) return {};
  for (const auto& commit : writer.commits()) expectSoundManifest(writer, commit.commit());
  EXPECT_EQ(writer.scan(), *scan);  // the writer's own view agrees with the files
  Tips tips;
  for (const auto& tip : scan->retainedTips) tips.retained.push_back(*format::FixedBytes::identifier(tip.reference().identifier()));
  tips.fork = !scan->accessState.isWritable();
  if (const auto* writable = scan->accessState.asWritable(); writable && writable->canonicalTip)
    tips.canonical = *format::FixedBytes::identifier(writable->canonicalTip->reference().identifier());
  return tips;
}

[[nodiscard]] std::vector<Identifier> sorted(std::vector<Identifier> identifiers) {
  std::ranges::sort(identifiers);
  return identifiers;
}

TEST(BackupCommitLineage, AnAppendedCommitKeepsUnchangedPayloadsAndWritesOnlyWhatChanged) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  auto library = sampleLibrary();
  const auto first = committed(writer.writeCommit(library));

  // One photo gets new content, one item goes, one comes; a large one is kept by "retained".
  library.items[0].resources[0].content = testsupport::BackupSampleLibrary::content(99, 1500);
  const Identifier removed = library.items[1].identifier;
  library.items.erase(library.items.begin() + 1);
  std::erase_if(library.memberships, [&](const auto& membership) { return membership.itemIdentifier == removed; });
  for (auto& album : library.albums) {
    if (album.coverItemIdentifier == removed) album.coverItemIdentifier.reset();
  }
  auto added = testsupport::BackupSampleLibrary::make({.seed = 5, .photoCount = 1, .livePhotoCount = 0, .videoCount = 0,
                                                    .folderCount = 0, .albumCount = 0, .tombstoneCount = 0});
  library.items.push_back(added.items.front());
  library.items.back().resources.front().content = testsupport::BackupSampleLibrary::content(7, 2500);
  library.items.back().resources.front().identifier = {0x42};
  library.items.back().identifier = {0x43};
  library.tombstones.push_back({removed, 1700000100000, {}});
  library.items[4].resources[0].content = BackupContentSource::retained();
  const auto second = committed(writer.writeCommit(library));

  EXPECT_EQ(second.commit.commit().parent(), first.commit.reference());
  EXPECT_EQ(second.commit.commit().generation(), 1u);
  EXPECT_EQ(second.commit.commit().writerEpoch(), first.commit.commit().writerEpoch());
  for (const auto& resource : second.resources) {
    const auto* before = first.resource(resource.identifier);
    const bool changed = resource.identifier == library.items[0].resources[0].identifier || resource.identifier[0] == 0x42;
    EXPECT_EQ(resource.payloadReused, !changed);
    if (!changed) {
      ASSERT_NE(before, nullptr);
      EXPECT_EQ(resource.partFiles, before->partFiles);
      EXPECT_EQ(resource.payloadKeyIdentifier, before->payloadKeyIdentifier);
    }
  }
  // Files this commit shares were written by the first one and are not written again.
  std::set<fs::path> firstFiles;
  std::map<fs::path, std::pair<Bytes, fs::file_time_type>> firstStates;
  for (const auto& file : first.payloadFiles) {
    firstFiles.insert(file.path);
    firstStates[file.path] = {fileBytes(file.path), fs::last_write_time(file.path)};
  }
  for (const auto& file : second.payloadFiles) EXPECT_EQ(file.newlyWritten, !firstFiles.contains(file.path)) << file.path;
  for (const auto& [path, state] : firstStates) {
    EXPECT_EQ(fileBytes(path), state.first) << path;
    EXPECT_EQ(fs::last_write_time(path), state.second) << path;
  }

  const auto read = readBack(writer, second.commit.commit());
  ASSERT_TRUE(read);
  const auto contents = expectedContents(library);
  const auto firstContents = expectedContents(sampleLibrary());
  for (const Record& record : read->records) {
    if (const auto* resource = record.resource()) {
      const Identifier& identifier = resource->identifier();
      EXPECT_EQ(payloadOf(writer, read->records, *resource),
                contents.at(identifier).empty() ? firstContents.at(identifier) : contents.at(identifier));
    }
  }
  EXPECT_EQ(tipsOf(writer).canonical, second.commitIdentifier);
}

TEST(BackupCommitLineage, RetainedContentMustNameAStoredResource) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  auto library = sampleLibrary();
  library.items[0].resources[0].content = BackupContentSource::retained();
  EXPECT_EQ(writer.writeCommit(library).error(), Failure(Error::unknownRetainedResource));
  EXPECT_TRUE(namesIn(directory / "Library.galdrine" / "packs").empty());
  EXPECT_TRUE(namesIn(directory / "Library.galdrine" / "objects").empty());
}

TEST(BackupCommitLineage, AForkBecomesReadOnlyAndAHealingCommitSettlesIt) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  const auto library = sampleLibrary();
  const auto base = committed(writer.writeCommit(library));
  const auto left = committed(writer.writeCommit(library, {.parent = Parent::commit(base.commitIdentifier)}));
  const auto right = committed(writer.writeCommit(library, {.parent = Parent::commit(base.commitIdentifier)}));
  EXPECT_EQ(left.commit.commit().generation(), 1u);
  EXPECT_EQ(right.commit.commit().generation(), 1u);
  EXPECT_TRUE(right.resources.front().payloadReused);

  Tips tips = tipsOf(writer);
  EXPECT_TRUE(tips.fork);
  EXPECT_EQ(tips.retained, sorted({left.commitIdentifier, right.commitIdentifier}));
  EXPECT_EQ(writer.writeCommit(library).error(), Failure(Error::readOnlyFork));

  const auto healed = committed(writer.writeCommit(library, {.healFork = true}));
  const auto& healing = healed.commit.commit();
  EXPECT_EQ(healing.writerEpoch(), base.commit.commit().writerEpoch() + 1);
  EXPECT_EQ(healing.generation(), 1u);
  ASSERT_EQ(healing.acknowledgedAlternateTips().size(), 1u);
  const std::set<Bytes> branches{Bytes(left.commitIdentifier.begin(), left.commitIdentifier.end()),
                                 Bytes(right.commitIdentifier.begin(), right.commitIdentifier.end())};
  EXPECT_EQ((std::set<Bytes>{healing.parent()->identifier(), healing.acknowledgedAlternateTips()[0].identifier()}), branches);
  tips = tipsOf(writer);
  EXPECT_FALSE(tips.fork);
  EXPECT_EQ(tips.canonical, healed.commitIdentifier);
  EXPECT_EQ(tips.retained.size(), 2u);

  // The next commit stays in the healing epoch and repeats what it acknowledged.
  const auto next = committed(writer.writeCommit(library));
  EXPECT_EQ(next.commit.commit().writerEpoch(), healing.writerEpoch());
  EXPECT_EQ(next.commit.commit().generation(), 2u);
  EXPECT_EQ(next.commit.commit().acknowledgedAlternateTips(), healing.acknowledgedAlternateTips());
  EXPECT_EQ(tipsOf(writer).canonical, next.commitIdentifier);

  // A package reopened from disk sees the same graph.
  const auto reopened = Writer::openWithRecoveryKey(directory / "Library.galdrine", kRecoveryKey, settings(8));
  ASSERT_TRUE(reopened);
  EXPECT_EQ(reopened->commits().size(), 5u);
  EXPECT_EQ(reopened->heads().size(), 5u);
  EXPECT_EQ(tipsOf(*reopened).canonical, next.commitIdentifier);
}

TEST(BackupCommitLineage, LineageRefusals) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  const auto library = sampleLibrary();
  EXPECT_EQ(writer.writeCommit(library, {.healFork = true}).error(), Failure(Error::nothingToHeal));
  const auto base = committed(writer.writeCommit(library));
  const Identifier unknown{0x77};
  struct Case {
    std::string_view name;
    BackupCommitRequest request;
    Failure expected;
  };
  const Case cases[] = {
      {"unknown parent", {.parent = Parent::commit(unknown)}, Error::unknownCommit},
      {"unknown tip", {.acknowledgedTips = {unknown}}, Error::unknownCommit},
      {"root that acknowledges", {.parent = Parent::root(), .acknowledgedTips = {base.commitIdentifier}}, Error::invalidLineage},
      {"single tip to heal", {.healFork = true}, Error::nothingToHeal},
      {"the parent acknowledged", {.acknowledgedTips = {base.commitIdentifier}}, format::BackupCommitGraphError::invalidLineage},
  };
  const auto before = filesUnder(directory / "Library.galdrine");
  for (const Case& test : cases) EXPECT_EQ(writer.writeCommit(library, test.request).error(), test.expected) << test.name;
  EXPECT_EQ(filesUnder(directory / "Library.galdrine"), before);  // refused before any file was written
  EXPECT_EQ(writer.commits().size(), 1u);
}

TEST(BackupCommitLineage, CommitsWithoutHeadsAndCommitsSharingASnapshot) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  const auto unpublished = committed(writer.writeCommit(sampleLibrary(), {.publishHead = false}));
  EXPECT_FALSE(unpublished.head);
  Tips tips = tipsOf(writer);
  EXPECT_TRUE(tips.retained.empty());
  EXPECT_FALSE(tips.canonical);
  EXPECT_TRUE(namesIn(directory / "Library.galdrine" / "heads").empty());

  const std::size_t snapshotsBefore = namesIn(directory / "Library.galdrine" / "snapshots").size();
  const auto shared = committed(writer.writeCommitSharingSnapshot(unpublished.commitIdentifier,
                                                                  {.parent = Parent::commit(unpublished.commitIdentifier)}));
  EXPECT_FALSE(shared.snapshotNewlyWritten);
  EXPECT_EQ(shared.snapshotReference, unpublished.snapshotReference);
  EXPECT_EQ(shared.commit.commit().createdAtUTCMilliseconds(), unpublished.snapshot.createdAtUTCMilliseconds());
  EXPECT_EQ(shared.commit.commit().manifestIdentifier(), unpublished.commit.commit().manifestIdentifier());
  EXPECT_EQ(shared.records, unpublished.records);
  EXPECT_EQ(namesIn(directory / "Library.galdrine" / "snapshots").size(), snapshotsBefore);
  for (const auto& file : shared.payloadFiles) EXPECT_FALSE(file.newlyWritten);
  EXPECT_EQ(tipsOf(writer).canonical, shared.commitIdentifier);

  const auto head = writer.writeHead(unpublished.commitIdentifier);
  ASSERT_TRUE(head);
  EXPECT_EQ(tipsOf(writer).retained, std::vector{shared.commitIdentifier});  // a head on an ancestor adds no tip
  EXPECT_EQ(writer.writeHead(Identifier{0x01}).error(), Failure(Error::unknownCommit));
}

TEST(BackupCommitLineage, FixedIdentifiersNameTheFiles) {
  const testsupport::TemporaryDirectory directory;
  auto writer = createWithRecoveryKey(directory / "Library.galdrine");
  const Identifier commit{0xC0, 1}, snapshot{0x50, 2}, manifest{0x3A, 3}, head{0x4E, 4};
  const auto written = committed(writer.writeCommit(
      sampleLibrary(), {.createdAtUTCMilliseconds = -5, .commitIdentifier = commit, .snapshotIdentifier = snapshot,
                        .manifestIdentifier = manifest, .headIdentifier = head}));
  const fs::path root = directory / "Library.galdrine";
  EXPECT_EQ(written.commitFile, root / "commits" / "c0010000000000000000000000000000.commit");
  EXPECT_EQ(written.snapshotFile, root / "snapshots" / "50020000000000000000000000000000.snapshot");
  EXPECT_EQ(written.manifestRootFile, root / "manifests" / "3a030000000000000000000000000000.manifest");
  EXPECT_EQ(written.head->file, root / "heads" / "4e040000000000000000000000000000.head");
  EXPECT_EQ(written.commit.commit().createdAtUTCMilliseconds(), -5);
  EXPECT_EQ(written.manifestRoot.createdAtUTCMilliseconds(), -5);
  // A commit identifier that is taken is refused before anything is written; a taken manifest
  // name is found when the manifest is published, and no commit names what was written.
  const auto before = filesUnder(root);
  EXPECT_EQ(writer.writeCommit(sampleLibrary(), {.commitIdentifier = commit}).error(),
            Failure(format::BackupGraphV1Error::invalidReference));
  EXPECT_EQ(filesUnder(root), before);
  EXPECT_EQ(writer.writeCommit(sampleLibrary(), {.manifestIdentifier = manifest}).error(),
            Failure(platform::FileError{EEXIST}));
  EXPECT_EQ(writer.commits().size(), 1u);
}

}  // namespace

}  // namespace galdrine::writer
