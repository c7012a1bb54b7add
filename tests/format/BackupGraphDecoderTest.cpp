#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "BackupGraphTestRecords.hpp"

namespace galdrine::format {

namespace {

using namespace BackupGraphTestRecords;
using Error = BackupGraphV1Error;
using Mutation = std::function<Value(const Value&)>;

struct RejectCase {
  std::string_view name;
  Mutation mutate;
  Error expected;
};

Mutation field(std::uint64_t key, Value replacement) {
  return [=](const Value& form) { return withField(form, key, replacement); };
}
Mutation nested(std::uint64_t key, std::size_t index, Value replacement) {
  return [=](const Value& form) { return withNested(form, key, index, replacement); };
}
Mutation both(Mutation first, Mutation second) {
  return [=](const Value& form) { return second(first(form)); };
}
Mutation removed(std::uint64_t key) {
  return [=](const Value& form) { return withoutField(form, key); };
}
Mutation resized(std::uint64_t key, std::size_t count) {
  return [=](const Value& form) { return withField(form, key, withItems(fieldOf(form, key), count)); };
}

Value bytes(std::size_t byteCount, std::uint8_t value = 0x5A) { return Value::byteString(filled(byteCount, value)); }
Value number(std::uint64_t value) { return Value::unsignedInteger(value); }
const Value kText = Value::textString("x");
const Value kBeyondSignedNegative = Value::negative(std::uint64_t{1} << 63);  // -2^63 - 1
const Value kBeyondSignedPositive = Value::unsignedInteger(std::uint64_t{1} << 63);

template <typename Record>
void expectRejections(const Record& sample, const std::vector<RejectCase>& cases) {
  const Value form = owned(take(sample.encoded()));
  for (const RejectCase& rejectCase : cases) {
    SCOPED_TRACE(std::string(rejectCase.name));
    const auto decoded = Record::decode(encode(rejectCase.mutate(form)));
    ASSERT_FALSE(decoded.has_value());
    EXPECT_EQ(decoded.error(), rejectCase.expected);
  }
}

// Faults that every record map refuses alike.
template <typename Record>
void expectRecordMapRejections(const Record& sample, std::uint64_t lastKey) {
  expectRejections(sample, {
                               {"not a map", [](const Value&) { return Value::array({}); }, Error::malformedArtifact},
                               {"a key too many", field(lastKey + 1, number(0)), Error::malformedArtifact},
                               {"a key missing", removed(lastKey), Error::malformedArtifact},
                               {"another schema", field(0, Value::textString("com.galdrine.backup.v1")),
                                Error::malformedArtifact},
                               {"schema as bytes", field(0, bytes(4)), Error::malformedArtifact},
                               {"identifier as text", field(1, kText), Error::malformedArtifact},
                           });
  const Bytes encoded = take(sample.encoded());
  Bytes trailing = encoded;
  trailing.push_back(0x00);
  EXPECT_EQ(Record::decode(trailing).error(), Error::malformedArtifact);
  EXPECT_EQ(Record::decode(ByteView(encoded).first(encoded.size() - 1)).error(), Error::malformedArtifact);
}

TEST(BackupGraphDecoder, RecordMapsRefuseStructuralFaults) {
  expectRecordMapRejections(head(), 4);
  expectRecordMapRejections(commit(), 11);
  expectRecordMapRejections(snapshot(), 9);
  expectRecordMapRejections(root(), 9);
  expectRecordMapRejections(section(), 7);
}

TEST(BackupGraphDecoder, HeadChecksTimestampReferenceThenIdentifiers) {
  expectRejections(head(), {
      {"reference of 4 items", resized(3, 4), Error::malformedArtifact},
      {"reference count as bytes", nested(3, 1, bytes(1)), Error::malformedArtifact},
      {"timestamp as bytes", field(4, bytes(1)), Error::malformedArtifact},
      {"shape before timestamp range", both(field(4, kBeyondSignedNegative), field(2, kText)), Error::malformedArtifact},
      {"timestamp below the signed range", field(4, kBeyondSignedNegative), Error::invalidTimestamp},
      {"timestamp above the signed range", field(4, kBeyondSignedPositive), Error::invalidTimestamp},
      {"timestamp before reference", both(field(4, kBeyondSignedPositive), nested(3, 1, number(0))),
       Error::invalidTimestamp},
      {"reference identifier of 15 bytes", nested(3, 0, bytes(15)), Error::invalidIdentifier},
      {"reference frame count 0", nested(3, 1, number(0)), Error::invalidReference},
      {"reference digest of 31 bytes", nested(3, 2, bytes(31)), Error::invalidDigest},
      {"reference before identifiers", both(nested(3, 1, number(0)), field(1, bytes(15))), Error::invalidReference},
      {"identifier of 15 bytes", field(1, bytes(15)), Error::invalidIdentifier},
      {"library domain of 17 bytes", field(2, bytes(17)), Error::invalidIdentifier},
      {"commit is the head itself", nested(3, 0, Value::byteString(identifier(1, 0x40))), Error::invalidReference},
  });
}

TEST(BackupGraphDecoder, CommitChecksItsRulesInOrder) {
  const Value tip = reference(9).cborValue();
  expectRejections(commit(), {
      {"parent as text", field(3, kText), Error::malformedArtifact},
      {"tips not an array", field(11, tip), Error::malformedArtifact},
      {"tip of 6 items", nested(11, 0, withItems(tip, 6)), Error::malformedArtifact},
      {"257 tips exceed the item limit", resized(11, 257), Error::malformedArtifact},
      {"generation as a negative", field(8, Value::negative(0)), Error::malformedArtifact},
      {"timestamp beyond range", field(9, kBeyondSignedNegative), Error::invalidTimestamp},
      {"timestamp before parent", both(field(9, kBeyondSignedNegative), nested(3, 3, number(0))), Error::invalidTimestamp},
      {"parent plaintext count 0", nested(3, 3, number(0)), Error::invalidReference},
      {"parent before snapshot", both(nested(3, 3, number(0)), nested(4, 4, bytes(1))), Error::invalidReference},
      {"snapshot digest of 1 byte", nested(4, 4, bytes(1)), Error::invalidDigest},
      {"snapshot before tips", both(nested(4, 4, bytes(1)), nested(11, 0, withItem(tip, 0, bytes(3)))),
       Error::invalidDigest},
      {"tip identifier of 3 bytes", nested(11, 0, withItem(tip, 0, bytes(3))), Error::invalidIdentifier},
      {"tips before identifiers", both(nested(11, 0, withItem(tip, 1, number(0))), field(1, bytes(3))),
       Error::invalidReference},
      {"manifest identifier of 15 bytes", field(5, bytes(15)), Error::invalidIdentifier},
      {"writer device of 17 bytes", field(6, bytes(17)), Error::invalidIdentifier},
      {"identifiers before digest", both(field(6, bytes(17)), field(10, bytes(31))), Error::invalidIdentifier},
      {"payload set digest of 31 bytes", field(10, bytes(31)), Error::invalidDigest},
      {"digest before lineage", both(field(10, bytes(31)), field(8, number(0))), Error::invalidDigest},
      {"generation 0 with a parent", field(8, number(0)), Error::invalidReference},
      {"generation 1 without a parent", field(3, Value::null()), Error::invalidReference},
      {"parent is the commit itself", nested(3, 0, Value::byteString(identifier(7))), Error::invalidReference},
      {"two equal tips", nested(11, 1, reference(2).cborValue()), Error::invalidReference},
      {"tips descending", nested(11, 0, reference(4).cborValue()), Error::invalidReference},
      {"a tip is the commit itself", nested(11, 1, reference(7).cborValue()), Error::invalidReference},
  });
  const auto rootForm = withField(withField(owned(take(commit().encoded())), 3, Value::null()), 8, number(0));
  EXPECT_TRUE(BackupCommitV1::decode(encode(rootForm)).has_value());
}

TEST(BackupGraphDecoder, SnapshotChecksCountsBeforeIdentifiersDigestsAndTotals) {
  expectRejections(snapshot(), {
      {"counts of 6 items", resized(7, 6), Error::malformedArtifact},
      {"a count as a negative", nested(7, 6, Value::negative(1)), Error::malformedArtifact},
      {"total as text", field(9, kText), Error::malformedArtifact},
      {"timestamp beyond range", field(3, kBeyondSignedPositive), Error::invalidTimestamp},
      {"manifest identifier of 15 bytes", nested(4, 0, bytes(15)), Error::invalidIdentifier},
      {"a count above 2,000,000", nested(7, 3, number(2'000'001)), Error::invalidCount},
      {"counts before identifiers", both(nested(7, 3, number(2'000'001)), field(1, bytes(15))), Error::invalidCount},
      {"identifier of 15 bytes", field(1, bytes(15)), Error::invalidIdentifier},
      {"identifiers before digests", both(field(2, bytes(15)), field(5, bytes(31))), Error::invalidIdentifier},
      {"section set digest of 31 bytes", field(5, bytes(31)), Error::invalidDigest},
      {"payload set digest of 31 bytes", field(6, bytes(31)), Error::invalidDigest},
      {"33 bytes exceed the string limit", field(6, bytes(33)), Error::malformedArtifact},
      {"digests before totals", both(field(6, bytes(31)), field(8, number((1ull << 40) + 1))), Error::invalidDigest},
      {"logical total above 2^40", field(8, number((1ull << 40) + 1)), Error::invalidCount},
      {"encrypted total above 2^40", field(9, number((1ull << 40) + 1)), Error::invalidCount},
  });
  const auto atLimit = withField(withField(owned(take(snapshot().encoded())), 8, number(1ull << 40)), 9, number(1ull << 40));
  EXPECT_TRUE(BackupSnapshotV1::decode(encode(atLimit)).has_value());
}

TEST(BackupGraphDecoder, SectionReferenceChecksItsRulesInOrder) {
  const Value sample = sectionReference(0, BackupManifestSectionKindV1::item, 2, 1, 2).cborValue();
  const auto at = [&](std::size_t index, Value replacement) { return withItem(sample, index, std::move(replacement)); };
  const auto withBoth = [&](std::size_t first, Value firstValue, std::size_t second, Value secondValue) {
    return withItem(at(first, std::move(firstValue)), second, std::move(secondValue));
  };
  const struct {
    std::string_view name;
    Value form;
    Error expected;
  } cases[] = {
      {"8 items", withItems(sample, 8), Error::malformedArtifact},
      {"kind 7", at(2, number(7)), Error::malformedArtifact},
      {"compression 2", at(3, number(2)), Error::malformedArtifact},
      {"artifact of 4 items", at(0, withItems(sample.asArray()->front(), 4)), Error::malformedArtifact},
      {"artifact identifier of 15 bytes", at(0, withItem(sample.asArray()->front(), 0, bytes(15))),
       Error::invalidIdentifier},
      {"artifact before bounds", withBoth(0, withItem(sample.asArray()->front(), 1, number(0)), 1, number(4096)),
       Error::invalidReference},
      {"ordinal 4096", at(1, number(4096)), Error::invalidReference},
      {"record count 0", at(4, number(0)), Error::invalidReference},
      {"record count 4097", at(4, number(4097)), Error::invalidReference},
      {"empty first sort key", at(5, bytes(0)), Error::invalidReference},
      {"last sort key of 33 bytes", at(6, bytes(33, 0xFF)), Error::invalidReference},
      {"last sort key before the first", withBoth(5, bytes(1, 3), 6, bytes(1, 2)), Error::invalidReference},
      {"decoded count 0", at(7, number(0)), Error::invalidReference},
      {"decoded count above 8 MiB", at(7, number(8'388'609)), Error::invalidReference},
      {"decoded digest of 31 bytes", at(8, bytes(31)), Error::invalidReference},
      {"decoded digest before compression", withBoth(3, number(1), 8, bytes(31)), Error::invalidReference},
      {"compression zstd", at(3, number(1)), Error::unsupportedCompression},
      {"compression before the plaintext match", withBoth(3, number(1), 8, bytes(32, 7)), Error::unsupportedCompression},
      {"decoded count unlike the artifact's", at(7, number(251)), Error::invalidReference},
      {"decoded digest unlike the artifact's", at(8, bytes(32, 7)), Error::invalidReference},
  };
  for (const auto& rejectCase : cases) {
    SCOPED_TRACE(std::string(rejectCase.name));
    const Bytes encoded = encode(rejectCase.form);
    // Wider limits than a root's, so that the reference's own rules see a 33-byte key.
    const auto value = take(DeterministicCBOR::decodeBorrowed(encoded, BackupGraphLimitsV1::manifestSection));
    const auto decoded = BackupManifestSectionReferenceV1::fromCBOR(value);
    ASSERT_FALSE(decoded.has_value());
    EXPECT_EQ(decoded.error(), rejectCase.expected);
  }
  const Bytes equalKeys = encode(withBoth(5, bytes(1, 2), 6, bytes(1, 2)));
  const auto value = take(DeterministicCBOR::decodeBorrowed(equalKeys, BackupGraphLimitsV1::manifestRoot));
  EXPECT_TRUE(BackupManifestSectionReferenceV1::fromCBOR(value).has_value());
}

TEST(BackupGraphDecoder, RootChecksSectionsThenTheSetThenItsDigest) {
  const Value firstSection = rootSections().front().cborValue();
  expectRejections(root(), {
      {"a section with kind 7", nested(8, 0, withItem(firstSection, 2, number(7))), Error::malformedArtifact},
      {"a section with compression 2", nested(8, 0, withItem(firstSection, 3, number(2))), Error::malformedArtifact},
      {"timestamp beyond range", field(4, kBeyondSignedNegative), Error::invalidTimestamp},
      {"counts above the limit", nested(5, 0, number(2'000'001)), Error::invalidCount},
      {"a section with compression 1", nested(8, 0, withItem(firstSection, 3, number(1))),
       Error::unsupportedCompression},
      {"sections before identifiers", both(nested(8, 0, withItem(firstSection, 1, number(4096))), field(3, bytes(15))),
       Error::invalidReference},
      {"snapshot identifier of 15 bytes", field(3, bytes(15)), Error::invalidIdentifier},
      {"logical total above 2^40", field(6, number((1ull << 40) + 1)), Error::invalidCount},
      {"payload set digest of 31 bytes", field(7, bytes(31)), Error::invalidDigest},
      {"digest before the section set", both(field(7, bytes(31)), resized(8, 2)), Error::invalidDigest},
      {"a section dropped", resized(8, 2), Error::invalidSectionSet},
      {"counts that disagree", nested(5, 1, number(2)), Error::invalidSectionSet},
      {"stored digest differs", field(9, bytes(32, 0)), Error::verificationFailed},
      {"stored digest of 31 bytes", field(9, bytes(31, 0)), Error::verificationFailed},
  });
}

TEST(BackupGraphDecoder, SectionChecksBlobsBeforeIdentifiersAndOrder) {
  const Value firstBlob = blob(1).cborValue();
  expectRejections(section(), {
      {"kind 7", field(5, number(7)), Error::malformedArtifact},
      {"compression 2", field(6, number(2)), Error::malformedArtifact},
      {"a blob of 3 items", nested(7, 1, withItems(firstBlob, 3)), Error::malformedArtifact},
      {"a blob holding text", nested(7, 1, withItem(firstBlob, 1, kText)), Error::malformedArtifact},
      {"a late malformed blob before an early bad length",
       both(nested(7, 0, withItem(firstBlob, 0, bytes(0))), nested(7, 1, kText)), Error::malformedArtifact},
      {"an empty sort key", nested(7, 0, withItem(firstBlob, 0, bytes(0))), Error::invalidRecordSet},
      {"an empty record", nested(7, 1, withItem(firstBlob, 1, bytes(0))), Error::invalidRecordSet},
      {"blobs before identifiers", both(nested(7, 1, withItem(firstBlob, 1, bytes(0))), field(1, bytes(15))),
       Error::invalidRecordSet},
      {"identifier of 15 bytes", field(1, bytes(15)), Error::invalidIdentifier},
      {"manifest identifier of 17 bytes", field(2, bytes(17)), Error::invalidIdentifier},
      {"identifiers before the record set", both(field(3, bytes(1)), field(4, number(4096))), Error::invalidIdentifier},
      {"ordinal 4096", field(4, number(4096)), Error::invalidRecordSet},
      {"no records", field(7, Value::array({})), Error::invalidRecordSet},
      {"equal sort keys", nested(7, 1, firstBlob), Error::invalidRecordSet},
      {"order before compression", both(nested(7, 1, firstBlob), field(6, number(1))), Error::invalidRecordSet},
      {"compression zstd", field(6, number(1)), Error::unsupportedCompression},
  });
}

}  // namespace

}  // namespace galdrine::format
