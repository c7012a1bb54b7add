#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <limits>
#include <optional>

#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "format/cbor/DeterministicCBOR.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "format/payload/BackupPackContainerHeaderV1.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "support/FileFixtures.hpp"
#include "support/OpenDescriptorCount.hpp"
#include "support/TemporaryDirectory.hpp"
#include "BackupPayloadV1TestSupport.hpp"

namespace galdrine::format {

namespace {

using namespace BackupPayloadV1TestSupport;
using Value = CBORValue;
using Header = BackupPackContainerHeaderV1;
using ChunkDescriptor = BackupResourceChunkDescriptorV1;
using testsupport::FileFixtures::readFile;
using testsupport::FileFixtures::writeFile;

constexpr std::string_view kLowerUUID = "0f1e2d3c-4b5a-4978-8695-a4b3c2d1e0ff";
constexpr std::string_view kUpperUUID = "0F1E2D3C-4B5A-4978-8695-A4B3C2D1E0FF";

[[nodiscard]] std::unexpected<Error> fails(Error error) { return std::unexpected(error); }

// A small segment of two entries, written once per test, and its bytes to damage.
class BackupPayloadV1Segment : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(Payload::writePackSegment(path_, kPackage, kLibrary, segment_, kKey, inputs_));
    original_ = readFile(path_);
  }

  [[nodiscard]] std::expected<BackupPackSegmentDescriptorV1, Error> verifyAt(const fs::path& path) const {
    return Payload::verifyPackSegment(path, kPackage, kLibrary, kKey);
  }
  [[nodiscard]] std::expected<BackupPackSegmentDescriptorV1, Error> verifyWith(const Bytes& bytes) const {
    replaceFile(path_, bytes);
    return verifyAt(path_);
  }

  const testsupport::TemporaryDirectory directory_;
  const Bytes segment_ = identifier(0x40);
  const fs::path path_ = directory_ / segmentName(segment_);
  const std::vector<Input> inputs_ = entries(2, 10);
  Bytes original_;
};

struct FileDamage {
  std::string_view name;
  std::function<void(Bytes&)> damage;
  Error expected;
};

// Offsets: header fields at 0 (magic), 8 (version), 10 (reserved), 12 (identifier), 28 (entry
// count), 32 (entry area), 40 (index frame); the first prefix at 48 (identifier, ordinal at 64,
// frame byte count at 72) and its frame at 80.
TEST_F(BackupPayloadV1Segment, DamagedFilesFailWithTheirOwnCase) {
  const std::vector<FileDamage> rows{
      {"wrong magic", [](Bytes& b) { b[0] ^= 1; }, Error::unsupportedContainer()},
      {"version 2", [](Bytes& b) { b[9] = 2; }, Error::unsupportedContainer()},
      {"reserved not zero", [](Bytes& b) { b[11] = 1; }, Error::unsupportedContainer()},
      {"no entries", [](Bytes& b) { b[31] = 0; }, Error::invalidArtifact()},
      {"33 entries", [](Bytes& b) { b[31] = 33; }, Error::invalidArtifact()},
      {"entry area one longer", [](Bytes& b) { ++b[39]; }, Error::invalidArtifact()},
      {"index frame one longer", [](Bytes& b) { ++b[47]; }, Error::invalidArtifact()},
      {"entry area overflowing", [](Bytes& b) { std::fill(b.begin() + 32, b.begin() + 40, 0xFF); },
       Error::invalidArtifact()},
      {"one byte appended", [](Bytes& b) { b.push_back(0); }, Error::invalidArtifact()},
      {"last byte cut", [](Bytes& b) { b.pop_back(); }, Error::invalidArtifact()},
      {"shorter than a header", [](Bytes& b) { b.resize(47); }, Error::invalidArtifact()},
      {"empty", [](Bytes& b) { b.clear(); }, Error::invalidArtifact()},
      {"header names another segment", [](Bytes& b) { b[12] ^= 1; }, Error::invalidArtifactName()},
      {"prefix identifier", [](Bytes& b) { b[48] ^= 1; }, Error::malformedIndex()},
      {"prefix ordinal", [](Bytes& b) { b[71] ^= 1; }, Error::malformedIndex()},
      {"prefix frame byte count", [](Bytes& b) { b[79] ^= 1; }, Error::malformedIndex()},
      {"entry frame", [](Bytes& b) { b[130] ^= 1; }, Error::verificationFailed()},
      {"index frame", [](Bytes& b) { b.back() ^= 1; }, Error::verificationFailed()},
  };
  for (const FileDamage& row : rows) {
    Bytes damaged = original_;
    row.damage(damaged);
    EXPECT_EQ(verifyWith(damaged), fails(row.expected)) << row.name;
  }
}

TEST_F(BackupPayloadV1Segment, InspectionLeavesEntryFramesToTheirOpening) {
  Bytes damaged = original_;
  damaged[130] ^= 1;  // inside the first entry's frame
  replaceFile(path_, damaged);
  EXPECT_TRUE(Payload::inspectPackSegment(path_, kPackage, kLibrary, kKey));
  EXPECT_EQ(Payload::openPackEntry(inputs_[0].identifier, path_, kPackage, kLibrary, kKey),
            fails(Error::verificationFailed()));
  EXPECT_EQ(Payload::openPackEntry(inputs_[1].identifier, path_, kPackage, kLibrary, kKey), inputs_[1].plaintext);
}

TEST_F(BackupPayloadV1Segment, WrongCredentialsNamesAndFileKindsAreRefused) {
  const std::size_t descriptorsBefore = testsupport::openDescriptorCount();
  EXPECT_EQ(Payload::inspectPackSegment(path_, kPackage, kLibrary, kOtherKey), fails(Error::verificationFailed()));
  EXPECT_EQ(Payload::inspectPackSegment(path_, identifier(9), kLibrary, kKey), fails(Error::verificationFailed()));
  EXPECT_EQ(Payload::inspectPackSegment(path_, kPackage, identifier(9), kKey), fails(Error::verificationFailed()));
  EXPECT_EQ(Payload::inspectPackSegment(path_, kPackage, kLibrary, filled(31, 0)), fails(Error::invalidKey()));
  EXPECT_EQ(Payload::inspectPackSegment(path_, filled(15, 0), kLibrary, kKey), fails(Error::invalidIdentifier()));

  const std::string name = segmentName(segment_);
  const std::vector<std::pair<std::string, std::optional<Error>>> names{
      {name + "." + std::string(kLowerUUID) + ".partial", std::nullopt},
      {name + "." + std::string(kUpperUUID) + ".partial", Error::invalidArtifactName()},
      {name + ".partial", Error::invalidArtifactName()},
      {segmentName(identifier(0x41)), Error::invalidArtifactName()},
      {chunkName(segment_), Error::invalidArtifactName()},
      {"segment.pack", Error::invalidArtifactName()},
  };
  for (const auto& [copyName, expected] : names) {
    writeFile(directory_ / copyName, original_);
    const auto inspected = Payload::inspectPackSegment(directory_ / copyName, kPackage, kLibrary, kKey);
    EXPECT_EQ(inspected.has_value(), !expected) << copyName;
    if (expected) {
      EXPECT_EQ(inspected, fails(*expected)) << copyName;
    }
  }

  const testsupport::TemporaryDirectory other;
  const fs::path elsewhere = other / name;
  testsupport::FileFixtures::makeSymbolicLink(path_, elsewhere);
  EXPECT_EQ(verifyAt(elsewhere), fails(Error::invalidArtifact())) << "symbolic link";
  fs::remove(elsewhere);
  testsupport::FileFixtures::makeDirectory(elsewhere);
  EXPECT_EQ(verifyAt(elsewhere), fails(Error::invalidArtifact())) << "directory";
  fs::remove(elsewhere);
  ASSERT_EQ(::mkfifo(elsewhere.c_str(), 0600), 0);
  EXPECT_EQ(verifyAt(elsewhere), fails(Error::invalidArtifact())) << "FIFO";
  fs::remove(elsewhere);
  EXPECT_EQ(verifyAt(elsewhere), fails(Error::invalidArtifact())) << "missing";
  writeFile(elsewhere, Bytes{});
  fs::resize_file(elsewhere, Payload::maximumSegmentFileByteCount);  // sparse: the header reads as zeros
  EXPECT_EQ(verifyAt(elsewhere), fails(Error::unsupportedContainer())) << "largest size";
  fs::resize_file(elsewhere, Payload::maximumSegmentFileByteCount + 1);
  EXPECT_EQ(verifyAt(elsewhere), fails(Error::invalidArtifact())) << "one byte over";
  EXPECT_EQ(testsupport::openDescriptorCount(), descriptorsBefore);
}

// Every truncation is refused by the length check; every byte, damaged two ways, is caught by
// one of the reader's cases, and never crashes or passes.
TEST_F(BackupPayloadV1Segment, EveryTruncationAndEveryDamagedByteFails) {
  for (std::size_t length = 0; length < original_.size(); ++length) {
    EXPECT_EQ(verifyWith(Bytes(original_.begin(), original_.begin() + static_cast<std::ptrdiff_t>(length))), fails(Error::invalidArtifact()))
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

// ---- Index rules, reached by sealing a changed index under the right key ----

[[nodiscard]] Bytes indexAuthenticatedData(ByteView segment) {
  const auto data =
      BackupAuthenticatedDataV1::make(BackupAADDomainV1::packIndex, kPackage, kLibrary, segment,
                                              std::numeric_limits<std::uint64_t>::max(), std::nullopt);
  const auto encoded =
      data ? data->encoded() : std::unexpected(CBORError{CBORError::Code::invalidLimits});
  EXPECT_TRUE(encoded);
  return encoded ? *encoded : Bytes{};
}

constexpr CBORLimits kGenerousLimits{1 << 20, 1 << 16, 1024, 64, 4096, 8};

// resealedWithIndex gives the segment file with its index replaced by `change(index)`, sealed
// as a writer would, and the header's index frame byte count adjusted.
[[nodiscard]] Bytes resealedWithIndex(const Bytes& file, const std::function<Value(Value::Map)>& change) {
  auto header = Header::decode(ByteView(file).first(Header::encodedByteCount));
  EXPECT_TRUE(header);
  if (!header) return {};
  const std::size_t indexOffset = Header::encodedByteCount + header->entryAreaByteCount;
  const Bytes data = indexAuthenticatedData(header->segmentIdentifier);
  const auto plaintext = AESGCMFrameV1::open(ByteView(file).subspan(indexOffset), kKey, data, 65536);
  const auto index = plaintext ? DeterministicCBOR::decode(*plaintext, kGenerousLimits)
                               : std::unexpected(CBORError{CBORError::Code::invalidLimits});
  const auto encoded = index ? DeterministicCBOR::encode(change(*index->asMap()), kGenerousLimits)
                             : std::unexpected(CBORError{CBORError::Code::invalidLimits});
  EXPECT_TRUE(encoded);
  if (!encoded) return {};
  const auto frame = AESGCMFrameV1::seal(*encoded, kKey, data, 65536);
  EXPECT_TRUE(frame);
  if (!frame) return {};
  header->indexFrameByteCount = frame->size();
  const auto headerBytes = header->encoded();
  Bytes rebuilt(headerBytes.begin(), headerBytes.end());
  rebuilt.insert(rebuilt.end(), file.begin() + static_cast<std::ptrdiff_t>(Header::encodedByteCount), file.begin() + static_cast<std::ptrdiff_t>(indexOffset));
  rebuilt.insert(rebuilt.end(), frame->begin(), frame->end());
  return rebuilt;
}

[[nodiscard]] Value::Array entriesOf(const Value::Map& index) { return *index.at(5).asArray(); }

// withEntryItem changes item `item` of entry `entry`; item 7 means the entry as a whole.
[[nodiscard]] std::function<Value(Value::Map)> withEntryItem(std::size_t entry, std::size_t item,
                                                             std::function<Value(const Value&)> change) {
  return [=](Value::Map index) {
    Value::Array entries = entriesOf(index);
    if (item == 7) {
      entries[entry] = change(entries[entry]);
    } else {
      Value::Array fields = *entries[entry].asArray();
      fields[item] = change(fields[item]);
      entries[entry] = Value::array(fields);
    }
    index.insert_or_assign(5, Value::array(entries));
    return Value::map(index);
  };
}

[[nodiscard]] std::function<Value(Value::Map)> withField(std::uint64_t key, Value value) {
  return [=](Value::Map index) {
    index.insert_or_assign(key, value);
    return Value::map(index);
  };
}

[[nodiscard]] std::function<Value(const Value&)> to(Value value) {
  return [=](const Value&) { return value; };
}

[[nodiscard]] std::function<Value(const Value&)> plusOne() {
  return [](const Value& value) { return Value::unsignedInteger(value.asUnsigned().value_or(0) + 1); };
}

struct IndexChange {
  std::string_view name;
  std::function<Value(Value::Map)> change;
};

TEST_F(BackupPayloadV1Segment, EveryIndexRuleIsMalformedIndex) {
  const Value firstIdentifier = Value::byteString(inputs_[0].identifier);
  const std::vector<IndexChange> rows{
      {"key 5 missing",
       [](Value::Map index) {
         index.erase(5);
         return Value::map(index);
       }},
      {"key 6 added", withField(6, Value::null())},
      {"other schema", withField(0, Value::textString("com.galdrine.backup.pack-index.v2"))},
      {"schema as bytes", withField(0, Value::byteString(Bytes{1}))},
      {"other segment", withField(1, Value::byteString(identifier(0x41)))},
      {"entry count 3", withField(2, Value::unsignedInteger(3))},
      {"entry area one longer",
       [](Value::Map index) {
         return withField(3, Value::unsignedInteger(index.at(3).asUnsigned().value_or(0) + 1))(index);
       }},
      {"total above 64 MiB", withField(4, Value::unsignedInteger(67108865))},
      {"total not the sum", withField(4, Value::unsignedInteger(21))},
      {"one entry missing",
       [](Value::Map index) {
         Value::Array e = entriesOf(index);
         e.pop_back();
         return withField(5, Value::array(e))(index);
       }},
      {"entry not an array", withEntryItem(0, 7, to(Value::unsignedInteger(0)))},
      {"entry of six items", withEntryItem(0, 7,
                                           [](const Value& e) {
                                             Value::Array f = *e.asArray();
                                             f.pop_back();
                                             return Value::array(f);
                                           })},
      {"short identifier", withEntryItem(0, 0, to(Value::byteString(identifier(1, 15))))},
      {"ordinal not its position", withEntryItem(0, 1, to(Value::unsignedInteger(1)))},
      {"ordinal as text", withEntryItem(0, 1, to(Value::textString("0")))},
      {"frame above its ceiling", withEntryItem(0, 3, to(Value::unsignedInteger(16778241)))},
      {"plaintext above its ceiling", withEntryItem(0, 4, to(Value::unsignedInteger(16777217)))},
      {"short plaintext digest", withEntryItem(0, 5, to(Value::byteString(filled(31, 0))))},
      {"frame digest as text", withEntryItem(1, 6, to(Value::textString("digest")))},
      {"duplicate identifiers", withEntryItem(1, 0, to(firstIdentifier))},
      {"frame offset off by one", withEntryItem(0, 2, plusOne())},
      {"frame byte count off by one", withEntryItem(1, 3, plusOne())},
      {"root an array", [](Value::Map) { return Value::array({}); }},
      {"deeper than four", withEntryItem(0, 0, to(Value::array({Value::array({firstIdentifier})})))},
  };
  EXPECT_TRUE(verifyWith(resealedWithIndex(original_, [](Value::Map index) { return Value::map(index); })))
      << "an unchanged index must still pass, or the rows prove nothing";
  for (const IndexChange& row : rows) {
    EXPECT_EQ(verifyWith(resealedWithIndex(original_, row.change)), fails(Error::malformedIndex())) << row.name;
  }
}

// ---- Resource chunks ----

class BackupPayloadV1Chunk : public ::testing::Test {
 protected:
  void SetUp() override {
    auto written = Payload::writeResourceChunk(path_, kPackage, kLibrary, chunk_, 4, kKey, plaintext_);
    ASSERT_TRUE(written);
    descriptor_ = *written;
    original_ = readFile(path_);
  }

  [[nodiscard]] std::expected<Bytes, Error> open(const fs::path& path, const ChunkDescriptor& descriptor) const {
    return Payload::openResourceChunk(path, descriptor, kPackage, kLibrary, kKey);
  }

  const testsupport::TemporaryDirectory directory_;
  const Bytes chunk_ = identifier(0x50);
  const fs::path path_ = directory_ / chunkName(chunk_);
  const Bytes plaintext_ = pattern(300, 5);
  ChunkDescriptor descriptor_;
  Bytes original_;
};

struct DescriptorChange {
  std::string_view name;
  std::function<void(ChunkDescriptor&)> change;
  Error expected;
};

TEST_F(BackupPayloadV1Chunk, DescriptorsThatDisagreeWithTheFileAreRefusedInOrder) {
  const std::vector<DescriptorChange> rows{
      {"frame above its ceiling, short identifier",
       [](auto& d) {
         d.frameByteCount = 16778241;
         d.identifier.pop_back();
       },
       Error::invalidArtifact()},
      {"plaintext above its ceiling", [](auto& d) { d.plaintextByteCount = 16777217; }, Error::invalidArtifact()},
      {"short identifier, another name", [](auto& d) { d.identifier.pop_back(); }, Error::invalidIdentifier()},
      {"another chunk", [](auto& d) { d.identifier = identifier(0x51); }, Error::invalidArtifactName()},
      {"file longer than the frame", [](auto& d) { --d.frameByteCount; }, Error::invalidArtifact()},
      {"file shorter than the frame", [](auto& d) { ++d.frameByteCount; }, Error::invalidArtifact()},
      {"other frame digest", [](auto& d) { d.frameSHA256[0] ^= 1; }, Error::verificationFailed()},
      {"other ordinal", [](auto& d) { d.ordinal = 5; }, Error::verificationFailed()},
      {"other plaintext count", [](auto& d) { --d.plaintextByteCount; }, Error::verificationFailed()},
      {"other plaintext digest", [](auto& d) { d.plaintextSHA256[31] ^= 1; }, Error::verificationFailed()},
  };
  EXPECT_EQ(open(path_, descriptor_), plaintext_);
  for (const DescriptorChange& row : rows) {
    ChunkDescriptor changed = descriptor_;
    row.change(changed);
    EXPECT_EQ(open(path_, changed), fails(row.expected)) << row.name;
  }
  EXPECT_EQ(Payload::openResourceChunk(path_, descriptor_, kPackage, kLibrary, kOtherKey),
            fails(Error::verificationFailed()));
  EXPECT_EQ(Payload::openResourceChunk(path_, descriptor_, kPackage, kLibrary, filled(0, 0)),
            fails(Error::invalidKey()));
  EXPECT_EQ(Payload::openResourceChunk(path_, descriptor_, kPackage, filled(15, 0), kKey),
            fails(Error::invalidIdentifier()));
}

TEST_F(BackupPayloadV1Chunk, DamagedFilesAndOtherFileKindsAreRefused) {
  const std::size_t descriptorsBefore = testsupport::openDescriptorCount();
  for (std::size_t offset = 0; offset < original_.size(); ++offset) {
    Bytes damaged = original_;
    damaged[offset] ^= 0x20;
    replaceFile(path_, damaged);
    EXPECT_EQ(open(path_, descriptor_), fails(Error::verificationFailed())) << offset;
  }
  replaceFile(path_, Bytes(original_.begin(), original_.end() - 1));
  EXPECT_EQ(open(path_, descriptor_), fails(Error::invalidArtifact())) << "truncated";
  Bytes extended = original_;
  extended.push_back(0);
  replaceFile(path_, extended);
  EXPECT_EQ(open(path_, descriptor_), fails(Error::invalidArtifact())) << "extended";

  const fs::path staged = directory_ / (chunkName(chunk_) + "." + std::string(kLowerUUID) + ".partial");
  writeFile(staged, original_);
  EXPECT_EQ(open(staged, descriptor_), plaintext_) << "a staging name is the writer's own";
  const testsupport::TemporaryDirectory other;
  const fs::path elsewhere = other / chunkName(chunk_);
  testsupport::FileFixtures::makeSymbolicLink(staged, elsewhere);
  EXPECT_EQ(open(elsewhere, descriptor_), fails(Error::invalidArtifact())) << "symbolic link";
  fs::remove(elsewhere);
  testsupport::FileFixtures::makeDirectory(elsewhere);
  EXPECT_EQ(open(elsewhere, descriptor_), fails(Error::invalidArtifact())) << "directory";
  EXPECT_EQ(testsupport::openDescriptorCount(), descriptorsBefore);
}

}  // namespace

}  // namespace galdrine::format
