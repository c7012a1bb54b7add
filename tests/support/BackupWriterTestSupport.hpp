#pragma once
// Helpers of the writer's tests: reproducible settings with a layout small enough that a few
// kilobytes make several segments, chunks and sections, and an independent read-back of what
// was written, through the format's own readers only (never through the writer's code).

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "writer/BackupPackageWriter.hpp"
#include "support/BackupSampleLibrary.hpp"
#include "format/graph/BackupCommitGraph.hpp"
#include "format/graph/BackupGraphV1.hpp"
#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "platform/Files.hpp"

namespace galdrine::testsupport {

namespace BackupWriterTestSupport {

namespace fs = std::filesystem;
using Writer = writer::BackupPackageWriter;
using Failure = writer::BackupWriterFailure;
using Error = writer::BackupWriterError;
using Record = format::BackupManifestRecordV1;
using Identifier = format::BackupIdentifierV1;

inline const Bytes kRecoveryKey = [] {
  Bytes key(32);
  for (std::size_t index = 0; index < key.size(); ++index) key[index] = static_cast<std::uint8_t>(0xA0 + index);
  return key;
}();

// A layout in which 3,000 bytes are the largest packed resource, a segment holds at most three
// entries or 8,000 bytes, a chunk is 2,048 bytes and a section holds at most three records.
[[nodiscard]] inline writer::BackupPayloadLayout smallLayout() { return {3000, 8000, 3, 2048, 3}; }

[[nodiscard]] inline writer::BackupWriterSettings settings(std::uint64_t seed = 7) {
  writer::BackupWriterSettings settings;
  settings.sources = writer::BackupWriterSources::deterministic(seed, 1700000000000);
  settings.layout = smallLayout();
  settings.concurrentPayloadWriterCount = 2;  // so that every test also runs the writers side by side
  return settings;
}

[[nodiscard]] inline Writer createWithRecoveryKey(const fs::path& path, std::uint64_t seed = 7) {
  auto writer = Writer::create(path, {std::nullopt, ByteView(kRecoveryKey)}, settings(seed));
  if (!writer) {
    ADD_FAILURE() << "create failed: " << writer.error().index();
    std::abort();
  }
  return std::move(*writer);
}

[[nodiscard]] inline Bytes contentOf(const writer::BackupContentSource& source) {
  auto reader = writer::BackupContentReader::open(source);
  if (!reader) return {};
  Bytes content(static_cast<std::size_t>(reader->byteCount()));
  if (!reader->read(content) || !reader->finish()) return {};
  return content;
}

// expectedContents maps every resource of `library` to the bytes its content gives.
[[nodiscard]] inline std::map<Identifier, Bytes> expectedContents(const writer::BackupLibrarySnapshot& library) {
  std::map<Identifier, Bytes> contents;
  for (const auto& item : library.items) {
    for (const auto& resource : item.resources) contents[resource.identifier] = contentOf(resource.content);
  }
  return contents;
}

[[nodiscard]] inline Bytes fileBytes(const fs::path& file) {
  auto bytes = platform::Files::readBoundedRegularFile(file, 0, 256 * 1024 * 1024);
  return bytes ? std::move(*bytes) : Bytes{};
}

// ReadBack opens one commit's snapshot, manifest root and sections from disk against the
// commit's references, and gives each resource's plaintext back from its payload files.
struct ReadBack {
  format::BackupSnapshotV1 snapshot;
  format::BackupManifestRootV1 root;
  std::vector<format::BackupManifestSectionV1> sections;
  std::vector<Record> records;
};

[[nodiscard]] inline std::optional<ReadBack> readBack(const Writer& writer, const format::BackupCommitV1& commit) {
  const auto& package = writer.package();
  const ByteView packageIdentifier = package.header().packageIdentifier();
  const ByteView domain = writer.libraryDomainIdentifier();
  const ByteView bpmk = writer.backupPackageMasterKey();
  const fs::path root = package.packagePath();
  auto snapshot = format::BackupGraphV1::openSnapshot(
      fileBytes(root / "snapshots" / *format::BackupGraphV1::snapshotFileName(commit.snapshot().identifier())),
      commit.snapshot(), packageIdentifier, domain, bpmk);
  if (!snapshot) return std::nullopt;
  auto manifestRoot = format::BackupGraphV1::openManifestRoot(
      fileBytes(root / "manifests" / *format::BackupGraphV1::manifestFileName(snapshot->manifest().identifier())),
      snapshot->manifest(), packageIdentifier, domain, bpmk);
  if (!manifestRoot) return std::nullopt;
  ReadBack read{std::move(*snapshot), std::move(*manifestRoot), {}, {}};
  for (const auto& reference : read.root.sections()) {
    auto section = format::BackupGraphV1::openManifestSection(
        fileBytes(root / "manifests" / *format::BackupGraphV1::manifestFileName(reference.artifact().identifier())),
        reference, commit.manifestIdentifier(), packageIdentifier, domain, bpmk);
    if (!section) return std::nullopt;
    auto records = format::BackupManifestRecordCodecV1::records(*section);
    if (!records) return std::nullopt;
    std::ranges::move(*records, std::back_inserter(read.records));
    read.sections.push_back(std::move(*section));
  }
  return read;
}

// payloadOf opens the payload of `resource` with the key record the records hold for it.
[[nodiscard]] inline std::optional<Bytes> payloadOf(const Writer& writer, std::span<const Record> records,
                                                    const format::BackupMediaResourceRecordV1& resource) {
  const ByteView packageIdentifier = writer.package().header().packageIdentifier();
  const ByteView domain = writer.libraryDomainIdentifier();
  const auto key = std::ranges::find_if(records, [&](const Record& record) {
    return record.payloadKey() != nullptr && record.payloadKey()->identifier() == resource.payloadKeyIdentifier();
  });
  if (key == records.end()) return std::nullopt;
  auto payloadKey = format::BackupManifestRecordCodecV1::unwrapPayloadKey(*key->payloadKey(), packageIdentifier, domain,
                                                                         writer.backupPackageMasterKey());
  if (!payloadKey) return std::nullopt;
  const fs::path root = writer.package().packagePath();
  Bytes plaintext;
  for (const auto& part : resource.parts()) {
    std::expected<Bytes, format::BackupPayloadV1Error> piece = std::unexpected(format::BackupPayloadV1Error::invalidArtifact());
    if (part.container() == format::BackupPayloadContainerKindV1::pack) {
      piece = format::BackupPayloadV1::openPackEntry(
          resource.identifier(), root / "packs" / *format::BackupPayloadV1::packSegmentFileName(part.artifactIdentifier()),
          packageIdentifier, domain, *payloadKey);
    } else {
      const format::BackupResourceChunkDescriptorV1 descriptor{
          Bytes(part.artifactIdentifier().begin(), part.artifactIdentifier().end()), part.artifactOrdinal(),
          part.artifactFileByteCount(), part.plaintextByteCount(), part.plaintextSHA256(), part.artifactFileSHA256()};
      piece = format::BackupPayloadV1::openResourceChunk(
          root / "objects" / *format::BackupPayloadV1::resourceChunkFileName(part.artifactIdentifier()), descriptor,
          packageIdentifier, domain, *payloadKey);
    }
    if (!piece) return std::nullopt;
    plaintext.insert(plaintext.end(), piece->begin(), piece->end());
  }
  return plaintext;
}

// scanFromDisk opens every file in commits/ and heads/ as a reader discovers it and scans the
// graph they make; any file that does not open fails the running test.
[[nodiscard]] inline std::optional<format::BackupCommitGraphScan> scanFromDisk(const Writer& writer) {
  const fs::path root = writer.package().packagePath();
  const ByteView packageIdentifier = writer.package().header().packageIdentifier();
  std::vector<format::AuthenticatedBackupCommit> commits;
  std::vector<format::AuthenticatedBackupHead> heads;
  for (const auto& entry : fs::directory_iterator(root / "commits")) {
    const auto identifier = ByteText::parseLowerHex(entry.path().stem().string());
    auto commit = format::BackupGraphV1::openDiscoveredCommit(fileBytes(entry.path()), identifier.value_or(Bytes{}),
                                                              packageIdentifier, writer.libraryDomainIdentifier(),
                                                              writer.backupPackageMasterKey());
    if (!commit) {
      ADD_FAILURE() << "commit does not open: " << entry.path();
      return std::nullopt;
    }
    commits.push_back(std::move(*commit));
  }
  for (const auto& entry : fs::directory_iterator(root / "heads")) {
    const auto identifier = ByteText::parseLowerHex(entry.path().stem().string());
    auto head = format::BackupGraphV1::openDiscoveredHead(fileBytes(entry.path()), identifier.value_or(Bytes{}),
                                                          packageIdentifier, writer.libraryDomainIdentifier(),
                                                          writer.backupPackageMasterKey());
    if (!head) {
      ADD_FAILURE() << "head does not open: " << entry.path();
      return std::nullopt;
    }
    heads.push_back(std::move(*head));
  }
  auto scan = format::BackupCommitGraph::scan(commits, heads);
  if (!scan) return std::nullopt;
  return std::move(*scan);
}

// expectSoundManifest reads a commit's manifest back, validates it, and compares the summary
// with the snapshot's and the commit's fields.
inline void expectSoundManifest(const Writer& writer, const format::BackupCommitV1& commit) {
  const auto read = readBack(writer, commit);
  ASSERT_TRUE(read);
  const auto summary = format::BackupManifestRecordCodecV1::validateAndSummarize(
      read->sections, writer.package().header().packageIdentifier(), writer.libraryDomainIdentifier(),
      writer.backupPackageMasterKey());
  ASSERT_TRUE(summary);
  EXPECT_EQ(summary->counts, read->snapshot.counts());
  EXPECT_EQ(summary->logicalPlaintextByteCount, read->snapshot.logicalPlaintextByteCount());
  EXPECT_EQ(summary->encryptedPayloadByteCount, read->snapshot.encryptedPayloadByteCount());
  EXPECT_EQ(summary->requiredPayloadSetSHA256, read->snapshot.requiredPayloadSetSHA256());
  EXPECT_EQ(summary->requiredPayloadSetSHA256, commit.requiredPayloadSetSHA256());
  EXPECT_EQ(read->snapshot.createdAtUTCMilliseconds(), commit.createdAtUTCMilliseconds());
  EXPECT_EQ(read->root.createdAtUTCMilliseconds(), commit.createdAtUTCMilliseconds());
}

// namesIn lists a directory's entry names, sorted.
[[nodiscard]] inline std::vector<std::string> namesIn(const fs::path& directory) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory)) names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  return names;
}

[[nodiscard]] inline std::set<fs::path> filesUnder(const fs::path& directory) {
  std::set<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    if (!entry.is_directory()) files.insert(entry.path());
  }
  return files;
}

}  // namespace BackupWriterTestSupport

}  // namespace galdrine::testsupport
