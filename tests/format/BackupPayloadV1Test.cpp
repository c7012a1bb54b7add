// Pack segments and resource chunks: written, read back, refused when the request or the file
// is wrong, and stopped at every fault point without leaving a staging file behind.

#include "format/payload/BackupPayloadV1.hpp"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <cerrno>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/payload/BackupPackContainerHeaderV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "support/FileFixtures.hpp"
#include "support/ManifestTestRecords.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::format {

namespace {

namespace fs = std::filesystem;
namespace Payload = BackupPayloadV1;
using Error = BackupPayloadV1Error;
using Failure = BackupPayloadV1Failure;
using Input = BackupPackEntryInput;
using Point = BackupPayloadFaultPoint;
using Value = CBORValue;
using testsupport::FileFixtures::readFile;
using testsupport::FileFixtures::writeFile;
using testsupport::ManifestTestRecords::made;

const Bytes kPackage(16, 0x11);
const Bytes kLibrary(16, 0x22);
const Bytes kKey(32, 0x33);
constexpr std::string_view kLowerUUID = "0f1e2d3c-4b5a-4978-8695-a4b3c2d1e0ff";

Bytes pattern(std::size_t byteCount, std::uint8_t seed, std::size_t step = 31) {
  Bytes bytes(byteCount);
  for (std::size_t index = 0; index < byteCount; ++index) bytes[index] = static_cast<std::uint8_t>(seed + step * index);
  return bytes;
}
Bytes identifier(std::uint8_t seed, std::size_t byteCount = 16) { return pattern(byteCount, seed, 7); }

// entries gives `count` entries with identifiers 1, 2, ... and plaintexts of `byteCount` bytes.
std::vector<Input> entries(std::size_t count, std::size_t byteCount) {
  std::vector<Input> inputs;
  for (std::size_t index = 1; index <= count; ++index)
    inputs.push_back(
        {identifier(static_cast<std::uint8_t>(index)), pattern(byteCount, static_cast<std::uint8_t>(index))});
  return inputs;
}

std::string segmentName(ByteView segment) { return Payload::packSegmentFileName(segment).value_or("unnamed"); }
std::string chunkName(ByteView chunk) { return Payload::resourceChunkFileName(chunk).value_or("unnamed"); }

std::vector<std::string> namesIn(const fs::path& directory) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory)) names.push_back(entry.path().filename().native());
  std::ranges::sort(names);
  return names;
}

// replaceFile removes the file before writing it anew: truncating a file in place makes some
// file systems flush it on close, which costs milliseconds in a loop of thousands.
void replaceFile(const fs::path& path, ByteView bytes) {
  fs::remove(path);
  writeFile(path, bytes);
}

std::unexpected<Error> fails(Error error) { return std::unexpected(error); }
std::unexpected<Failure> writeFails(Error error) { return std::unexpected(Failure(error)); }

// ---- Writing ----

// Rows with several faults pin the order of the checks; none of them may create anything.
TEST(BackupPayloadV1, WritersRefuseBadRequestsInOrderBeforeCreatingAnything) {
  std::vector<Input> duplicated = entries(2, 10);
  duplicated[1].identifier = duplicated[0].identifier;
  std::vector<Input> oversized = entries(2, 10);
  oversized[1].plaintext.resize(16777217);
  std::vector<Input> ceiling = entries(32, 2 * 1024 * 1024);  // 32 entries holding 64 MiB
  ceiling.back().plaintext.push_back(0);
  const std::string name = segmentName(identifier(0x40));
  const struct {
    std::string_view name;
    Bytes key = kKey, package = kPackage, library = kLibrary, segment = identifier(0x40);
    std::vector<Input> inputs = entries(2, 10);
    std::string destination;
    Error expected;
  } rows[] = {
      {.name = "short key and wrong name",
       .key = Bytes(31, 1),
       .destination = "x.pack",
       .expected = Error::invalidKey()},
      {.name = "short package",
       .package = Bytes(15, 1),
       .segment = {},
       .destination = name,
       .expected = Error::invalidIdentifier()},
      {.name = "duplicate entries", .inputs = duplicated, .destination = "x", .expected = Error::invalidEntrySet()},
      {.name = "plaintext over 16 MiB",
       .inputs = oversized,
       .destination = "x",
       .expected = Error::plaintextLimitExceeded()},
      {.name = "one byte over 64 MiB",
       .inputs = ceiling,
       .destination = "x",
       .expected = Error::segmentLimitExceeded()},
      {.name = "33 entries", .inputs = entries(33, 1), .destination = "x", .expected = Error::invalidEntrySet()},
      {.name = "another segment's name",
       .destination = segmentName(identifier(0x41)),
       .expected = Error::invalidArtifactName()},
      {.name = "missing parent", .destination = "missing/" + name, .expected = Error::invalidParentDirectory()},
      {.name = "parent is a link", .destination = "link/" + name, .expected = Error::invalidParentDirectory()},
  };
  const testsupport::TemporaryDirectory directory;
  testsupport::FileFixtures::makeDirectory(directory / "real");
  testsupport::FileFixtures::makeSymbolicLink(directory / "real", directory / "link");
  const auto before = namesIn(directory.path());
  for (const auto& row : rows) {
    EXPECT_EQ(Payload::writePackSegment(directory / row.destination, row.package, row.library, row.segment, row.key,
                                        row.inputs),
              writeFails(row.expected))
        << row.name;
  }
  const Bytes chunk = identifier(0x50);
  const auto chunkError = [&](const fs::path& path, ByteView library, ByteView chunkIdentifier, ByteView key,
                              ByteView plaintext) {
    return Payload::writeResourceChunk(path, kPackage, library, chunkIdentifier, 0, key, plaintext);
  };
  EXPECT_EQ(chunkError(directory / "x", kLibrary, chunk, Bytes(33, 0), Bytes{}), writeFails(Error::invalidKey()));
  EXPECT_EQ(chunkError(directory / "x", {}, chunk, kKey, Bytes{}), writeFails(Error::invalidIdentifier()));
  EXPECT_EQ(chunkError(directory / "x", kLibrary, chunk, kKey, Bytes(16777217, 0)),
            writeFails(Error::plaintextLimitExceeded()));
  EXPECT_EQ(chunkError(directory / segmentName(chunk), kLibrary, chunk, kKey, Bytes{1}),
            writeFails(Error::invalidArtifactName()));
  EXPECT_EQ(chunkError(directory / "no" / chunkName(chunk), kLibrary, chunk, kKey, Bytes{1}),
            writeFails(Error::invalidParentDirectory()));
  EXPECT_EQ(namesIn(directory.path()), before);
  EXPECT_TRUE(namesIn(directory / "real").empty());
}

// A Writer writes one file into `directory` and gives its failure, or nothing.
using Writer = std::function<std::optional<Failure>(const fs::path& directory, const BackupPayloadFaultHook&)>;

std::optional<Failure> writeSegment(const fs::path& directory, const BackupPayloadFaultHook& hook) {
  return testsupport::ManifestTestRecords::errorOf(Payload::writePackSegment(
      directory / segmentName(identifier(0x40)), kPackage, kLibrary, identifier(0x40), kKey, entries(2, 10), hook));
}

std::optional<Failure> writeChunk(const fs::path& directory, const BackupPayloadFaultHook& hook) {
  return testsupport::ManifestTestRecords::errorOf(Payload::writeResourceChunk(
      directory / chunkName(identifier(0x50)), kPackage, kLibrary, identifier(0x50), 3, kKey, pattern(10, 1), hook));
}

// Each writer passes its points in order; stopped at any of them, it leaves no staging file,
// and a final file only once the move has happened.
TEST(BackupPayloadV1, FaultPointsComeInOrderAndAStopLeavesNoStagingFile) {
  const std::size_t descriptorsBefore = testsupport::openDescriptorCount();
  const std::vector<Point> segmentPoints{Point::afterStagingCreation,     Point::afterPayloadWrite,
                                         Point::afterIndexWrite,          Point::afterStagingSync,
                                         Point::afterStagingVerification, Point::afterFinalRename};
  std::vector<Point> chunkPoints = segmentPoints;
  chunkPoints.erase(chunkPoints.begin() + 2);  // a chunk has no index
  const std::vector<std::pair<Writer, std::vector<Point>>> writers{{writeSegment, segmentPoints},
                                                                   {writeChunk, chunkPoints}};
  for (const auto& [write, expectedPoints] : writers) {
    const testsupport::TemporaryDirectory directory;
    std::vector<Point> passed;
    ASSERT_EQ(write(directory.path(),
                    [&](Point point) {
                      passed.push_back(point);
                      return false;
                    }),
              std::nullopt);
    EXPECT_EQ(passed, expectedPoints);
    for (const Point point : expectedPoints) {
      const testsupport::TemporaryDirectory stopped;
      EXPECT_EQ(write(stopped.path(), [&](Point reached) { return reached == point; }),
                Failure(Error::injectedFault(point)));
      EXPECT_EQ(namesIn(stopped.path()).size(), point == Point::afterFinalRename ? 1u : 0u) << static_cast<int>(point);
    }
  }
  EXPECT_EQ(testsupport::openDescriptorCount(), descriptorsBefore);
}

// Something standing at the destination is kept and refused; a failed write gives the system's
// error and removes its staging file.
TEST(BackupPayloadV1, WritersNeverReplaceAndCleanUpAfterAFailure) {
  for (const Writer& write : {Writer(writeSegment), Writer(writeChunk)}) {
    const testsupport::TemporaryDirectory directory;
    ASSERT_EQ(write(directory.path(), {}), std::nullopt);
    const auto name = namesIn(directory.path()).front();
    const Bytes original = readFile(directory / name);
    EXPECT_EQ(write(directory.path(), {}), Failure(Error::destinationAlreadyExists()));
    EXPECT_EQ(namesIn(directory.path()), std::vector<std::string>{name});
    EXPECT_EQ(readFile(directory / name), original);
    const testsupport::TemporaryDirectory limited;
    {
      const testsupport::FileFixtures::LimitedFileSize limit(64);
      EXPECT_EQ(write(limited.path(), {}), Failure(platform::FileError{EFBIG}));
    }
    EXPECT_TRUE(namesIn(limited.path()).empty());
  }
}

// ---- Reading pack segments ----

// A small segment of two entries, the second one empty (an empty resource is still an entry),
// written once per test, and its bytes to damage.
class BackupPayloadV1Segment : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(Payload::writePackSegment(path_, kPackage, kLibrary, segment_, kKey, inputs_));
    original_ = readFile(path_);
  }
  std::expected<BackupPackSegmentDescriptorV1, Error> verifyAt(const fs::path& path) const {
    return Payload::verifyPackSegment(path, kPackage, kLibrary, kKey);
  }
  std::expected<BackupPackSegmentDescriptorV1, Error> verifyWith(const Bytes& bytes) const {
    replaceFile(path_, bytes);
    return verifyAt(path_);
  }

  const testsupport::TemporaryDirectory directory_;
  const Bytes segment_ = identifier(0x40);
  const fs::path path_ = directory_ / segmentName(segment_);
  const std::vector<Input> inputs_ = {entries(1, 10).front(), {identifier(2), {}}};
  Bytes original_;
};

// Offsets: header fields at 0 (magic), 8 (version), 10 (reserved), 12 (identifier), 28 (entry
// count), 32 (entry area), 40 (index frame); the first prefix at 48 (identifier, ordinal at 64,
// frame byte count at 72) and its frame at 80.
TEST_F(BackupPayloadV1Segment, DamagedFilesFailWithTheirOwnCase) {
  const struct {
    std::string_view name;
    std::function<void(Bytes&)> damage;
    Error expected;
  } rows[] = {
      {"wrong magic", [](Bytes& b) { b[0] ^= 1; }, Error::unsupportedContainer()},
      {"version 2", [](Bytes& b) { b[9] = 2; }, Error::unsupportedContainer()},
      {"33 entries", [](Bytes& b) { b[31] = 33; }, Error::invalidArtifact()},
      {"entry area one longer", [](Bytes& b) { ++b[39]; }, Error::invalidArtifact()},
      {"entry area overflowing", [](Bytes& b) { std::fill(b.begin() + 32, b.begin() + 40, 0xFF); },
       Error::invalidArtifact()},
      {"header names another segment", [](Bytes& b) { b[12] ^= 1; }, Error::invalidArtifactName()},
      {"prefix identifier", [](Bytes& b) { b[48] ^= 1; }, Error::malformedIndex()},
      {"entry frame", [](Bytes& b) { b[130] ^= 1; }, Error::verificationFailed()},
      {"index frame", [](Bytes& b) { b.back() ^= 1; }, Error::verificationFailed()},
  };
  for (const auto& row : rows) {
    Bytes damaged = original_;
    row.damage(damaged);
    EXPECT_EQ(verifyWith(damaged), fails(row.expected)) << row.name;
  }
  // Inspection leaves the entry frames to their opening, one at a time.
  Bytes damaged = original_;
  damaged[130] ^= 1;
  replaceFile(path_, damaged);
  EXPECT_TRUE(Payload::inspectPackSegment(path_, kPackage, kLibrary, kKey));
  EXPECT_EQ(Payload::openPackEntry(inputs_[0].identifier, path_, kPackage, kLibrary, kKey),
            fails(Error::verificationFailed()));
  EXPECT_EQ(Payload::openPackEntry(inputs_[1].identifier, path_, kPackage, kLibrary, kKey), inputs_[1].plaintext);
  EXPECT_EQ(Payload::openPackEntry(identifier(0x77), path_, kPackage, kLibrary, kKey), fails(Error::entryNotFound()));
}

// Every truncation is refused by the length check; every byte, damaged two ways, is caught by
// one of the reader's cases, and never crashes or passes.
TEST_F(BackupPayloadV1Segment, EveryTruncationAndEveryDamagedByteFails) {
  for (std::size_t length = 0; length < original_.size(); ++length) {
    EXPECT_EQ(verifyWith(Bytes(original_.begin(), original_.begin() + static_cast<std::ptrdiff_t>(length))),
              fails(Error::invalidArtifact()))
        << length;
  }
  const std::vector<Error> listed{Error::invalidArtifactName(), Error::invalidArtifact(), Error::unsupportedContainer(),
                                  Error::malformedIndex(), Error::verificationFailed()};
  for (std::size_t offset = 0; offset < original_.size(); ++offset) {
    for (const std::uint8_t flip : {std::uint8_t{0x01}, std::uint8_t{0x80}}) {
      Bytes damaged = original_;
      damaged[offset] ^= flip;
      const auto verified = verifyWith(damaged);
      ASSERT_FALSE(verified) << "offset " << offset;
      EXPECT_TRUE(std::ranges::find(listed, verified.error()) != listed.end()) << "offset " << offset;
    }
  }
}

TEST_F(BackupPayloadV1Segment, WrongNamesAndFileKindsAreRefused) {
  EXPECT_EQ(Payload::inspectPackSegment(path_, kPackage, identifier(9), kKey), fails(Error::verificationFailed()));
  // A staging copy (lower-case UUID, as writers make them) is inspected; other names are not.
  const std::string name = segmentName(segment_);
  for (const std::string& other : {name + ".0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0FF.partial", chunkName(segment_)}) {
    writeFile(directory_ / other, original_);
    EXPECT_EQ(Payload::inspectPackSegment(directory_ / other, kPackage, kLibrary, kKey),
              fails(Error::invalidArtifactName()))
        << other;
  }
  writeFile(directory_ / (name + "." + std::string(kLowerUUID) + ".partial"), original_);
  EXPECT_TRUE(Payload::inspectPackSegment(directory_ / (name + "." + std::string(kLowerUUID) + ".partial"), kPackage,
                                          kLibrary, kKey));
  const testsupport::TemporaryDirectory other;
  const fs::path elsewhere = other / name;
  testsupport::FileFixtures::makeSymbolicLink(path_, elsewhere);
  EXPECT_EQ(verifyAt(elsewhere), fails(Error::invalidArtifact())) << "symbolic link";
  fs::remove(elsewhere);
  ASSERT_EQ(::mkfifo(elsewhere.c_str(), 0600), 0);  // opened without blocking, then refused
  EXPECT_EQ(verifyAt(elsewhere), fails(Error::invalidArtifact())) << "FIFO";
  fs::remove(elsewhere);
  writeFile(elsewhere, Bytes{});
  fs::resize_file(elsewhere, Payload::maximumSegmentFileByteCount);  // sparse: the header reads as zeros
  EXPECT_EQ(verifyAt(elsewhere), fails(Error::unsupportedContainer())) << "largest size";
  fs::resize_file(elsewhere, Payload::maximumSegmentFileByteCount + 1);
  EXPECT_EQ(verifyAt(elsewhere), fails(Error::invalidArtifact())) << "one byte over";
}

// resealedWithIndex gives the segment file with its index replaced by `change(index)`, sealed
// as a writer would, and the header's index frame byte count adjusted.
Bytes resealedWithIndex(const Bytes& file, const std::function<Value(Value::Map)>& change) {
  using Header = BackupPackContainerHeaderV1;
  constexpr CBORLimits generous{1 << 20, 1 << 16, 1024, 64, 4096, 8};
  auto header = made(Header::decode(ByteView(file).first(Header::encodedByteCount)));
  const auto indexOffset = static_cast<std::ptrdiff_t>(Header::encodedByteCount + header.entryAreaByteCount);
  const auto data = made(
      made(BackupAuthenticatedDataV1::make(BackupAADDomainV1::packIndex, kPackage, kLibrary, header.segmentIdentifier,
                                           std::numeric_limits<std::uint64_t>::max(), std::nullopt))
          .encoded());
  const auto plaintext =
      made(AESGCMFrameV1::open(ByteView(file).subspan(static_cast<std::size_t>(indexOffset)), kKey, data, 65536));
  const auto index = made(DeterministicCBOR::decode(plaintext, generous));
  const auto frame =
      made(AESGCMFrameV1::seal(made(DeterministicCBOR::encode(change(*index.asMap()), generous)), kKey, data, 65536));
  header.indexFrameByteCount = frame.size();
  Bytes rebuilt(file.begin(), file.begin() + indexOffset);  // the header, rewritten below, and the entry area
  std::ranges::copy(header.encoded(), rebuilt.begin());
  rebuilt.insert(rebuilt.end(), frame.begin(), frame.end());
  return rebuilt;
}

// Each row changes the authentic index (key 5 holds the entries, each an array of identifier,
// ordinal, frame offset, frame byte count, plaintext byte count and the two digests) and seals
// it again under the right key, so that only the index rules can refuse it.
TEST_F(BackupPayloadV1Segment, EveryIndexRuleIsMalformedIndex) {
  const Value firstIdentifier = Value::byteString(inputs_[0].identifier);
  // With `entry`, `item` is the place in that entry to change; a value of nothing removes the key.
  const struct {
    std::string_view name;
    std::uint64_t key;
    std::optional<std::size_t> entry;
    std::size_t item;
    std::optional<Value> value;
  } rows[] = {
      {"key 5 missing", 5, {}, 0, std::nullopt},
      {"other schema", 0, {}, 0, Value::textString("com.galdrine.backup.pack-index.v2")},
      {"entry count 3", 2, {}, 0, Value::unsignedInteger(3)},
      {"total not the sum", 4, {}, 0, Value::unsignedInteger(21)},
      {"short identifier", 5, 0, 0, Value::byteString(identifier(1, 15))},
      {"ordinal not its position", 5, 0, 1, Value::unsignedInteger(1)},
      {"frame offset off by one", 5, 0, 2, Value::unsignedInteger(81)},
      {"frame above its ceiling", 5, 0, 3, Value::unsignedInteger(16778241)},
      {"plaintext above its ceiling", 5, 0, 4, Value::unsignedInteger(16777217)},
      {"duplicate identifiers", 5, 1, 0, firstIdentifier},
      {"deeper than four", 5, 0, 0, Value::array({Value::array({firstIdentifier})})},
  };
  EXPECT_TRUE(verifyWith(resealedWithIndex(original_, [](Value::Map index) { return Value::map(index); })))
      << "an unchanged index must still pass, or the rows prove nothing";
  for (const auto& row : rows) {
    const auto change = [&](Value::Map index) {
      if (!row.value) {
        index.erase(row.key);
      } else if (!row.entry) {
        index.insert_or_assign(row.key, *row.value);
      } else {
        Value::Array entries = *index.at(5).asArray();
        Value::Array fields = *entries[*row.entry].asArray();
        fields[row.item] = *row.value;
        entries[*row.entry] = Value::array(fields);
        index.insert_or_assign(5, Value::array(entries));
      }
      return Value::map(index);
    };
    EXPECT_EQ(verifyWith(resealedWithIndex(original_, change)), fails(Error::malformedIndex())) << row.name;
  }
}

// ---- Reading resource chunks ----

TEST(BackupPayloadV1, ChunksOpenOnlyAsTheirDescriptorSays) {
  const testsupport::TemporaryDirectory directory;
  const fs::path path = directory / chunkName(identifier(0x50));
  const Bytes plaintext = pattern(300, 5);
  const auto descriptor =
      made(Payload::writeResourceChunk(path, kPackage, kLibrary, identifier(0x50), 4, kKey, plaintext));
  const Bytes original = readFile(path);
  EXPECT_EQ(descriptor.frameSHA256, platform::SHA256::digest(original));
  const auto open = [&](const fs::path& at, const BackupResourceChunkDescriptorV1& expected, ByteView key = kKey) {
    return Payload::openResourceChunk(at, expected, kPackage, kLibrary, key);
  };
  EXPECT_EQ(open(path, descriptor), plaintext);
  const struct {
    std::string_view name;
    std::function<void(BackupResourceChunkDescriptorV1&)> change;
    Error expected;
  } rows[] = {
      {"frame above its ceiling, short identifier",
       [](auto& d) {
         d.frameByteCount = 16778241;
         d.identifier.pop_back();
       },
       Error::invalidArtifact()},
      {"plaintext above its ceiling", [](auto& d) { d.plaintextByteCount = 16777217; }, Error::invalidArtifact()},
      {"short identifier", [](auto& d) { d.identifier.pop_back(); }, Error::invalidIdentifier()},
      {"another chunk", [](auto& d) { d.identifier = identifier(0x51); }, Error::invalidArtifactName()},
      {"file longer than the frame", [](auto& d) { --d.frameByteCount; }, Error::invalidArtifact()},
      {"other frame digest", [](auto& d) { d.frameSHA256[0] ^= 1; }, Error::verificationFailed()},
      {"other ordinal", [](auto& d) { d.ordinal = 5; }, Error::verificationFailed()},
      {"other plaintext digest", [](auto& d) { d.plaintextSHA256[31] ^= 1; }, Error::verificationFailed()},
  };
  for (const auto& row : rows) {
    auto changed = descriptor;
    row.change(changed);
    EXPECT_EQ(open(path, changed), fails(row.expected)) << row.name;
  }
  EXPECT_EQ(open(path, descriptor, Bytes(32, 0x34)), fails(Error::verificationFailed()));
  EXPECT_EQ(open(path, descriptor, Bytes{}), fails(Error::invalidKey()));
}

}  // namespace

}  // namespace galdrine::format
