// The stored form of manifest records: known bytes, round trips of every kind, the decoder's
// refusals in the order of its checks, the uniqueness of a blob's bytes and sort key, sections
// made and read, and the wrapping of payload keys.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <variant>

#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/cbor/DeterministicCBOR.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "support/ManifestTestRecords.hpp"

namespace galdrine::format {

using namespace testsupport::ManifestTestRecords;

namespace {

namespace Codec = BackupManifestRecordCodecV1;
using Kind = BackupManifestSectionKindV1;
using Record = BackupManifestRecordV1;
using Value = CBORValue;
using Scope = BackupPayloadKeyScopeV1;

Bytes hex(std::string_view text) { return *ByteText::parseLowerHex(text); }

// One record of each kind, optional fields both present and absent among them.
std::vector<Record> oneOfEachKind() {
  using namespace testsupport::ManifestTestRecords;
  auto trashed = itemFields(20, identifiers({21}));
  trashed.lifecycle = BackupMediaLifecycleV1::trash;
  trashed.trashDateUTCMilliseconds = -86400000;
  trashed.displayTimeZoneSeconds = std::nullopt;
  return {
      made(BackupPayloadKeyRecordV1::make(payloadKeyFields(1, Scope::resource, 3))),
      made(BackupMediaItemRecordV1::make(itemFields(2, identifiers({3, 4})))),
      made(BackupMediaItemRecordV1::make(trashed)),
      made(BackupMediaResourceRecordV1::make(packedResourceFields(3, 2, 5, 6, 31))),
      made(BackupMediaResourceRecordV1::make(chunkedResourceFields(4, 2, 7, 8, 3, 5000))),
      made(BackupAlbumFolderRecordV1::make(folderFields(9, std::nullopt))),
      made(BackupAlbumRecordV1::make(albumFields(10, 9, 2))),
      made(BackupAlbumRecordV1::make(albumFields(11, std::nullopt, std::nullopt))),
      made(BackupAlbumMembershipRecordV1::make(membershipFields(10, 2))),
      made(BackupTombstoneRecordV1::make(tombstoneFields(12, identifiers({13, 14})))),
      made(BackupTombstoneRecordV1::make(tombstoneFields(15, {}))),
  };
}

Value::Map mapOf(const Record& record) { return *record.cborValue().asMap(); }

Bytes encodedUnchecked(const Value& value) {
  const auto bytes = DeterministicCBOR::encode(value, Codec::recordLimits);
  EXPECT_TRUE(bytes.has_value());
  return bytes ? *bytes : Bytes{};
}

std::optional<Error> decodeError(Kind kind, const Value& value) { return errorOf(Codec::decodeRecord(kind, encodedUnchecked(value))); }

BackupManifestSectionV1 sectionOfBlobs(Kind kind, std::vector<BackupManifestRecordBlobV1> blobs) {
  return made(BackupManifestSectionV1::make(Bytes(identifier(90).begin(), identifier(90).end()),
                                                    Bytes(identifier(91).begin(), identifier(91).end()),
                                                    Bytes(identifier(92).begin(), identifier(92).end()), 0, kind,
                                                    BackupManifestCompressionV1::none, std::move(blobs)));
}

BackupManifestRecordBlobV1 blobOf(ByteView sortKey, Bytes canonical) {
  return made(BackupManifestRecordBlobV1::make(Bytes(sortKey.begin(), sortKey.end()), std::move(canonical)));
}

}  // namespace

TEST(BackupManifestRecordCodecV1, EncodesAMembershipAsItsKnownBytes) {
  auto fields = membershipFields(1, 2);
  fields.manualPosition = -1;
  fields.addedAtUTCMilliseconds = 24;
  const auto blob = Codec::recordBlob(made(BackupAlbumMembershipRecordV1::make(fields)));
  ASSERT_TRUE(blob.has_value());
  const std::string schemaHex = ByteText::lowerHex(ByteText::view("com.galdrine.backup.manifest.membership.v1"));
  const std::string album = "00000000000000" "01" "a5a5a5a5a5a5a5a5";
  const std::string item = "00000000000000" "02" "a5a5a5a5a5a5a5a5";
  EXPECT_EQ(blob->canonicalRecord(), hex("a5" "00782a" + schemaHex + "0150" + album + "0250" + item + "0320" "041818"));
  EXPECT_EQ(blob->sortKey(), hex(album + item));
}

TEST(BackupManifestRecordCodecV1, EveryKindRoundTripsByteForByte) {
  for (const Record& record : oneOfEachKind()) {
    const auto blob = Codec::recordBlob(record);
    ASSERT_TRUE(blob.has_value());
    EXPECT_TRUE(ByteOrder::equal(blob->sortKey(), record.sortKey()));
    const auto decoded = Codec::decodeRecord(record.kind(), blob->canonicalRecord());
    ASSERT_TRUE(decoded.has_value()) << static_cast<int>(record.kind());
    EXPECT_EQ(*decoded, record);
    EXPECT_EQ(Codec::encodedRecord(*decoded), blob->canonicalRecord());
  }
}

TEST(BackupManifestRecordCodecV1, RefusesEveryFieldOfTheWrongType) {
  for (const Record& record : oneOfEachKind()) {
    const Value::Map valid = mapOf(record);
    for (const auto& [key, value] : valid) {
      Value::Map changed = valid;
      changed.insert_or_assign(key, value.kind() == CBORKind::textString ? Value::boolean(true) : Value::textString("x"));
      EXPECT_EQ(decodeError(record.kind(), Value::map(changed)), Error::malformedRecord) << "key " << key;
    }
    Value::Map missing = valid;
    missing.erase(std::prev(missing.end()));
    EXPECT_EQ(decodeError(record.kind(), Value::map(missing)), Error::malformedRecord);
    Value::Map extra = valid;
    extra.emplace(valid.size(), Value::null());
    EXPECT_EQ(decodeError(record.kind(), Value::map(extra)), Error::malformedRecord);
    EXPECT_EQ(decodeError(record.kind(), Value::array({Value::null()})), Error::malformedRecord);
    for (const Record& other : oneOfEachKind()) {
      if (other.kind() != record.kind()) {
        EXPECT_EQ(decodeError(other.kind(), record.cborValue()), Error::malformedRecord);
      }
    }
  }
}

// Types before signed ranges before the record's rules, whatever the fields' order.
TEST(BackupManifestRecordCodecV1, RefusesFieldsInTheOrderOfItsChecks) {
  const auto record = [](auto result) { return mapOf(Record(made(std::move(result)))); };
  const Value::Map item = record(BackupMediaItemRecordV1::make(itemFields(1, identifiers({2}))));
  const Value::Map resource = record(BackupMediaResourceRecordV1::make(chunkedResourceFields(1, 2, 3, 4, 2, 10)));
  const Value::Map folder = record(BackupAlbumFolderRecordV1::make(folderFields(1, 2)));
  const Value beyondSigned = Value::unsignedInteger(std::uint64_t{1} << 63);
  const Value belowSigned = Value::negative(std::uint64_t{1} << 63);
  const Value shortIdentifier = Value::byteString(bytesOf(1, 15));
  const auto with = [](Value::Map map, std::initializer_list<std::pair<std::uint64_t, Value>> changes) {
    for (const auto& [key, value] : changes) map.insert_or_assign(key, value);
    return Value::map(std::move(map));
  };
  const auto part = [&](std::size_t index, std::uint64_t position, Value value) {
    Value::Array parts = *resource.at(11).asArray();
    Value::Array items = *parts[index].asArray();
    if (position < items.size()) {
      items[position] = std::move(value);
    } else {
      items.push_back(std::move(value));
    }
    parts[index] = Value::array(std::move(items));
    return Value::array(std::move(parts));
  };
  struct DecodeCase {
    std::string name;
    Kind kind;
    Value value;
    std::optional<Error> expected;
  };
  const std::vector<DecodeCase> cases{
      {"signed beyond 64 bits", Kind::item, with(item, {{3, beyondSigned}}), Error::invalidValue},
      {"signed below 64 bits", Kind::item, with(item, {{6, belowSigned}}), Error::invalidValue},
      {"optional signed beyond 64 bits", Kind::item, with(item, {{10, beyondSigned}}), Error::invalidValue},
      {"type before signed range", Kind::item, with(item, {{3, beyondSigned}, {13, Value::null()}}), Error::malformedRecord},
      {"signed range before rules", Kind::item, with(item, {{1, shortIdentifier}, {3, beyondSigned}}), Error::invalidValue},
      {"rules after decoding", Kind::item, with(item, {{1, shortIdentifier}}), Error::invalidIdentifier},
      {"negative for unsigned", Kind::resource, with(resource, {{5, Value::negative(0)}}), Error::malformedRecord},
      {"kind 3", Kind::item, with(item, {{2, Value::unsignedInteger(3)}}), Error::malformedRecord},
      {"date source 5", Kind::item, with(item, {{5, Value::unsignedInteger(5)}}), Error::malformedRecord},
      {"lifecycle 2", Kind::item, with(item, {{9, Value::unsignedInteger(2)}}), Error::malformedRecord},
      {"source 5", Kind::item, with(item, {{11, Value::unsignedInteger(5)}}), Error::malformedRecord},
      {"role 4", Kind::resource, with(resource, {{3, Value::unsignedInteger(4)}}), Error::malformedRecord},
      {"container 2", Kind::resource, with(resource, {{11, part(1, 4, Value::unsignedInteger(2))}}), Error::malformedRecord},
      {"part of 10 items", Kind::resource, with(resource, {{11, part(0, 9, Value::unsignedInteger(0))}}), Error::malformedRecord},
      {"part field of the wrong type", Kind::resource, with(resource, {{11, part(1, 3, Value::null())}}), Error::malformedRecord},
      {"required field null", Kind::resource, with(resource, {{9, Value::null()}}), Error::malformedRecord},
      {"optional field null", Kind::resource, with(resource, {{6, Value::null()}, {7, Value::null()}}), std::nullopt},
      {"parts are built first", Kind::resource, with(resource, {{1, shortIdentifier}, {11, part(1, 8, Value::byteString(bytesOf(1, 31)))}}), Error::invalidDigest},
      {"sort mode 5", Kind::album, with(record(BackupAlbumRecordV1::make(albumFields(1, 2, 3))), {{5, Value::unsignedInteger(5)}}), Error::malformedRecord},
      {"scope 2", Kind::payloadKey, with(record(BackupPayloadKeyRecordV1::make(payloadKeyFields(1, Scope::pack, 2))), {{2, Value::unsignedInteger(2)}}), Error::malformedRecord},
      {"folder position beyond 64 bits", Kind::folder, with(folder, {{4, beyondSigned}}), Error::invalidValue},
      {"resource list of text", Kind::tombstone, with(record(BackupTombstoneRecordV1::make(tombstoneFields(1, {}))), {{3, Value::array({Value::textString("x")})}}), Error::malformedRecord},
  };
  for (const auto& row : cases) EXPECT_EQ(decodeError(row.kind, row.value), row.expected) << row.name;

  const Bytes validItem = encodedUnchecked(Value::map(item));
  Bytes trailing = validItem;
  trailing.push_back(0x00);
  EXPECT_EQ(errorOf(Codec::decodeRecord(Kind::item, trailing)), Error::malformedRecord);
  EXPECT_EQ(errorOf(Codec::decodeRecord(Kind::item, ByteView(validItem).first(validItem.size() - 1))), Error::malformedRecord);
  EXPECT_EQ(errorOf(Codec::decodeRecord(Kind::item, Bytes{})), Error::malformedRecord);
}

TEST(BackupManifestRecordCodecV1, ReadsBackTheSectionItMade) {
  std::vector<Record> items;
  for (const std::uint64_t number : {7u, 3u, 5u}) items.push_back(made(BackupMediaItemRecordV1::make(itemFields(number, identifiers({1})))));
  const auto section = Codec::makeSection(identifier(90), identifier(91), identifier(92), 4, Kind::item, items);
  ASSERT_TRUE(section.has_value());
  EXPECT_EQ(section->ordinal(), 4u);
  EXPECT_EQ(section->compression(), BackupManifestCompressionV1::none);
  const auto records = Codec::records(*section);
  ASSERT_TRUE(records.has_value());
  EXPECT_EQ(*records, (std::vector<Record>{items[1], items[2], items[0]}));  // by sort key
}

TEST(BackupManifestRecordCodecV1, RefusesToMakeSectionsOfWrongRecordSets) {
  using Failure = BackupManifestRecordCodecV1Failure;
  const Record item = made(BackupMediaItemRecordV1::make(itemFields(1, identifiers({2}))));
  const Record sameItemAgain = made(BackupMediaItemRecordV1::make(itemFields(1, identifiers({3}))));
  const Record folder = made(BackupAlbumFolderRecordV1::make(folderFields(2, std::nullopt)));
  const auto make = [](ByteView identifier, std::uint64_t ordinal, std::vector<Record> records) {
    return errorOf(Codec::makeSection(identifier, testsupport::ManifestTestRecords::identifier(91),
                                      testsupport::ManifestTestRecords::identifier(92), ordinal, Kind::item, records));
  };
  EXPECT_EQ(make(identifier(90), 0, {}), Failure(Error::invalidRecordKind));
  EXPECT_EQ(make(identifier(90), 0, {item, folder}), Failure(Error::invalidRecordKind));
  EXPECT_EQ(make(identifier(90), 0, {item, sameItemAgain}), Failure(BackupGraphV1Error::invalidRecordSet));
  EXPECT_EQ(make(identifier(90), 4096, {item}), Failure(BackupGraphV1Error::invalidRecordSet));
  EXPECT_EQ(make(bytesOf(90, 15), 0, {item}), Failure(BackupGraphV1Error::invalidIdentifier));
}

// A stored record has one spelling and one sort key; anything else is refused, and a section
// with one bad blob yields no records at all.
TEST(BackupManifestRecordCodecV1, RefusesBlobsThatAreNotTheRecordsOwnForm) {
  const Record item = made(BackupMediaItemRecordV1::make(itemFields(5, identifiers({1}))));
  const Bytes canonical = *Codec::encodedRecord(item);
  constexpr std::size_t keyOne = 1 + 1 + 2 + 36;  // map head, key 0, text head, the 36-byte schema
  ASSERT_EQ(canonical[keyOne], 0x01);
  ASSERT_EQ(canonical[keyOne + 1], 0x50);
  Bytes longHead = canonical;
  longHead[keyOne + 1] = 0x58;  // 16 bytes spelled 0x58 0x10 instead of 0x50
  longHead.insert(longHead.begin() + keyOne + 2, 0x10);
  Bytes trailing = canonical;
  trailing.push_back(0xF6);
  auto shortIdentifierItem = mapOf(item);
  shortIdentifierItem.insert_or_assign(1, Value::byteString(bytesOf(5, 15)));
  const Record folder = made(BackupAlbumFolderRecordV1::make(folderFields(5, std::nullopt)));

  struct BlobCase {
    std::string name;
    BackupManifestRecordBlobV1 blob;
    Error expected;
  };
  const std::vector<BlobCase> cases{
      {"non-minimal length", blobOf(identifier(5), longHead), Error::malformedRecord},
      {"trailing byte", blobOf(identifier(5), trailing), Error::malformedRecord},
      {"another record's sort key", blobOf(identifier(6), canonical), Error::malformedRecord},
      {"a 17-byte sort key", blobOf(bytesOf(5, 17), canonical), Error::malformedRecord},
      {"a folder in an item section", blobOf(identifier(5), *Codec::encodedRecord(folder)), Error::malformedRecord},
      {"a record that breaks its rules", blobOf(bytesOf(5, 15), encodedUnchecked(Value::map(shortIdentifierItem))), Error::invalidIdentifier},
  };
  for (const auto& row : cases) {
    const auto good = blobOf(identifier(1), *Codec::encodedRecord(made(BackupMediaItemRecordV1::make(itemFields(1, identifiers({1}))))));
    EXPECT_EQ(errorOf(Codec::records(sectionOfBlobs(Kind::item, {good, row.blob}))), row.expected) << row.name;
  }
}

TEST(BackupManifestRecordCodecV1, WrapsAndUnwrapsAPayloadKey) {
  const ByteView key = bytesOf(0x4B, 32);
  const ByteView bpmk = bytesOf(0x4D, 32);
  const auto wrapped = Codec::wrapPayloadKey(key, identifier(1), Scope::pack, identifier(2), identifier(3), identifier(4), bpmk);
  ASSERT_TRUE(wrapped.has_value());
  EXPECT_EQ(wrapped->identifier(), *FixedBytes::identifier(identifier(1)));
  EXPECT_EQ(wrapped->scope(), Scope::pack);
  EXPECT_EQ(Codec::unwrapPayloadKey(*wrapped, identifier(3), identifier(4), bpmk), Bytes(key.begin(), key.end()));

  const auto again = Codec::wrapPayloadKey(key, identifier(1), Scope::pack, identifier(2), identifier(3), identifier(4), bpmk);
  EXPECT_NE(again->wrappedKeyFrame(), wrapped->wrappedKeyFrame());  // a fresh nonce each time
  const ByteView nonce = bytesOf(0x4E, 12);
  const auto fixture = [&] {
    return Codec::wrapPayloadKeyDeterministicFixture(key, identifier(1), Scope::pack, identifier(2), identifier(3), identifier(4), bpmk, nonce);
  };
  EXPECT_EQ(fixture(), fixture());
  EXPECT_EQ(Codec::unwrapPayloadKey(*fixture(), identifier(3), identifier(4), bpmk), Bytes(key.begin(), key.end()));

  const auto wrap = [&](ByteView payloadKey, ByteView keyIdentifier, ByteView packageIdentifier, ByteView masterKey) {
    return errorOf(Codec::wrapPayloadKey(payloadKey, keyIdentifier, Scope::pack, identifier(2), packageIdentifier, identifier(4), masterKey));
  };
  EXPECT_EQ(wrap(bytesOf(0x4B, 31), identifier(1), identifier(3), bpmk), Error::invalidKey);
  EXPECT_EQ(wrap(key, identifier(1), identifier(3), bytesOf(0x4D, 33)), Error::invalidKey);
  EXPECT_EQ(wrap(bytesOf(0x4B, 31), bytesOf(1, 15), identifier(3), bpmk), Error::invalidKey);
  EXPECT_EQ(wrap(key, bytesOf(1, 15), identifier(3), bpmk), Error::invalidIdentifier);
  EXPECT_EQ(wrap(key, identifier(1), bytesOf(3, 17), bpmk), Error::invalidIdentifier);
  EXPECT_EQ(errorOf(Codec::wrapPayloadKeyDeterministicFixture(key, identifier(1), Scope::pack, identifier(2), identifier(3),
                                                              identifier(4), bpmk, bytesOf(0x4E, 11))),
            Error::verificationFailed);
}

TEST(BackupManifestRecordCodecV1, UnwrapsOnlyUnderTheSameKeyPackageDomainAndIdentifier) {
  const ByteView bpmk = bytesOf(0x4D, 32);
  const auto wrapped = made(Codec::wrapPayloadKey(bytesOf(0x4B, 32), identifier(1), Scope::resource, identifier(2), identifier(3),
                                                  identifier(4), bpmk));
  const auto unwrap = [&](const BackupPayloadKeyRecordV1& record, ByteView package, ByteView domain, ByteView key) {
    return errorOf(Codec::unwrapPayloadKey(record, package, domain, key));
  };
  EXPECT_EQ(unwrap(wrapped, identifier(3), identifier(4), bytesOf(0x4D, 31)), Error::invalidKey);
  EXPECT_EQ(unwrap(wrapped, identifier(3), identifier(4), bytesOf(0x4C, 32)), Error::verificationFailed);
  EXPECT_EQ(unwrap(wrapped, identifier(5), identifier(4), bpmk), Error::verificationFailed);
  EXPECT_EQ(unwrap(wrapped, identifier(3), identifier(5), bpmk), Error::verificationFailed);
  EXPECT_EQ(unwrap(wrapped, bytesOf(3, 15), identifier(4), bpmk), Error::verificationFailed);
  const auto moved = [&](std::uint64_t keyIdentifier, Scope scope, std::uint64_t bound) {
    return made(BackupPayloadKeyRecordV1::make({.identifier = identifier(keyIdentifier), .scope = scope,
                                                        .boundIdentifier = identifier(bound), .wrappedKeyFrame = wrapped.wrappedKeyFrame()}));
  };
  EXPECT_EQ(unwrap(moved(9, Scope::resource, 2), identifier(3), identifier(4), bpmk), Error::verificationFailed);
  EXPECT_EQ(unwrap(moved(1, Scope::pack, 2), identifier(3), identifier(4), bpmk), Error::verificationFailed);
  EXPECT_EQ(unwrap(moved(1, Scope::resource, 9), identifier(3), identifier(4), bpmk), Error::verificationFailed);

  for (std::size_t bit = 0; bit < wrapped.wrappedKeyFrame().size() * 8; ++bit) {
    Bytes tampered = wrapped.wrappedKeyFrame();
    tampered[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
    const auto record = made(BackupPayloadKeyRecordV1::make(
        {.identifier = identifier(1), .scope = Scope::resource, .boundIdentifier = identifier(2), .wrappedKeyFrame = tampered}));
    EXPECT_EQ(unwrap(record, identifier(3), identifier(4), bpmk), Error::verificationFailed) << "bit " << bit;
  }
}

// Envelopes sealed correctly, so that the frame opens, but whose content is wrong.
TEST(BackupManifestRecordCodecV1, RefusesAnOpenedEnvelopeThatNamesAnotherKey) {
  const ByteView bpmk = bytesOf(0x4D, 32);
  const Value::Map valid{
      {0, Value::textString(std::string(BackupFormatV1::payloadKeyEnvelopeSchemaIdentifier))},
      {1, Value::byteString(identifier(1))},
      {2, Value::unsignedInteger(1)},
      {3, Value::byteString(identifier(2))},
      {4, Value::byteString(bytesOf(0x4B, 32))},
  };
  const auto unwrapEnvelope = [&](const Bytes& plaintext) {
    const auto data = made(BackupAuthenticatedDataV1::make(BackupAADDomainV1::payloadKeyEnvelope, identifier(3),
                                                                   identifier(4), identifier(1), 0, std::nullopt));
    const auto frame = made(AESGCMFrameV1::seal(plaintext, bpmk, made(data.encoded()), 256));
    const auto record = made(BackupPayloadKeyRecordV1::make(
        {.identifier = identifier(1), .scope = Scope::resource, .boundIdentifier = identifier(2), .wrappedKeyFrame = frame}));
    return Codec::unwrapPayloadKey(record, identifier(3), identifier(4), bpmk);
  };
  const auto with = [&](std::uint64_t key, Value value) {
    Value::Map changed = valid;
    changed.insert_or_assign(key, std::move(value));
    return made(DeterministicCBOR::encode(Value::map(changed), Codec::recordLimits));  // looser than the reader's
  };
  Value::Map withoutKey = valid;
  withoutKey.erase(4);

  EXPECT_EQ(unwrapEnvelope(with(0, valid.at(0))), Bytes(bytesOf(0x4B, 32).begin(), bytesOf(0x4B, 32).end()));
  struct EnvelopeCase {
    std::string name;
    Bytes plaintext;
    Error expected;
  };
  const std::vector<EnvelopeCase> cases{
      {"another scope", with(2, Value::unsignedInteger(0)), Error::verificationFailed},
      {"a scope out of the list", with(2, Value::unsignedInteger(7)), Error::verificationFailed},
      {"another bound identifier", with(3, Value::byteString(identifier(9))), Error::verificationFailed},
      {"another key identifier", with(1, Value::byteString(identifier(9))), Error::verificationFailed},
      {"a 31-byte key", with(4, Value::byteString(bytesOf(0x4B, 31))), Error::verificationFailed},
      {"a 33-byte key", with(4, Value::byteString(bytesOf(0x4B, 33))), Error::malformedRecord},
      {"another schema", with(0, Value::textString("com.galdrine.backup.payload-key-envelope.v2")), Error::malformedRecord},
      {"scope as text", with(2, Value::textString("pack")), Error::malformedRecord},
      {"a fifth field", with(5, Value::null()), Error::malformedRecord},
      {"no key", made(DeterministicCBOR::encode(Value::map(withoutKey), Codec::payloadKeyEnvelopeLimits)), Error::malformedRecord},
      {"not CBOR", Bytes{0xFF, 0x00}, Error::malformedRecord},
      {"empty", Bytes{}, Error::malformedRecord},
  };
  for (const auto& row : cases) EXPECT_EQ(errorOf(unwrapEnvelope(row.plaintext)), row.expected) << row.name;
}

}  // namespace galdrine::format
