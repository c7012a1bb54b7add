// The backup graph records: built and encoded within their bounds, decoded with each fault's
// exact error in the order of the checks, and sealed into frames that open only against the
// reference, package, library domain and key they were sealed for. (The committed graph fixtures
// pin the records' bytes and the section-set digest.)

#include <gtest/gtest.h>

#include "BackupGraphTestRecords.hpp"
#include "format/sealing/AESGCMFrameV1.hpp"
#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

namespace {

using namespace BackupGraphTestRecords;
using Error = BackupGraphV1Error;

TEST(BackupGraphRecords, ConstructorsCheckTheirBoundsInOrder) {
  using Blob = BackupManifestRecordBlobV1;
  EXPECT_EQ(Reference::make(filled(15, 1), 0, digest(1), 1, digest(1)).error(), Error::invalidIdentifier);
  EXPECT_EQ(Reference::make(identifier(1), 1, digest(1), 0, filled(31, 1)).error(), Error::invalidReference);
  EXPECT_EQ(Reference::make(identifier(1), 1, digest(1), 1, filled(33, 1)).error(), Error::invalidDigest);
  EXPECT_EQ(Blob::make(filled(33, 1), Bytes{1}).error(), Error::invalidRecordSet);
  EXPECT_TRUE(Blob::make(filled(32, 1), filled(1'048'576, 1)).has_value());
  EXPECT_EQ(Blob::make(Bytes{1}, filled(1'048'577, 1)).error(), Error::invalidRecordSet);
  // A section may hold exactly 4,096 records (the writer's assembly fills one to the limit).
  std::vector<Blob> records;
  for (std::uint32_t number = 0; number < 4097; ++number)
    records.push_back(made(Blob::make(identifier(number), Bytes{1})));
  EXPECT_EQ(errorOf(BackupManifestSectionV1::make(identifier(1), kManifest, kLibrary, 0, Kind::album,
                                                  BackupManifestCompressionV1::none, records)),
            Error::invalidRecordSet);
}

TEST(BackupGraphRecords, SectionSetRulesRefuseInTheirOrder) {
  const struct {
    std::string_view name;
    std::vector<BackupManifestSectionReferenceV1> sections;
    BackupManifestCountsV1 counts;
    std::optional<Error> expected;
  } cases[] = {
      {"no sections and no records", {}, counts(0, 0), std::nullopt},
      {"no sections but a record", {}, counts(0, 1), Error::invalidSectionSet},
      {"the sample set", rootSections(), counts(3, 1), std::nullopt},
      {"ordinals skipping one",
       {sectionReference(0, Kind::item, 1, 1, 1), sectionReference(2, Kind::item, 1, 2, 2)},
       counts(0, 2),
       Error::invalidSectionSet},
      {"one artifact twice",
       {sectionReference(0, Kind::item, 1, 1, 1, 7), sectionReference(1, Kind::item, 1, 2, 2, 7)},
       counts(0, 2),
       Error::invalidSectionSet},
      {"kind decreasing",
       {sectionReference(0, Kind::item, 1, 1, 1), sectionReference(1, Kind::payloadKey, 1, 2, 2)},
       counts(1, 1),
       Error::invalidSectionSet},
      {"touching sort keys in one kind, before counts",
       {sectionReference(0, Kind::item, 1, 1, 2), sectionReference(1, Kind::item, 1, 2, 3)},
       counts(5, 5),
       Error::invalidSectionSet},
      {"touching sort keys across kinds",
       {sectionReference(0, Kind::payloadKey, 1, 1, 2), sectionReference(1, Kind::item, 1, 2, 3)},
       counts(1, 1),
       {}},
      {"a kind's count differs", rootSections(), counts(3, 2), Error::invalidSectionSet},
      {"records of an absent kind", rootSections(), made(BackupManifestCountsV1::make(3, 1, 0, 0, 0, 0, 1)),
       Error::invalidSectionSet},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(errorOf(BackupGraphV1::validateSectionSet(row.sections, row.counts)), row.expected) << row.name;
  }
}

// ---- Decoding ----

constexpr std::size_t whole = std::numeric_limits<std::size_t>::max();

// Edit sets field `key` of the record map to `value`, or only item `index` of the array there.
struct Edit {
  std::uint64_t key;
  std::size_t index;
  Value value;
};
struct Row {
  std::string_view name;
  std::vector<Edit> edits;
  Error expected;
};

Value bytes(std::size_t byteCount, std::uint8_t value = 0x5A) { return Value::byteString(filled(byteCount, value)); }
Value number(std::uint64_t value) { return Value::unsignedInteger(value); }
const Value kText = Value::textString("x");
const Value kBelowSigned = Value::negative(std::uint64_t{1} << 63);  // -2^63 - 1
const Value kAboveSigned = Value::unsignedInteger(std::uint64_t{1} << 63);

// expectRejections decodes `sample` changed by each row, after the faults every record map
// refuses alike: not a map, a key too many or missing, another schema, a field of the wrong
// kind, a trailing byte and a missing one.
template <typename Record>
void expectRejections(const Record& sample, std::uint64_t lastKey, const std::vector<Row>& rows) {
  const Value form = owned(made(sample.encoded()));
  const Bytes encoded = made(sample.encoded());
  Bytes trailing = encoded;
  trailing.push_back(0x00);
  for (const Bytes& faulty : {encode(Value::array({})), encode(withField(form, lastKey + 1, number(0))),
                              encode(withField(form, lastKey, std::nullopt)), encode(withField(form, 1, kText)),
                              encode(withField(form, 0, Value::textString("com.galdrine.backup.v1"))), trailing,
                              Bytes(encoded.begin(), encoded.end() - 1)}) {
    EXPECT_EQ(errorOf(Record::decode(faulty)), Error::malformedArtifact);
  }
  for (const Row& row : rows) {
    Value value = form;
    for (const Edit& edit : row.edits) {
      value = withField(value, edit.key,
                        edit.index == whole ? edit.value : withItem(fieldOf(value, edit.key), edit.index, edit.value));
    }
    EXPECT_EQ(errorOf(Record::decode(encode(value))), row.expected) << row.name;
  }
}

TEST(BackupGraphDecoder, Head) {
  expectRejections(
      head(), 4,
      {
          {"reference of 4 items", {{3, whole, withItems(reference(7).cborValue(), 4)}}, Error::malformedArtifact},
          {"shape before timestamp range", {{4, whole, kBelowSigned}, {2, whole, kText}}, Error::malformedArtifact},
          {"timestamp below the signed range", {{4, whole, kBelowSigned}}, Error::invalidTimestamp},
          {"timestamp before reference", {{4, whole, kAboveSigned}, {3, 1, number(0)}}, Error::invalidTimestamp},
          {"reference before identifiers", {{3, 1, number(0)}, {1, whole, bytes(15)}}, Error::invalidReference},
          {"identifier of 15 bytes", {{1, whole, bytes(15)}}, Error::invalidIdentifier},
          {"commit is the head itself", {{3, 0, Value::byteString(identifier(1, 0x40))}}, Error::invalidReference},
      });
}

TEST(BackupGraphDecoder, Commit) {
  const Value tip = reference(9).cborValue();
  expectRejections(
      commit(), 11,
      {
          {"257 tips exceed the item limit",
           {{11, whole, withItems(fieldOf(owned(made(commit().encoded())), 11), 257)}},
           Error::malformedArtifact},
          {"timestamp before parent", {{9, whole, kBelowSigned}, {3, 3, number(0)}}, Error::invalidTimestamp},
          {"parent before snapshot", {{3, 3, number(0)}, {4, 4, bytes(1)}}, Error::invalidReference},
          {"snapshot before tips", {{4, 4, bytes(1)}, {11, 0, withItem(tip, 0, bytes(3))}}, Error::invalidDigest},
          {"tips before identifiers",
           {{11, 0, withItem(tip, 1, number(0))}, {1, whole, bytes(3)}},
           Error::invalidReference},
          {"identifiers before digest", {{6, whole, bytes(17)}, {10, whole, bytes(31)}}, Error::invalidIdentifier},
          {"digest before lineage", {{10, whole, bytes(31)}, {8, whole, number(0)}}, Error::invalidDigest},
          {"generation 0 with a parent", {{8, whole, number(0)}}, Error::invalidReference},
          {"generation 1 without a parent", {{3, whole, Value::null()}}, Error::invalidReference},
          {"parent is the commit itself", {{3, 0, Value::byteString(identifier(7))}}, Error::invalidReference},
          {"two equal tips", {{11, 1, reference(2).cborValue()}}, Error::invalidReference},
          {"a tip is the commit itself", {{11, 1, reference(7).cborValue()}}, Error::invalidReference},
      });
  const auto rootForm = withField(withField(owned(made(commit().encoded())), 3, Value::null()), 8, number(0));
  EXPECT_EQ(errorOf(BackupCommitV1::decode(encode(rootForm))), std::nullopt);
}

TEST(BackupGraphDecoder, Snapshot) {
  expectRejections(
      snapshot(), 9,
      {
          {"counts of 6 items", {{7, whole, withItems(counts(2, 1).cborValue(), 6)}}, Error::malformedArtifact},
          {"timestamp beyond range", {{3, whole, kAboveSigned}}, Error::invalidTimestamp},
          {"manifest reference before counts",
           {{4, 0, bytes(15)}, {7, 3, number(2'000'001)}},
           Error::invalidIdentifier},
          {"counts before identifiers", {{7, 3, number(2'000'001)}, {1, whole, bytes(15)}}, Error::invalidCount},
          {"identifiers before digests", {{2, whole, bytes(15)}, {5, whole, bytes(31)}}, Error::invalidIdentifier},
          {"33 bytes exceed the string limit", {{6, whole, bytes(33)}}, Error::malformedArtifact},
          {"digests before totals",
           {{6, whole, bytes(31)}, {8, whole, number((1ull << 40) + 1)}},
           Error::invalidDigest},
          {"encrypted total above 2^40", {{9, whole, number((1ull << 40) + 1)}}, Error::invalidCount},
      });
  const auto atLimit =
      withField(withField(owned(made(snapshot().encoded())), 8, number(1ull << 40)), 9, number(1ull << 40));
  EXPECT_TRUE(BackupSnapshotV1::decode(encode(atLimit)).has_value());
}

TEST(BackupGraphDecoder, SectionReference) {
  const Value sample = sectionReference(0, BackupManifestSectionKindV1::item, 2, 1, 2).cborValue();
  const Value artifact = sample.asArray()->front();
  const struct {
    std::string_view name;
    std::vector<std::pair<std::size_t, Value>> items;
    Error expected;
  } rows[] = {
      {"kind 7", {{2, number(7)}}, Error::malformedArtifact},
      {"artifact of 4 items", {{0, withItems(artifact, 4)}}, Error::malformedArtifact},
      {"artifact before bounds", {{0, withItem(artifact, 1, number(0))}, {1, number(4096)}}, Error::invalidReference},
      {"ordinal 4096", {{1, number(4096)}}, Error::invalidReference},
      {"empty first sort key", {{5, bytes(0)}}, Error::invalidReference},
      {"last sort key of 33 bytes", {{6, bytes(33, 0xFF)}}, Error::invalidReference},
      {"last sort key before the first", {{5, bytes(1, 3)}, {6, bytes(1, 2)}}, Error::invalidReference},
      {"decoded digest before compression", {{3, number(1)}, {8, bytes(31)}}, Error::invalidReference},
      {"compression before the plaintext match", {{3, number(1)}, {8, bytes(32, 7)}}, Error::unsupportedCompression},
      {"decoded count unlike the artifact's", {{7, number(251)}}, Error::invalidReference},
  };
  const auto decoded = [](const Value& form) {
    const Bytes encoded = encode(form);
    // Wider limits than a root's, so that the reference's own rules see a 33-byte key.
    return errorOf(BackupManifestSectionReferenceV1::fromCBOR(
        made(DeterministicCBOR::decodeBorrowed(encoded, BackupGraphLimitsV1::manifestSection))));
  };
  for (const auto& row : rows) {
    Value form = sample;
    for (const auto& [index, value] : row.items) form = withItem(form, index, value);
    EXPECT_EQ(decoded(form), row.expected) << row.name;
  }
  EXPECT_EQ(decoded(withItem(withItem(sample, 5, bytes(1, 2)), 6, bytes(1, 2))), std::nullopt);
}

TEST(BackupGraphDecoder, Root) {
  const Value firstSection = rootSections().front().cborValue();
  expectRejections(
      root(), 9,
      {
          {"a section with kind 7", {{8, 0, withItem(firstSection, 2, number(7))}}, Error::malformedArtifact},
          {"counts above the limit", {{5, 0, number(2'000'001)}}, Error::invalidCount},
          {"a section with compression 1",
           {{8, 0, withItem(firstSection, 3, number(1))}},
           Error::unsupportedCompression},
          {"sections before identifiers",
           {{8, 0, withItem(firstSection, 1, number(4096))}, {3, whole, bytes(15)}},
           Error::invalidReference},
          {"logical total above 2^40", {{6, whole, number((1ull << 40) + 1)}}, Error::invalidCount},
          {"digest before the section set", {{7, whole, bytes(31)}, {5, 1, number(2)}}, Error::invalidDigest},
          {"counts that disagree", {{5, 1, number(2)}}, Error::invalidSectionSet},
          {"stored digest differs", {{9, whole, bytes(32, 0)}}, Error::verificationFailed},
      });
}

TEST(BackupGraphDecoder, Section) {
  const Value firstBlob = blob(1).cborValue();
  expectRejections(
      section(), 7,
      {
          {"kind 7", {{5, whole, number(7)}}, Error::malformedArtifact},
          {"a blob of 3 items", {{7, 1, withItems(firstBlob, 3)}}, Error::malformedArtifact},
          {"a late malformed blob before an early bad length",
           {{7, 0, withItem(firstBlob, 0, bytes(0))}, {7, 1, kText}},
           Error::malformedArtifact},
          {"blobs before identifiers",
           {{7, 1, withItem(firstBlob, 1, bytes(0))}, {1, whole, bytes(15)}},
           Error::invalidRecordSet},
          {"identifiers before the record set",
           {{3, whole, bytes(1)}, {4, whole, number(4096)}},
           Error::invalidIdentifier},
          {"ordinal 4096", {{4, whole, number(4096)}}, Error::invalidRecordSet},
          {"order before compression", {{7, 1, firstBlob}, {6, whole, number(1)}}, Error::invalidRecordSet},
          {"compression zstd", {{6, whole, number(1)}}, Error::unsupportedCompression},
      });
}

// ---- Sealing ----

using SectionReference = BackupManifestSectionReferenceV1;
namespace Graph = BackupGraphV1;

Bytes sha256(ByteView bytes) {
  const auto digest = platform::SHA256::digest(bytes);
  return Bytes(digest.begin(), digest.end());
}

template <typename Record, typename Seal, typename Open>
void expectSealedToOpen(const Record& record, Seal seal, Open open) {
  const auto sealed = made(seal(record, kPackage, kKey, Graph::NonceSource{}));
  EXPECT_EQ(open(sealed.frame, sealed.reference, kPackage, kLibrary, kKey), record);
}

TEST(BackupGraphSealing, EachObjectOpensAgainstItsReference) {
  expectSealedToOpen(head(), Graph::sealHead, Graph::openHead);
  expectSealedToOpen(commit(), Graph::sealCommit, Graph::openCommit);
  expectSealedToOpen(snapshot(), Graph::sealSnapshot, Graph::openSnapshot);
  expectSealedToOpen(root(), Graph::sealManifestRoot, Graph::openManifestRoot);
  // A root commit's parent is null, and a negative timestamp is a CBOR negative integer.
  const auto rootCommit = made(BackupCommitV1::make(identifier(1), kLibrary, std::nullopt, reference(2), kManifest,
                                                    kManifest, 0, 0, 0, digest(1), {}));
  expectSealedToOpen(rootCommit, Graph::sealCommit, Graph::openCommit);
  EXPECT_TRUE(fieldOf(owned(made(rootCommit.encoded())), 3).isNull());
  EXPECT_EQ(fieldOf(owned(made(head(-1).encoded())), 4), Value::negative(0));
  const auto sealedSection = made(Graph::sealManifestSection(section(3), kPackage, kKey));
  const auto& reference = sealedSection.reference;
  EXPECT_EQ(reference, made(SectionReference::make(
                           reference.artifact(), 3, Kind::payloadKey, BackupManifestCompressionV1::none, 2, Bytes{1},
                           Bytes{2}, made(section(3).encoded()).size(), reference.artifact().plaintextSHA256())));
  EXPECT_EQ(Graph::openManifestSection(sealedSection.frame, reference, kManifest, kPackage, kLibrary, kKey),
            section(3));
  // The section must match every field of its reference, and the manifest it belongs to.
  const auto variant = [&](Kind kind, std::uint64_t recordCount, Bytes first, Bytes last) {
    return made(SectionReference::make(reference.artifact(), 3, kind, reference.compression(), recordCount,
                                       std::move(first), std::move(last), reference.decodedPlaintextByteCount(),
                                       reference.decodedPlaintextSHA256()));
  };
  for (const auto& expected :
       {variant(Kind::item, 2, Bytes{1}, Bytes{2}), variant(Kind::payloadKey, 3, Bytes{1}, Bytes{2}),
        variant(Kind::payloadKey, 2, Bytes{1}, Bytes{3})}) {
    EXPECT_EQ(errorOf(Graph::openManifestSection(sealedSection.frame, expected, kManifest, kPackage, kLibrary, kKey)),
              Error::verificationFailed);
  }
  EXPECT_EQ(
      errorOf(Graph::openManifestSection(sealedSection.frame, reference, filled(16, 0x34), kPackage, kLibrary, kKey)),
      Error::verificationFailed);
}

// Sealing checks the key before the package. Opening reads every mismatch of frame, reference,
// identifier, package, library domain, key, domain or ordinal as verificationFailed (damage and
// tampering look alike); a commit found by listing is refused alike, after its name's length.
// Authentic content that breaks a record's rules keeps the decoder's error.
TEST(BackupGraphSealing, EveryMismatchReadsAsVerificationFailed) {
  const auto sealed = made(Graph::sealHead(head(), kPackage, kKey));
  const Reference& good = sealed.reference;
  // changed is the reference with one of identifier, frame count, plaintext count or digest set.
  const auto changed = [&](std::optional<Bytes> id, std::uint64_t frames, std::uint64_t plains,
                           std::optional<Bytes> digest) {
    return made(Reference::make(id.value_or(good.identifier()), good.frameByteCount() + frames, good.frameSHA256(),
                                plains == 0 ? good.plaintextByteCount() : plains,
                                digest.value_or(good.plaintextSHA256())));
  };
  const auto headError = [&](ByteView frame, const Reference& expected, ByteView package, ByteView library,
                             ByteView key) { return errorOf(Graph::openHead(frame, expected, package, library, key)); };
  const auto sealedCommit = made(Graph::sealCommit(commit(), kPackage, kKey));
  const auto discovered = [&](ByteView frame, ByteView name, ByteView library, ByteView key) {
    return errorOf(Graph::openDiscoveredCommit(frame, name, kPackage, library, key));
  };
  Bytes flipped = sealed.frame;
  flipped[flipped.size() / 2] ^= 0x01;
  const auto sealedRoot = made(Graph::sealManifestRoot(root(), kPackage, kKey));
  const auto sealedSection = made(Graph::sealManifestSection(section(), kPackage, kKey));
  const auto rootAsSection = made(SectionReference::make(
      sealedRoot.reference, 0, Kind::payloadKey, BackupManifestCompressionV1::none, 1, Bytes{1}, Bytes{1},
      sealedRoot.reference.plaintextByteCount(), sealedRoot.reference.plaintextSHA256()));
  // An authentic head whose commit reference is its own identifier keeps the decoder's error.
  const Bytes selfReferring = encode(withField(
      owned(made(head().encoded())), 3, withItem(reference(7).cborValue(), 0, Value::byteString(identifier(1, 0x40)))));
  const auto data = made(made(BackupAuthenticatedDataV1::make(BackupAADDomainV1::head, kPackage, kLibrary,
                                                              identifier(1, 0x40), 0, std::nullopt))
                             .encoded());
  const Bytes selfFrame = made(AESGCMFrameV1::seal(selfReferring, kKey, data, 65536));
  const struct {
    std::string_view name;
    std::optional<Error> error;
    Error expected = Error::verificationFailed;
  } cases[] = {
      {"seal: a fixed nonce of 11 bytes",
       errorOf(Graph::sealHead(head(), kPackage, kKey, Graph::NonceSource::fixed(filled(11, 0))))},
      {"seal: short key", errorOf(Graph::sealHead(head(), kPackage, filled(31, 0))), Error::invalidKey},
      {"seal: short package", errorOf(Graph::sealSnapshot(snapshot(), filled(15, 0), kKey)), Error::invalidIdentifier},
      {"seal: key before package", errorOf(Graph::sealManifestRoot(root(), filled(15, 0), filled(33, 0))),
       Error::invalidKey},
      {"frame length", headError(sealed.frame, changed({}, 1, 0, {}), kPackage, kLibrary, kKey)},
      {"frame digest", headError(flipped, good, kPackage, kLibrary, kKey)},
      {"plaintext count above the limit", headError(sealed.frame, changed({}, 0, 65537, {}), kPackage, kLibrary, kKey)},
      {"plaintext count",
       headError(sealed.frame, changed({}, 0, good.plaintextByteCount() - 1, {}), kPackage, kLibrary, kKey)},
      {"plaintext digest", headError(sealed.frame, changed({}, 0, 0, digest(0)), kPackage, kLibrary, kKey)},
      {"identifier", headError(sealed.frame, changed(identifier(2, 0x40), 0, 0, {}), kPackage, kLibrary, kKey)},
      {"key length", headError(sealed.frame, good, kPackage, kLibrary, filled(31, 0x44))},
      {"key", headError(sealed.frame, good, kPackage, kLibrary, filled(32, 0x45))},
      {"package", headError(sealed.frame, good, filled(16, 0x23), kLibrary, kKey)},
      {"library domain", headError(sealed.frame, good, kPackage, filled(16, 0x12), kKey)},
      {"domain: a head opened as a commit", errorOf(Graph::openCommit(sealed.frame, good, kPackage, kLibrary, kKey))},
      {"ordinal: a root opened as a section",
       errorOf(Graph::openManifestSection(sealedRoot.frame, rootAsSection, kManifest, kPackage, kLibrary, kKey))},
      {"ordinal: a section opened as a root",
       errorOf(
           Graph::openManifestRoot(sealedSection.frame, sealedSection.reference.artifact(), kPackage, kLibrary, kKey))},
      {"listed: short name before the frame", discovered({}, filled(15, 0), kLibrary, kKey), Error::invalidIdentifier},
      {"listed: empty frame", discovered({}, identifier(7), kLibrary, kKey)},
      {"listed: frame above the limit", discovered(filled(66'561, 0), identifier(7), kLibrary, kKey)},
      {"listed: short key", discovered(sealedCommit.frame, identifier(7), kLibrary, filled(31, 0x44))},
      {"listed: another name", discovered(sealedCommit.frame, identifier(8), kLibrary, kKey)},
      {"listed: a head", discovered(sealed.frame, identifier(1, 0x40), kLibrary, kKey)},
      {"listed: library domain", discovered(sealedCommit.frame, identifier(7), filled(16, 0), kKey)},
      {"authentic but self-referring",
       headError(selfFrame,
                 made(Reference::make(identifier(1, 0x40), selfFrame.size(), sha256(selfFrame), selfReferring.size(),
                                      sha256(selfReferring))),
                 kPackage, kLibrary, kKey),
       Error::invalidReference},
      {"listed, authentic but self-referring",
       errorOf(Graph::openDiscoveredHead(selfFrame, identifier(1, 0x40), kPackage, kLibrary, kKey)),
       Error::invalidReference},
  };
  for (const auto& row : cases) EXPECT_EQ(row.error, row.expected) << row.name;
  const auto found = made(Graph::openDiscoveredCommit(sealedCommit.frame, identifier(7), kPackage, kLibrary, kKey));
  EXPECT_EQ(found.reference(), sealedCommit.reference);
  EXPECT_EQ(found.commit(), commit());
}

TEST(BackupGraphSealing, EveryBitOfAFrameMatters) {
  const auto sealed = made(Graph::sealHead(head(), kPackage, kKey));
  const Reference& good = sealed.reference;
  for (std::size_t bit = 0; bit < sealed.frame.size() * 8; ++bit) {
    Bytes tampered = sealed.frame;
    tampered[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
    // With the reference following the tampered frame, the frame's own authentication decides.
    const auto following = made(Reference::make(good.identifier(), good.frameByteCount(), sha256(tampered),
                                                good.plaintextByteCount(), good.plaintextSHA256()));
    const auto opened = Graph::openHead(tampered, following, kPackage, kLibrary, kKey);
    ASSERT_FALSE(opened.has_value()) << "bit " << bit;
    EXPECT_EQ(opened.error(), Error::verificationFailed) << "bit " << bit;
  }
}

}  // namespace

}  // namespace galdrine::format
