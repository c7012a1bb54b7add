#pragma once
// Helpers of the suites that write packages: reproducible writer settings with a layout small
// enough that a few kilobytes make several segments, chunks and sections, and a package read
// back by the recovery engine (never through the writer's code). Packages are unlocked with
// the recovery key, since each passphrase envelope costs an Argon2id run.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "format/graph/BackupCommitGraph.hpp"
#include "format/graph/BackupGraphV1.hpp"
#include "format/manifest/BackupManifestRecordCodecV1.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "platform/Files.hpp"
#include "recovery/inspection/RecoveryPackageInspector.hpp"
#include "support/BackupSampleLibrary.hpp"
#include "writer/BackupPackageWriter.hpp"

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

// reproducibleSources draws the sample stream of `seed` and reads a clock that gives
// 1,700,000,000,000 first and one second more at each later reading. Copies share one position,
// as copies of the system sources share the system. Its keys are predictable: tests only.
[[nodiscard]] inline writer::BackupWriterSources reproducibleSources(std::uint64_t seed) {
  const auto drawn = std::make_shared<std::uint64_t>(0);
  const auto readings = std::make_shared<std::int64_t>(0);
  return {[seed, drawn](std::span<std::uint8_t> bytes) {
            BackupSampleLibrary::fill(seed, *drawn, bytes);
            *drawn += bytes.size();
            return std::int32_t{0};
          },
          [readings] { return 1700000000000 + 1000 * (*readings)++; }};
}

// settings gives reproducible sources and a layout in which 3,000 bytes are the largest packed
// resource, a segment holds at most three entries or 8,000 bytes, a chunk is 2,048 bytes and a
// section holds at most three records. Two payload writers run side by side in every test.
[[nodiscard]] inline writer::BackupWriterSettings settings(std::uint64_t seed = 7) {
  return {reproducibleSources(seed), {3000, 8000, 3, 2048, 3}, 2};
}

// createWithRecoveryKey makes a package that kRecoveryKey unlocks; a refusal fails the running
// test with an exception, since there is no writer to give back.
[[nodiscard]] inline Writer createWithRecoveryKey(const fs::path& path, std::uint64_t seed = 7) {
  auto writer = Writer::create(path, {std::nullopt, ByteView(kRecoveryKey)}, settings(seed));
  if (!writer) throw std::runtime_error("create failed: " + std::to_string(writer.error().index()));
  return std::move(*writer);
}

// expectedContents maps every resource of `library` to the bytes its content gives.
[[nodiscard]] inline std::map<Identifier, Bytes> expectedContents(const writer::BackupLibrarySnapshot& library) {
  std::map<Identifier, Bytes> contents;
  for (const auto& item : library.items) {
    for (const auto& resource : item.resources) {
      auto reader = writer::BackupContentReader::open(resource.content);
      Bytes& content = contents[resource.identifier];
      if (!reader) continue;
      content.resize(static_cast<std::size_t>(reader->byteCount()));
      if (!reader->read(content) || !reader->finish()) content.clear();
    }
  }
  return contents;
}

// filesUnder lists every entry below `directory` that is not a directory.
[[nodiscard]] inline std::set<fs::path> filesUnder(const fs::path& directory) {
  std::set<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    if (!entry.is_directory()) files.insert(entry.path());
  }
  return files;
}

// inspected is the recovery engine's verdict on the package `writer` wrote: every commit, head,
// snapshot, manifest root and section authenticated and checked against one another (the
// manifest by its validator), and every required payload file hashed. A refusal fails the
// running test and gives nothing.
[[nodiscard]] inline std::optional<recovery::RecoveryPackageInspection> inspected(const Writer& writer) {
  auto inspection = recovery::inspectWithRecoveryKey(writer.package().packagePath(), kRecoveryKey);
  if (!inspection) ADD_FAILURE() << "inspection refused: " << static_cast<int>(inspection.error());
  return inspection ? std::optional(std::move(*inspection)) : std::nullopt;
}

}  // namespace BackupWriterTestSupport

}  // namespace galdrine::testsupport
