#include <gtest/gtest.h>

#include <sys/stat.h>

#include "support/BackupPackageDamage.hpp"
#include "envelope/BackupKeyEnvelopeFileV1.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"
#include "support/BackupWriterTestSupport.hpp"

namespace galdrine::writer {

namespace {

using namespace testsupport::BackupWriterTestSupport;
using Damage = testsupport::BackupFileDamage;
using Which = testsupport::BackupMetadataFile;
namespace Harm = testsupport::BackupPackageDamage;

// Entry is what one path of the tree is: a file with its bytes, a directory, or a link.
struct Entry {
  char kind;  // 'f', 'd' or 'l'
  Bytes bytes;
  friend bool operator==(const Entry&, const Entry&) = default;
};

[[nodiscard]] std::map<fs::path, Entry> tree(const fs::path& root) {
  std::map<fs::path, Entry> entries;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (entry.is_symlink()) {
      entries[entry.path()] = {'l', {}};
    } else if (entry.is_directory()) {
      entries[entry.path()] = {'d', {}};
    } else {
      entries[entry.path()] = {'f', fileBytes(entry.path())};
    }
  }
  return entries;
}

// changedPaths lists every path whose entry differs between two trees, or that only one has.
[[nodiscard]] std::set<fs::path> changedPaths(const std::map<fs::path, Entry>& before, const std::map<fs::path, Entry>& after) {
  std::set<fs::path> changed;
  for (const auto& [path, entry] : before) {
    if (!after.contains(path) || after.at(path) != entry) changed.insert(path);
  }
  for (const auto& [path, entry] : after) {
    if (!before.contains(path)) changed.insert(path);
  }
  return changed;
}

struct Written {
  testsupport::TemporaryDirectory directory;
  std::optional<Writer> writer;
  std::optional<BackupWrittenCommit> commit;
  fs::path root;
};

[[nodiscard]] std::unique_ptr<Written> written() {
  auto written = std::make_unique<Written>();
  written->root = written->directory / "Library.galdrine";
  written->writer.emplace(createWithRecoveryKey(written->root));
  auto commit = written->writer->writeCommit(testsupport::BackupSampleLibrary::make({}));
  if (!commit) std::abort();
  written->commit.emplace(std::move(*commit));
  return written;
}

[[nodiscard]] const BackupWrittenResource& chunkedResource(const BackupWrittenCommit& commit) {
  return *std::ranges::find_if(commit.resources, [](const auto& resource) { return resource.partFiles.size() > 1; });
}

TEST(BackupPackageDamage, EachPayloadDamageChangesExactlyTheFileItNames) {
  struct Case {
    Damage damage;
    std::function<void(const fs::path& file, const Bytes& original, const fs::path& root)> expectAfter;
  };
  const Case cases[] = {
      {Damage::remove, [](const fs::path& file, const Bytes&, const fs::path&) { EXPECT_FALSE(fs::exists(fs::symlink_status(file))); }},
      {Damage::truncate, [](const fs::path& file, const Bytes& original, const fs::path&) {
         EXPECT_EQ(fileBytes(file), Bytes(original.begin(), original.end() - 1));
       }},
      {Damage::extend, [](const fs::path& file, const Bytes& original, const fs::path&) {
         Bytes longer = original;
         longer.push_back(0);
         EXPECT_EQ(fileBytes(file), longer);
       }},
      {Damage::alterByte, [](const fs::path& file, const Bytes& original, const fs::path&) {
         Bytes altered = original;
         altered[altered.size() / 2] ^= 0xFF;
         EXPECT_EQ(fileBytes(file), altered);
       }},
      {Damage::replaceBySymbolicLink, [](const fs::path& file, const Bytes& original, const fs::path& root) {
         EXPECT_TRUE(fs::is_symlink(file));
         EXPECT_EQ(fs::read_symlink(file), root / "tmp" / (file.filename().string() + ".moved"));
         EXPECT_EQ(fileBytes(fs::read_symlink(file)), original);
       }},
      {Damage::replaceByDirectory, [](const fs::path& file, const Bytes&, const fs::path&) {
         EXPECT_TRUE(fs::is_directory(fs::symlink_status(file)));
         EXPECT_TRUE(fs::is_empty(file));
       }},
      {Damage::replaceByEmptyFile, [](const fs::path& file, const Bytes&, const fs::path&) {
         EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file)));
         EXPECT_EQ(fs::file_size(file), 0u);
       }},
  };
  for (const Case& test : cases) {
    const auto package = written();
    const auto& resource = chunkedResource(*package->commit);
    const auto before = tree(package->root);
    const Bytes original = fileBytes(resource.partFiles[1]);
    const auto damaged = Harm::damagePayload(*package->commit, resource.identifier, test.damage, 1);
    ASSERT_TRUE(damaged) << static_cast<int>(test.damage);
    EXPECT_EQ(*damaged, resource.partFiles[1]);
    test.expectAfter(*damaged, original, package->root);
    std::set<fs::path> expected{*damaged};
    if (test.damage == Damage::replaceBySymbolicLink) expected.insert(package->root / "tmp" / (damaged->filename().string() + ".moved"));
    EXPECT_EQ(changedPaths(before, tree(package->root)), expected) << static_cast<int>(test.damage);

    // The damaged resource no longer opens; a resource in other files still does.
    const auto read = readBack(*package->writer, package->commit->commit.commit());
    ASSERT_TRUE(read);
    for (const Record& record : read->records) {
      const auto* stored = record.resource();
      if (stored == nullptr) continue;
      const bool hit = stored->identifier() == resource.identifier;
      EXPECT_EQ(payloadOf(*package->writer, read->records, *stored).has_value(), !hit) << static_cast<int>(test.damage);
    }
  }
}

TEST(BackupPackageDamage, AnAlteredMetadataByteNoLongerOpens) {
  const auto package = written();
  const auto& commit = *package->commit;
  const Writer& writer = *package->writer;
  const ByteView packageIdentifier = writer.package().header().packageIdentifier();
  const ByteView domain = writer.libraryDomainIdentifier();
  const ByteView bpmk = writer.backupPackageMasterKey();
  const auto unreadable = [&] { return !readBack(writer, commit.commit.commit()).has_value(); };
  for (const Which which : {Which::snapshot, Which::manifestRoot, Which::manifestSection}) {
    const auto path = Harm::metadataFile(commit, which, 1);
    ASSERT_TRUE(path);
    const Bytes original = fileBytes(*path);
    const auto before = tree(package->root);
    ASSERT_EQ(Harm::alterMetadataByte(commit, which, 1), *path);
    EXPECT_EQ(changedPaths(before, tree(package->root)), std::set<fs::path>{*path});
    EXPECT_TRUE(unreadable()) << static_cast<int>(which);
    testsupport::FileFixtures::writeFile(*path, original);  // put the original bytes back
    EXPECT_FALSE(unreadable());
  }
  ASSERT_TRUE(Harm::alterMetadataByte(commit, Which::commit));
  EXPECT_EQ(format::BackupGraphV1::openDiscoveredCommit(fileBytes(commit.commitFile), commit.commitIdentifier,
                                                        packageIdentifier, domain, bpmk)
                .error(),
            format::BackupGraphV1Error::verificationFailed);
  ASSERT_TRUE(Harm::alterMetadataByte(commit, Which::head));
  EXPECT_EQ(format::BackupGraphV1::openDiscoveredHead(fileBytes(commit.head->file), commit.head->head.head().identifier(),
                                                      packageIdentifier, domain, bpmk)
                .error(),
            format::BackupGraphV1Error::verificationFailed);
  ASSERT_TRUE(Harm::alterMetadataByte(commit, Which::keyEnvelopes));
  EXPECT_FALSE(Writer::openWithRecoveryKey(package->root, kRecoveryKey, settings()));
  EXPECT_EQ(Harm::metadataFile(commit, Which::manifestSection, commit.sectionFiles.size()).error(), platform::FileError{ENOENT});
}

TEST(BackupPackageDamage, StrayFilesAndUndescribedTargets) {
  const auto package = written();
  const auto before = tree(package->root);
  const Bytes bytes = ByteText::bytes("stray");
  const auto stray = Harm::addStrayFile(package->root / "commits", "notes.txt", bytes);
  ASSERT_TRUE(stray);
  EXPECT_EQ(changedPaths(before, tree(package->root)), std::set<fs::path>{*stray});
  EXPECT_EQ(fileBytes(*stray), bytes);
  EXPECT_EQ(Harm::addStrayFile(package->root / "commits", "notes.txt", bytes).error(), platform::FileError{EEXIST});
  EXPECT_EQ(Writer::openWithRecoveryKey(package->root, kRecoveryKey, settings()).error(), Failure(Error::unreadablePackage));

  const Identifier unknown{0x99};
  EXPECT_EQ(Harm::damagePayload(*package->commit, unknown, Damage::remove).error(), platform::FileError{ENOENT});
  const auto& resource = chunkedResource(*package->commit);
  EXPECT_EQ(Harm::damagePayload(*package->commit, resource.identifier, Damage::remove, resource.partFiles.size()).error(),
            platform::FileError{ENOENT});
  EXPECT_EQ(changedPaths(before, tree(package->root)), std::set<fs::path>{*stray});
}

}  // namespace

}  // namespace galdrine::writer
