// Manifest records: the field rules of each kind (one table per kind: a valid record, then one
// row per fault with the exact error, rows with two faults pinning which check comes first),
// and their stored form: round trips of every kind, the decoder's refusals in the order of its
// checks, the uniqueness of a blob's bytes and sort key, and the wrapping of payload keys. (The
// committed graph fixtures pin the records' bytes.)

#include <gtest/gtest.h>

#include <bit>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "support/ManifestTestRecords.hpp"

namespace galdrine::format {

using namespace testsupport::ManifestTestRecords;

namespace {

namespace Codec = BackupManifestRecordCodecV1;
using Kind = BackupManifestSectionKindV1;
using Record = BackupManifestRecordV1;
using Value = CBORValue;
using Scope = BackupPayloadKeyScopeV1;

const ByteView kBPMK = bytesOf(0x4D, 32);
const ByteView kPayloadKey = bytesOf(0x4B, 32);

// One record of each kind, optional fields both present and absent among them.
std::vector<Record> oneOfEachKind() {
  auto trashed = itemFields(20, identifiers({21}));
  trashed.lifecycle = BackupMediaLifecycleV1::trash;
  trashed.trashDateUTCMilliseconds = -86400000;
  trashed.displayTimeZoneSeconds = std::nullopt;
  return {made(BackupPayloadKeyRecordV1::make(payloadKeyFields(1, Scope::resource, 3))),
          made(BackupMediaItemRecordV1::make(itemFields(2, identifiers({3, 4})))),
          made(BackupMediaItemRecordV1::make(trashed)),
          made(BackupMediaResourceRecordV1::make(packedResourceFields(3, 2, 5, 6, 31))),
          made(BackupMediaResourceRecordV1::make(chunkedResourceFields(4, 2, 7, 8, 3, 5000))),
          made(BackupAlbumFolderRecordV1::make(folderFields(9, std::nullopt))),
          made(BackupAlbumRecordV1::make(albumFields(10, 9, 2))),
          made(BackupAlbumRecordV1::make(albumFields(11, std::nullopt, std::nullopt))),
          made(BackupAlbumMembershipRecordV1::make(membershipFields(10, 2))),
          made(BackupTombstoneRecordV1::make(tombstoneFields(12, identifiers({13, 14})))),
          made(BackupTombstoneRecordV1::make(tombstoneFields(15, {})))};
}

Value::Map mapOf(const Record& record) { return *record.cborValue().asMap(); }
Value with(Value::Map map, std::initializer_list<std::pair<std::uint64_t, Value>> changes) {
  for (const auto& [key, value] : changes) map.insert_or_assign(key, value);
  return Value::map(std::move(map));
}
Bytes encodedUnchecked(const Value& value) { return made(DeterministicCBOR::encode(value, Codec::recordLimits)); }
std::optional<Error> decodeError(Kind kind, const Value& value) {
  return errorOf(Codec::decodeRecord(kind, encodedUnchecked(value)));
}
BackupManifestRecordBlobV1 blobOf(ByteView sortKey, Bytes canonical) {
  return made(BackupManifestRecordBlobV1::make(Bytes(sortKey.begin(), sortKey.end()), std::move(canonical)));
}
Record item(std::uint64_t number) { return made(BackupMediaItemRecordV1::make(itemFields(number, identifiers({1})))); }

using Item = BackupMediaItemRecordV1;
using Part = BackupPayloadPartRecordV1;
using Resource = BackupMediaResourceRecordV1;
using Folder = BackupAlbumFolderRecordV1;
using Album = BackupAlbumRecordV1;
using Source = BackupMediaSourceTypeV1;

// A rule changes valid fields; an expected error of nothing means the record stays valid.
template <typename Record>
struct Rule {
  std::string name;
  std::function<void(typename Record::Fields&)> change;
  std::optional<Error> expected;
};

template <typename Record>
void expectRules(const typename Record::Fields& valid, const std::vector<Rule<Record>>& rules) {
  for (const auto& rule : rules) {
    auto fields = valid;
    rule.change(fields);
    const auto record = Record::make(fields);
    EXPECT_EQ(errorOf(record), rule.expected) << rule.name;
    if constexpr (!std::is_same_v<Record, Part>) {
      if (record) {
        const BackupManifestRecordV1 general(*record);
        EXPECT_EQ(Codec::decodeRecord(general.kind(), made(Codec::recordBlob(general)).canonicalRecord()), general)
            << rule.name;
      }
    }
  }
}

const std::string kLongText(1025, 'n');
const Bytes kInvalidUTF8{0xC3, 0x28};
std::string_view invalidUTF8() { return ByteText::text(kInvalidUTF8); }
std::string_view textOfByteCount(std::size_t byteCount) { return std::string_view(kLongText).substr(0, byteCount); }
std::uint64_t bitsOf(double seconds) { return std::bit_cast<std::uint64_t>(seconds); }

}  // namespace

TEST(BackupManifestRecordRules, PayloadKey) {
  expectRules<BackupPayloadKeyRecordV1>(
      payloadKeyFields(1, BackupPayloadKeyScopeV1::pack, 2),
      {{"17-byte bound identifier", [](auto& f) { f.boundIdentifier = bytesOf(1, 17); }, Error::invalidIdentifier},
       {"identifier before frame",
        [](auto& f) {
          f.identifier = bytesOf(1, 15);
          f.wrappedKeyFrame = {};
        },
        Error::invalidIdentifier},
       {"empty frame", [](auto& f) { f.wrappedKeyFrame = {}; }, Error::invalidKey},
       {"4,097-byte frame", [](auto& f) { f.wrappedKeyFrame = bytesOf(1, 4097); }, Error::invalidKey},
       {"4,096-byte frame", [](auto& f) { f.wrappedKeyFrame = bytesOf(1, 4096); }, std::nullopt}});
}

TEST(BackupManifestRecordRules, Item) {
  expectRules<Item>(
      itemFields(1, identifiers({2, 3})),
      {{"identifier before name",
        [](auto& f) {
          f.identifier = bytesOf(1, 15);
          f.originalFilename = "";
        },
        Error::invalidIdentifier},
       {"empty name from photos", [](auto& f) { f.originalFilename = ""; }, Error::invalidValue},
       {"empty name from the private camera",
        [](auto& f) {
          f.originalFilename = "";
          f.sourceType = Source::privateCamera;
        },
        std::nullopt},
       {"1,025-byte name", [](auto& f) { f.originalFilename = textOfByteCount(1025); }, Error::invalidValue},
       {"name not UTF-8", [](auto& f) { f.originalFilename = invalidUTF8(); }, Error::invalidValue},
       {"zone -64,800", [](auto& f) { f.displayTimeZoneSeconds = -64800; }, std::nullopt},
       {"zone 64,801", [](auto& f) { f.displayTimeZoneSeconds = 64801; }, Error::invalidValue},
       {"trashed without a date", [](auto& f) { f.lifecycle = BackupMediaLifecycleV1::trash; }, Error::invalidValue},
       {"active with a trash date", [](auto& f) { f.trashDateUTCMilliseconds = 0; }, Error::invalidValue},
       {"no resources", [](auto& f) { f.resourceIdentifiers = {}; }, Error::invalidValue},
       {"9 resources",
        [](auto& f) {
          f.resourceIdentifiers = identifiers({1, 2, 3, 4, 5, 6, 7, 8, 9});
        },
        Error::invalidValue},
       {"a resource twice",
        [](auto& f) {
          f.resourceIdentifiers = identifiers({2, 2});
        },
        Error::invalidValue},
       {"prefix sorts first, but 17 bytes",
        [](auto& f) {
          f.resourceIdentifiers = viewsOf({bytesOf(2, 16), bytesOf(2, 17)});
        },
        Error::invalidValue}});
}

TEST(BackupManifestRecordRules, Resource) {
  expectRules<Resource>(
      packedResourceFields(1, 2, 3, 4, 0),
      {{"15-byte key", [](auto& f) { f.payloadKeyIdentifier = bytesOf(1, 15); }, Error::invalidIdentifier},
       {"identifier before digest",
        [](auto& f) {
          f.itemIdentifier = bytesOf(1, 15);
          f.plaintextSHA256 = {};
        },
        Error::invalidIdentifier},
       {"digest before type",
        [](auto& f) {
          f.plaintextSHA256 = bytesOf(1, 31);
          f.originalUTI = "";
        },
        Error::invalidDigest},
       {"empty type", [](auto& f) { f.originalUTI = ""; }, Error::invalidValue},
       {"256-byte type", [](auto& f) { f.originalUTI = textOfByteCount(256); }, Error::invalidValue},
       {"over 2^36 bytes", [](auto& f) { f.plaintextByteCount = (std::uint64_t{1} << 36) + 1; }, Error::invalidValue},
       {"width without height", [](auto& f) { f.pixelHeight = std::nullopt; }, Error::invalidValue},
       {"zero width", [](auto& f) { f.pixelWidth = 0; }, Error::invalidValue},
       {"2^31 high", [](auto& f) { f.pixelHeight = 2147483648; }, Error::invalidValue},
       {"negative zero duration", [](auto& f) { f.durationIEEE754Bits = bitsOf(-0.0); }, std::nullopt},
       {"negative duration", [](auto& f) { f.durationIEEE754Bits = bitsOf(-0.001); }, Error::invalidValue},
       {"not a number", [](auto& f) { f.durationIEEE754Bits = bitsOf(std::numeric_limits<double>::quiet_NaN()); },
        Error::invalidValue},
       {"value before layout",
        [](auto& f) {
          f.originalUTI = "";
          f.parts = {};
        },
        Error::invalidValue}});
}

TEST(BackupManifestRecordRules, PartsAndTheirLayout) {
  expectRules<Part>(
      packPartFields(1, 0, 1000, 2),
      {{"artifact before digest",
        [](auto& f) {
          f.artifactIdentifier = bytesOf(1, 15);
          f.plaintextSHA256 = bytesOf(1, 31);
        },
        Error::invalidIdentifier},
       {"digest before size",
        [](auto& f) {
          f.artifactFileSHA256 = bytesOf(1, 33);
          f.plaintextByteCount = 0;
        },
        Error::invalidDigest},
       {"empty part", [](auto& f) { f.plaintextByteCount = 0; }, Error::invalidResourceLayout},
       {"one byte over a frame", [](auto& f) { f.plaintextByteCount = 16777217; }, Error::invalidResourceLayout},
       {"empty file", [](auto& f) { f.artifactFileByteCount = 0; }, Error::invalidResourceLayout}});

  const auto withParts = [](std::vector<Part::Fields> fields) {
    std::vector<Part> parts;
    for (const auto& each : fields) parts.push_back(made(Part::make(each)));
    return [parts](auto& f) { f.parts = partsOf(parts); };
  };
  auto inFirstChunksFile = chunkPartFields(11, 1, 1000, 1000);
  inFirstChunksFile.artifactIdentifier = identifier(10);
  auto outOfPlace = chunkPartFields(11, 1, 1000, 1000);
  outOfPlace.artifactOrdinal = 0;
  auto secondPack = packPartFields(4, 1, 1000, 1);
  secondPack.ordinal = 1;
  secondPack.plaintextOffset = 1000;
  const auto firstChunk = chunkPartFields(10, 0, 0, 1000);
  expectRules<Resource>(
      chunkedResourceFields(1, 2, 3, 10, 2, 1000),
      {{"no parts", withParts({}), Error::invalidResourceLayout},
       {"one chunk file twice", withParts({firstChunk, inFirstChunksFile}), Error::invalidResourceLayout},
       {"chunk's place is not its ordinal", withParts({firstChunk, outOfPlace}), Error::invalidResourceLayout},
       {"a gap", withParts({firstChunk, chunkPartFields(11, 1, 1001, 999)}), Error::invalidResourceLayout},
       {"short of the size", [](auto& f) { f.plaintextByteCount = 2001; }, Error::invalidResourceLayout},
       {"chunk then pack", withParts({firstChunk, secondPack}), Error::invalidResourceLayout}});
  expectRules<Resource>(
      packedResourceFields(1, 2, 3, 4, 0),
      {{"pack place 31", withParts({packPartFields(4, 31, 1000, 1)}), std::nullopt},
       {"pack place 32", withParts({packPartFields(4, 32, 1000, 1)}), Error::invalidResourceLayout},
       {"pack with another digest", withParts({packPartFields(4, 0, 1000, 9)}), Error::invalidResourceLayout},
       {"two parts in a pack",
        [&](auto& f) {
          f.plaintextByteCount = 2000;
          withParts({packPartFields(4, 0, 1000, 1), secondPack})(f);
        },
        Error::invalidResourceLayout}});

  // The largest resource: 4,096 chunks of a frame's worth is exactly 2^36 bytes and still fits
  // the record limits; one part more breaks the part count.
  expectRules<Resource>(chunkedResourceFields(1, 2, 3, 100, 4096, 16777216), {{"largest", [](auto&) {}, std::nullopt}});
  EXPECT_EQ(errorOf(Resource::make(chunkedResourceFields(1, 2, 3, 100, 4097, 1))), Error::invalidResourceLayout);
}

TEST(BackupManifestRecordRules, FolderAlbumMembershipAndTombstone) {
  for (const std::string_view name :
       std::initializer_list<std::string_view>{"", " \t\n\r ", "\u3000", textOfByteCount(513), invalidUTF8()}) {
    auto folder = folderFields(1, 2);
    folder.name = name;
    EXPECT_EQ(errorOf(Folder::make(folder)), Error::invalidValue) << name;
    auto album = albumFields(1, 2, 3);
    album.name = name;
    EXPECT_EQ(errorOf(Album::make(album)), Error::invalidText) << name;
  }
  expectRules<Folder>(
      folderFields(1, 2),
      {{"parent before name",
        [](auto& f) {
          f.parentFolderIdentifier = bytesOf(2, 15);
          f.name = "";
        },
        Error::invalidIdentifier},
       {"its own parent", [](auto& f) { f.parentFolderIdentifier = identifier(1); }, Error::invalidValue},
       {"no parent", [](auto& f) { f.parentFolderIdentifier = std::nullopt; }, std::nullopt}});
  expectRules<Album>(
      albumFields(1, 2, 3),
      {{"cover before name",
        [](auto& f) {
          f.coverItemIdentifier = bytesOf(3, 15);
          f.name = "";
        },
        Error::invalidIdentifier},
       {"15-byte folder", [](auto& f) { f.parentFolderIdentifier = bytesOf(2, 15); }, Error::invalidIdentifier},
       {"no folder, no cover", [](auto& f) { f.parentFolderIdentifier = f.coverItemIdentifier = std::nullopt; },
        std::nullopt}});
  expectRules<BackupAlbumMembershipRecordV1>(
      membershipFields(1, 2),
      {{"17-byte item", [](auto& f) { f.itemIdentifier = bytesOf(1, 17); }, Error::invalidIdentifier},
       {"extreme values",
        [](auto& f) {
          f.manualPosition = std::numeric_limits<std::int64_t>::min();
          f.addedAtUTCMilliseconds = std::numeric_limits<std::int64_t>::max();
        },
        std::nullopt}});
  expectRules<BackupTombstoneRecordV1>(
      tombstoneFields(1, identifiers({2})),
      {{"15-byte item", [](auto& f) { f.itemIdentifier = bytesOf(1, 15); }, Error::invalidIdentifier},
       {"no resources", [](auto& f) { f.resourceIdentifiers = {}; }, std::nullopt},
       {"9 resources",
        [](auto& f) {
          f.resourceIdentifiers = identifiers({1, 2, 3, 4, 5, 6, 7, 8, 9});
        },
        Error::invalidValue},
       {"resources descending",
        [](auto& f) {
          f.resourceIdentifiers = identifiers({5, 4});
        },
        Error::invalidValue}});
}

TEST(BackupManifestRecordCodecV1, EveryKindRoundTripsAndRefusesEveryFieldOfTheWrongType) {
  for (const Record& record : oneOfEachKind()) {
    const auto blob = made(Codec::recordBlob(record));
    EXPECT_TRUE(ByteOrder::equal(blob.sortKey(), record.sortKey()));
    EXPECT_EQ(Codec::decodeRecord(record.kind(), blob.canonicalRecord()), record);
    const Value::Map valid = mapOf(record);
    for (const auto& [key, value] : valid) {
      const Value wrong = value.kind() == CBORKind::textString ? Value::boolean(true) : Value::textString("x");
      EXPECT_EQ(decodeError(record.kind(), with(valid, {{key, wrong}})), Error::malformedRecord) << "key " << key;
    }
    Value::Map missing = valid;
    missing.erase(std::prev(missing.end()));
    EXPECT_EQ(decodeError(record.kind(), Value::map(missing)), Error::malformedRecord);
    EXPECT_EQ(decodeError(record.kind(), with(valid, {{valid.size(), Value::null()}})), Error::malformedRecord);
    EXPECT_EQ(decodeError(record.kind(), Value::array({Value::null()})), Error::malformedRecord);
    const Kind other = record.kind() == Kind::item ? Kind::tombstone : Kind::item;
    EXPECT_EQ(decodeError(other, record.cborValue()), Error::malformedRecord);
  }
}

// Types before signed ranges before the record's rules, whatever the fields' order.
TEST(BackupManifestRecordCodecV1, RefusesFieldsInTheOrderOfItsChecks) {
  const Value::Map itemMap = mapOf(item(1));
  const Value::Map resource = mapOf(made(BackupMediaResourceRecordV1::make(chunkedResourceFields(1, 2, 3, 4, 2, 10))));
  const Value beyondSigned = Value::unsignedInteger(std::uint64_t{1} << 63);
  const Value shortIdentifier = Value::byteString(bytesOf(1, 15));
  const auto part = [&](std::uint64_t position, Value value) {  // changes the second part
    Value::Array parts = *resource.at(11).asArray();
    Value::Array items = *parts[1].asArray();
    items.resize(std::max<std::size_t>(items.size(), position + 1), Value::null());
    items[position] = std::move(value);
    parts[1] = Value::array(std::move(items));
    return Value::array(std::move(parts));
  };
  const struct {
    std::string name;
    Kind kind;
    Value value;
    std::optional<Error> expected;
  } cases[] = {
      {"signed beyond 64 bits", Kind::item, with(itemMap, {{3, beyondSigned}}), Error::invalidValue},
      {"type before signed range", Kind::item, with(itemMap, {{3, beyondSigned}, {13, Value::null()}}),
       Error::malformedRecord},
      {"signed range before rules", Kind::item, with(itemMap, {{1, shortIdentifier}, {3, beyondSigned}}),
       Error::invalidValue},
      {"rules after decoding", Kind::item, with(itemMap, {{1, shortIdentifier}}), Error::invalidIdentifier},
      {"kind 3", Kind::item, with(itemMap, {{2, Value::unsignedInteger(3)}}), Error::malformedRecord},
      {"container 2", Kind::resource, with(resource, {{11, part(4, Value::unsignedInteger(2))}}),
       Error::malformedRecord},
      {"part of 10 items", Kind::resource, with(resource, {{11, part(9, Value::unsignedInteger(0))}}),
       Error::malformedRecord},
      {"required field null", Kind::resource, with(resource, {{9, Value::null()}}), Error::malformedRecord},
      {"optional fields null", Kind::resource, with(resource, {{6, Value::null()}, {7, Value::null()}}), std::nullopt},
      {"parts are built first", Kind::resource,
       with(resource, {{1, shortIdentifier}, {11, part(8, Value::byteString(bytesOf(1, 31)))}}), Error::invalidDigest},
  };
  for (const auto& row : cases) EXPECT_EQ(decodeError(row.kind, row.value), row.expected) << row.name;

  const Bytes validItem = encodedUnchecked(Value::map(itemMap));
  Bytes trailing = validItem;
  trailing.push_back(0x00);
  EXPECT_EQ(errorOf(Codec::decodeRecord(Kind::item, trailing)), Error::malformedRecord);
  EXPECT_EQ(errorOf(Codec::decodeRecord(Kind::item, ByteView(validItem).first(validItem.size() - 1))),
            Error::malformedRecord);
}

// A stored record has one spelling and one sort key; anything else is refused, and a section
// with one bad blob yields no records at all.
TEST(BackupManifestRecordCodecV1, RefusesBlobsThatAreNotTheRecordsOwnForm) {
  const Bytes canonical = made(Codec::encodedRecord(item(5)));
  constexpr std::size_t keyOne = 1 + 1 + 2 + 36;  // map head, key 0, text head, the 36-byte schema
  ASSERT_EQ(canonical[keyOne + 1], 0x50);
  Bytes longHead = canonical;
  longHead[keyOne + 1] = 0x58;  // 16 bytes spelled 0x58 0x10 instead of 0x50
  longHead.insert(longHead.begin() + keyOne + 2, 0x10);
  const Record folder = made(BackupAlbumFolderRecordV1::make(folderFields(5, std::nullopt)));
  const struct {
    std::string name;
    BackupManifestRecordBlobV1 blob;
    Error expected;
  } cases[] = {
      {"non-minimal length", blobOf(identifier(5), longHead), Error::malformedRecord},
      {"another record's sort key", blobOf(identifier(6), canonical), Error::malformedRecord},
      {"a 17-byte sort key", blobOf(bytesOf(5, 17), canonical), Error::malformedRecord},
      {"a folder in an item section", blobOf(identifier(5), made(Codec::encodedRecord(folder))),
       Error::malformedRecord},
      {"a record that breaks its rules",
       blobOf(bytesOf(5, 15), encodedUnchecked(with(mapOf(item(5)), {{1, Value::byteString(bytesOf(5, 15))}}))),
       Error::invalidIdentifier},
  };
  const auto good = blobOf(identifier(1), made(Codec::encodedRecord(item(1))));
  for (const auto& row : cases) {
    const Bytes name(16, 9);
    const auto section = made(BackupManifestSectionV1::make(name, name, name, 0, Kind::item,
                                                            BackupManifestCompressionV1::none, {good, row.blob}));
    EXPECT_EQ(errorOf(Codec::records(section)), row.expected) << row.name;
  }
}

// A payload key wraps under the nonce it is given and unwraps only under the same master key,
// package and library domain, into a record of the same identifier, scope and bound identifier.
TEST(BackupManifestRecordCodecV1, PayloadKeysUnwrapOnlyUnderTheirBinding) {
  const auto wrap = [](ByteView key, ByteView keyIdentifier, ByteView package, ByteView bpmk,
                       const AESGCMFrameV1::NonceSource& nonces = {}) {
    return Codec::wrapPayloadKey(key, keyIdentifier, Scope::resource, identifier(2), package, identifier(4), bpmk,
                                 nonces);
  };
  const auto unwrap = [](ByteView frame, std::uint64_t keyIdentifier, Scope scope, std::uint64_t bound,
                         ByteView package, ByteView bpmk) {
    const auto record = made(BackupPayloadKeyRecordV1::make({.identifier = identifier(keyIdentifier),
                                                             .scope = scope,
                                                             .boundIdentifier = identifier(bound),
                                                             .wrappedKeyFrame = frame}));
    return Codec::unwrapPayloadKey(record, package, identifier(4), bpmk);
  };
  const Bytes frame = made(wrap(kPayloadKey, identifier(1), identifier(3), kBPMK)).wrappedKeyFrame();
  EXPECT_EQ(unwrap(frame, 1, Scope::resource, 2, identifier(3), kBPMK), Bytes(kPayloadKey.begin(), kPayloadKey.end()));
  EXPECT_NE(made(wrap(kPayloadKey, identifier(1), identifier(3), kBPMK)).wrappedKeyFrame(), frame);

  EXPECT_EQ(errorOf(wrap(bytesOf(0x4B, 31), bytesOf(1, 15), identifier(3), kBPMK)), Error::invalidKey);
  EXPECT_EQ(errorOf(wrap(kPayloadKey, identifier(1), identifier(3), bytesOf(0x4D, 33))), Error::invalidKey);
  EXPECT_EQ(errorOf(wrap(kPayloadKey, bytesOf(1, 15), identifier(3), kBPMK)), Error::invalidIdentifier);
  EXPECT_EQ(errorOf(wrap(kPayloadKey, identifier(1), identifier(3), kBPMK,
                         AESGCMFrameV1::NonceSource::fixed(bytesOf(0x4E, 11)))),
            Error::verificationFailed);
  EXPECT_EQ(errorOf(unwrap(frame, 1, Scope::resource, 2, identifier(3), bytesOf(0x4D, 31))), Error::invalidKey);
  EXPECT_EQ(errorOf(unwrap(frame, 1, Scope::resource, 2, identifier(3), bytesOf(0x4C, 32))), Error::verificationFailed);
  EXPECT_EQ(errorOf(unwrap(frame, 1, Scope::resource, 2, identifier(5), kBPMK)), Error::verificationFailed);
  EXPECT_EQ(errorOf(unwrap(frame, 9, Scope::resource, 2, identifier(3), kBPMK)), Error::verificationFailed);
  EXPECT_EQ(errorOf(unwrap(frame, 1, Scope::pack, 2, identifier(3), kBPMK)), Error::verificationFailed);
  EXPECT_EQ(errorOf(unwrap(frame, 1, Scope::resource, 9, identifier(3), kBPMK)), Error::verificationFailed);
  for (std::size_t bit = 0; bit < frame.size() * 8; ++bit) {
    Bytes tampered = frame;
    tampered[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
    EXPECT_EQ(errorOf(unwrap(tampered, 1, Scope::resource, 2, identifier(3), kBPMK)), Error::verificationFailed)
        << "bit " << bit;
  }

  // Envelopes sealed correctly, so that the frame opens, but whose content is wrong.
  const Value::Map valid{{0, Value::textString(std::string(BackupFormatV1::payloadKeyEnvelopeSchemaIdentifier))},
                         {1, Value::byteString(identifier(1))},
                         {2, Value::unsignedInteger(1)},
                         {3, Value::byteString(identifier(2))},
                         {4, Value::byteString(kPayloadKey)}};
  const auto sealed = [&](std::uint64_t key, Value value) {  // under the record limits, looser than the reader's
    const Bytes plaintext = encodedUnchecked(with(valid, {{key, std::move(value)}}));
    const auto data = made(BackupAuthenticatedDataV1::make(BackupAADDomainV1::payloadKeyEnvelope, identifier(3),
                                                           identifier(4), identifier(1), 0, std::nullopt));
    return made(AESGCMFrameV1::seal(plaintext, kBPMK, made(data.encoded()), 256));
  };
  EXPECT_EQ(unwrap(sealed(2, Value::unsignedInteger(1)), 1, Scope::resource, 2, identifier(3), kBPMK),
            Bytes(kPayloadKey.begin(), kPayloadKey.end()));
  const struct {
    std::string name;
    Bytes frame;
    Error expected;
  } cases[] = {
      {"another scope", sealed(2, Value::unsignedInteger(0)), Error::verificationFailed},
      {"another key identifier", sealed(1, Value::byteString(identifier(9))), Error::verificationFailed},
      {"a 31-byte key", sealed(4, Value::byteString(bytesOf(0x4B, 31))), Error::verificationFailed},
      {"a 33-byte key", sealed(4, Value::byteString(bytesOf(0x4B, 33))), Error::malformedRecord},
      {"another schema", sealed(0, Value::textString("com.galdrine.backup.payload-key-envelope.v2")),
       Error::malformedRecord},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(errorOf(unwrap(row.frame, 1, Scope::resource, 2, identifier(3), kBPMK)), row.expected) << row.name;
  }
}

}  // namespace galdrine::format
