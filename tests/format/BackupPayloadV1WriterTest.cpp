#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <cerrno>
#include <functional>
#include <optional>

#include "format/payload/BackupPayloadV1.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"
#include "BackupPayloadV1TestSupport.hpp"

namespace galdrine::format {

namespace {

using namespace BackupPayloadV1TestSupport;
using Point = BackupPayloadFaultPoint;

constexpr std::array<Point, 6> kAllPoints{Point::afterStagingCreation,     Point::afterPayloadWrite,
                                          Point::afterIndexWrite,          Point::afterStagingSync,
                                          Point::afterStagingVerification, Point::afterFinalRename};

[[nodiscard]] std::unexpected<Failure> fails(Error error) { return std::unexpected(Failure(error)); }

TEST(BackupPayloadV1, FileNamesAreLowerCaseHexWithTheirExtension) {
  Bytes id = identifier(0xA0);
  EXPECT_EQ(Payload::packSegmentFileName(id), "a0a7aeb5bcc3cad1d8dfe6edf4fb0209.pack");
  EXPECT_EQ(Payload::resourceChunkFileName(id), "a0a7aeb5bcc3cad1d8dfe6edf4fb0209.chunk");
  for (const std::size_t byteCount : {0u, 15u, 17u}) {
    EXPECT_EQ(Payload::packSegmentFileName(identifier(1, byteCount)), std::unexpected(Error::invalidIdentifier()));
    EXPECT_EQ(Payload::resourceChunkFileName(identifier(1, byteCount)), std::unexpected(Error::invalidIdentifier()));
  }
  const auto first = Payload::generateRandomKey();
  const auto second = Payload::generateRandomKey();
  ASSERT_TRUE(first && second);
  EXPECT_EQ(first->size(), 32u);
  EXPECT_NE(*first, *second);
}

TEST(BackupPayloadV1, SegmentRoundTripLeavesOnlyTheFinalFile) {
  const testsupport::TemporaryDirectory directory;
  const std::size_t descriptorsBefore = testsupport::openDescriptorCount();
  std::vector<Input> inputs = entries(3, 100);
  inputs[1].plaintext.clear();  // an empty resource is still an entry
  const Bytes segment = identifier(0x40);
  const fs::path path = directory / segmentName(segment);

  const auto written = Payload::writePackSegment(path, kPackage, kLibrary, segment, kKey, inputs);
  ASSERT_TRUE(written) << ::testing::PrintToString(written.error());
  EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{segmentName(segment)});
  EXPECT_EQ(written->identifier, segment);
  EXPECT_EQ(written->totalPlaintextByteCount, 200u);
  EXPECT_EQ(fs::file_size(path), 48 + written->entryAreaByteCount + written->indexFrameByteCount);
  ASSERT_EQ(written->entries.size(), 3u);
  for (std::size_t ordinal = 0; ordinal < inputs.size(); ++ordinal) {
    EXPECT_EQ(written->entries[ordinal].ordinal, ordinal);
    EXPECT_EQ(Payload::openPackEntry(inputs[ordinal].identifier, path, kPackage, kLibrary, kKey),
              inputs[ordinal].plaintext);
  }
  EXPECT_EQ(Payload::inspectPackSegment(path, kPackage, kLibrary, kKey), *written);
  EXPECT_EQ(Payload::verifyPackSegment(path, kPackage, kLibrary, kKey), *written);
  EXPECT_EQ(Payload::openPackEntry(identifier(0x77), path, kPackage, kLibrary, kKey),
            std::unexpected(Error::entryNotFound()));
  EXPECT_EQ(testsupport::openDescriptorCount(), descriptorsBefore);
}

// One segment at both ceilings at once: 32 entries holding exactly 64 MiB.
TEST(BackupPayloadV1, LargestSegmentWritesAndOneMoreEntryOrByteIsRefused) {
  const testsupport::TemporaryDirectory directory;
  std::vector<Input> inputs = entries(32, 2 * 1024 * 1024);
  const Bytes segment = identifier(0x41);
  const fs::path path = directory / segmentName(segment);

  const auto written = Payload::writePackSegment(path, kPackage, kLibrary, segment, kKey, inputs);
  ASSERT_TRUE(written) << ::testing::PrintToString(written.error());
  EXPECT_EQ(written->totalPlaintextByteCount, 67108864u);
  for (const std::size_t ordinal : {0u, 17u, 31u}) {
    EXPECT_EQ(Payload::openPackEntry(inputs[ordinal].identifier, path, kPackage, kLibrary, kKey),
              inputs[ordinal].plaintext);
  }

  const fs::path otherPath = directory / segmentName(identifier(0x42));
  inputs.back().plaintext.push_back(0);
  EXPECT_EQ(Payload::writePackSegment(otherPath, kPackage, kLibrary, identifier(0x42), kKey, inputs),
            fails(Error::segmentLimitExceeded()));
  inputs.back().plaintext.pop_back();
  inputs.push_back({identifier(0x99), {1}});
  EXPECT_EQ(Payload::writePackSegment(otherPath, kPackage, kLibrary, identifier(0x42), kKey, inputs),
            fails(Error::invalidEntrySet()));
  EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{segmentName(segment)});
}

[[nodiscard]] std::string upperCase(std::string text) {
  std::ranges::transform(text, text.begin(), [](char character) { return static_cast<char>(std::toupper(character)); });
  return text;
}

struct SegmentRequest {
  std::string_view name;
  Bytes key = kKey;
  Bytes package = kPackage;
  Bytes library = kLibrary;
  Bytes segment = identifier(0x40);
  std::vector<Input> inputs = entries(2, 10);
  std::string destinationName = segmentName(identifier(0x40));
  Error expected;
};

// Rows with several faults pin the order of the checks; none of them may create anything.
TEST(BackupPayloadV1, SegmentWriterRefusesBadRequestsInOrderBeforeCreatingAnything) {
  std::vector<Input> duplicated = entries(2, 10);
  duplicated[1].identifier = duplicated[0].identifier;
  std::vector<Input> shortIdentifier = entries(2, 10);
  shortIdentifier[1].identifier.pop_back();
  std::vector<Input> oversized = entries(2, 10);
  oversized[1].plaintext.resize(16777217);
  const std::vector<SegmentRequest> rows{
      {.name = "short key and wrong name",
       .key = filled(31, 1),
       .destinationName = "x.pack",
       .expected = Error::invalidKey()},
      {.name = "short package", .package = filled(15, 1), .segment = {}, .expected = Error::invalidIdentifier()},
      {.name = "long library domain", .library = filled(17, 1), .expected = Error::invalidIdentifier()},
      {.name = "short segment identifier", .segment = filled(15, 1), .expected = Error::invalidEntrySet()},
      {.name = "no entries", .inputs = {}, .expected = Error::invalidEntrySet()},
      {.name = "duplicate entries", .inputs = duplicated, .expected = Error::invalidEntrySet()},
      {.name = "short entry identifier",
       .inputs = shortIdentifier,
       .destinationName = "x",
       .expected = Error::invalidEntrySet()},
      {.name = "plaintext over 16 MiB",
       .inputs = oversized,
       .destinationName = "x",
       .expected = Error::plaintextLimitExceeded()},
      {.name = "another segment's name",
       .destinationName = segmentName(identifier(0x41)),
       .expected = Error::invalidArtifactName()},
      {.name = "upper-case name",
       .destinationName = upperCase(segmentName(identifier(0x40))),
       .expected = Error::invalidArtifactName()},
      {.name = "wrong name under a missing parent",
       .destinationName = "missing/x.pack",
       .expected = Error::invalidArtifactName()},
      {.name = "missing parent",
       .destinationName = "missing/" + segmentName(identifier(0x40)),
       .expected = Error::invalidParentDirectory()},
      {.name = "parent is a link",
       .destinationName = "link/" + segmentName(identifier(0x40)),
       .expected = Error::invalidParentDirectory()},
      {.name = "parent is a file",
       .destinationName = "file/" + segmentName(identifier(0x40)),
       .expected = Error::invalidParentDirectory()},
  };
  for (const SegmentRequest& row : rows) {
    const testsupport::TemporaryDirectory directory;
    testsupport::FileFixtures::makeDirectory(directory / "real");
    testsupport::FileFixtures::makeSymbolicLink(directory / "real", directory / "link");
    testsupport::FileFixtures::writeFile(directory / "file", "x");
    const auto before = namesIn(directory.path());
    EXPECT_EQ(Payload::writePackSegment(directory / row.destinationName, row.package, row.library, row.segment, row.key,
                                        row.inputs),
              fails(row.expected))
        << row.name;
    EXPECT_EQ(namesIn(directory.path()), before) << row.name;
    EXPECT_TRUE(namesIn(directory / "real").empty()) << row.name;
  }
}

TEST(BackupPayloadV1, ChunkWriterRefusesBadRequestsInOrder) {
  const testsupport::TemporaryDirectory directory;
  const Bytes chunk = identifier(0x50);
  const fs::path path = directory / chunkName(chunk);
  const Bytes plaintext = pattern(10, 1);
  const Bytes oversized(16777217, 0);
  EXPECT_EQ(Payload::writeResourceChunk(directory / "x", kPackage, kLibrary, chunk, 0, filled(33, 0), plaintext),
            fails(Error::invalidKey()));
  EXPECT_EQ(Payload::writeResourceChunk(directory / "x", kPackage, filled(0, 0), chunk, 0, kKey, plaintext),
            fails(Error::invalidIdentifier()));
  EXPECT_EQ(Payload::writeResourceChunk(directory / "x", kPackage, kLibrary, filled(15, 0), 0, kKey, {}),
            fails(Error::invalidIdentifier()));
  EXPECT_EQ(Payload::writeResourceChunk(directory / "x", kPackage, kLibrary, chunk, 0, kKey, {}),
            fails(Error::plaintextLimitExceeded()));
  EXPECT_EQ(Payload::writeResourceChunk(directory / "x", kPackage, kLibrary, chunk, 0, kKey, oversized),
            fails(Error::plaintextLimitExceeded()));
  EXPECT_EQ(Payload::writeResourceChunk(directory / segmentName(chunk), kPackage, kLibrary, chunk, 0, kKey, plaintext),
            fails(Error::invalidArtifactName()));
  EXPECT_EQ(
      Payload::writeResourceChunk(directory / "no" / chunkName(chunk), kPackage, kLibrary, chunk, 0, kKey, plaintext),
      fails(Error::invalidParentDirectory()));
  EXPECT_TRUE(namesIn(directory.path()).empty());
}

using Writer =
    std::function<std::expected<void, Failure>(const fs::path& directory, const BackupPayloadFaultHook&)>;

[[nodiscard]] std::expected<void, Failure> writeSegment(const fs::path& directory,
                                                        const BackupPayloadFaultHook& hook) {
  const Bytes segment = identifier(0x40);
  const auto written = Payload::writePackSegment(directory / segmentName(segment), kPackage, kLibrary, segment, kKey,
                                                 entries(2, 10), hook);
  if (!written) return std::unexpected(written.error());
  return {};
}

[[nodiscard]] std::expected<void, Failure> writeChunk(const fs::path& directory,
                                                      const BackupPayloadFaultHook& hook) {
  const Bytes chunk = identifier(0x50);
  const auto written = Payload::writeResourceChunk(directory / chunkName(chunk), kPackage, kLibrary, chunk, 3, kKey,
                                                   pattern(10, 1), hook);
  if (!written) return std::unexpected(written.error());
  return {};
}

// Each writer passes its points in order; stopped at any of them, it leaves no staging file,
// and a final file only once the move has happened.
TEST(BackupPayloadV1, FaultPointsComeInOrderAndAStopLeavesNoStagingFile) {
  const std::size_t descriptorsBefore = testsupport::openDescriptorCount();
  const std::vector<Point> chunkPoints{Point::afterStagingCreation, Point::afterPayloadWrite, Point::afterStagingSync,
                                       Point::afterStagingVerification, Point::afterFinalRename};
  const std::vector<std::pair<Writer, std::vector<Point>>> writers{
      {writeSegment, std::vector<Point>(kAllPoints.begin(), kAllPoints.end())}, {writeChunk, chunkPoints}};
  for (const auto& [write, expectedPoints] : writers) {
    const testsupport::TemporaryDirectory directory;
    std::vector<Point> passed;
    ASSERT_TRUE(write(directory.path(), [&](Point point) {
      passed.push_back(point);
      return false;
    }));
    EXPECT_EQ(passed, expectedPoints);
    for (const Point point : expectedPoints) {
      const testsupport::TemporaryDirectory stopped;
      EXPECT_EQ(write(stopped.path(), [&](Point reached) { return reached == point; }),
                fails(Error::injectedFault(point)));
      EXPECT_FALSE(holdsStagingFile(stopped.path())) << static_cast<int>(point);
      EXPECT_EQ(namesIn(stopped.path()).size(), point == Point::afterFinalRename ? 1u : 0u) << static_cast<int>(point);
    }
  }
  EXPECT_EQ(testsupport::openDescriptorCount(), descriptorsBefore);
}

TEST(BackupPayloadV1, WritersRefuseAnExistingDestinationAndKeepIt) {
  for (const Writer& write : {Writer(writeSegment), Writer(writeChunk)}) {
    const testsupport::TemporaryDirectory directory;
    ASSERT_TRUE(write(directory.path(), {}));
    const auto name = namesIn(directory.path()).front();
    const Bytes original = testsupport::FileFixtures::readFile(directory / name);
    EXPECT_EQ(write(directory.path(), {}), fails(Error::destinationAlreadyExists()));
    EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{name});
    EXPECT_EQ(testsupport::FileFixtures::readFile(directory / name), original);

    const testsupport::TemporaryDirectory dangling;  // a link to nothing is something standing there
    testsupport::FileFixtures::makeSymbolicLink(dangling / "nowhere", dangling / name);
    EXPECT_EQ(write(dangling.path(), {}), fails(Error::destinationAlreadyExists()));
    EXPECT_EQ(namesIn(dangling.path()), std::vector<std::string>{name});
  }
}

TEST(BackupPayloadV1, AFailedWriteGivesTheSystemErrorAndRemovesItsStagingFile) {
  for (const Writer& write : {Writer(writeSegment), Writer(writeChunk)}) {
    const testsupport::TemporaryDirectory directory;
    {
      const testsupport::FileFixtures::LimitedFileSize limit(64);
      EXPECT_EQ(write(directory.path(), {}), std::unexpected(Failure(platform::FileError{EFBIG})));
    }
    EXPECT_TRUE(namesIn(directory.path()).empty());
  }
}

TEST(BackupPayloadV1, ChunkRoundTripAndItsOrdinalIsAuthenticated) {
  const testsupport::TemporaryDirectory directory;
  const Bytes chunk = identifier(0x50);
  const fs::path path = directory / chunkName(chunk);
  const Bytes plaintext = pattern(1000, 9);
  const auto written = Payload::writeResourceChunk(path, kPackage, kLibrary, chunk, 7, kKey, plaintext);
  ASSERT_TRUE(written) << ::testing::PrintToString(written.error());
  EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{chunkName(chunk)});
  EXPECT_EQ(written->frameByteCount, fs::file_size(path));
  EXPECT_EQ(written->plaintextByteCount, 1000u);
  EXPECT_EQ(written->plaintextSHA256, platform::SHA256::digest(plaintext));
  EXPECT_EQ(written->frameSHA256, platform::SHA256::digest(testsupport::FileFixtures::readFile(path)));
  EXPECT_EQ(Payload::openResourceChunk(path, *written, kPackage, kLibrary, kKey), plaintext);

  BackupResourceChunkDescriptorV1 otherOrdinal = *written;
  otherOrdinal.ordinal = 8;
  EXPECT_EQ(Payload::openResourceChunk(path, otherOrdinal, kPackage, kLibrary, kKey),
            std::unexpected(Error::verificationFailed()));
}

}  // namespace

}  // namespace galdrine::format
