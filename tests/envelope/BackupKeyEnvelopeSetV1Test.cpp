#include "envelope/BackupKeyEnvelopeSetV1.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <vector>

#include "EnvelopeFixtures.hpp"

namespace galdrine::envelope {

inline void PrintTo(const BackupKeyEnvelopeSetV1Error& error, std::ostream* out) {
  *out << "set error " << static_cast<int>(error.code) << " (key " << error.key << ", factor "
       << rawValue(error.factor) << ")";
}

namespace {

using namespace EnvelopeFixtures;
using Set = BackupKeyEnvelopeSetV1;
using Entry = BackupKeyEnvelopeEntryV1;
using Error = BackupKeyEnvelopeSetV1Error;
using Failure = BackupKeyEnvelopeSetV1Failure;
using EnvelopeError = PortableKeyEnvelopeV1Error;

const Bytes kPackage = identifier(1);
const Bytes kLibraryDomain = identifier(2);

[[nodiscard]] Entry entry(Factor factor, std::uint8_t artifactSeed, std::uint8_t keySlotSeed, std::uint64_t generation,
                          bool isActive = true) {
  const auto made =
      Entry::make(placeholderEnvelope(factor, identifier(artifactSeed), identifier(keySlotSeed), generation), isActive);
  EXPECT_TRUE(made.has_value());
  return *made;
}

const Entry kPassphraseEntry = entry(Factor::backupPassphrase, 3, 4, 1);
const Entry kRecoveryEntry = entry(Factor::recoveryKey, 5, 6, 1);

[[nodiscard]] Set validSet(std::vector<Entry> entries = {kRecoveryEntry, kPassphraseEntry}) {
  const auto made = Set::make(kPackage, kLibraryDomain, std::move(entries));
  EXPECT_TRUE(made.has_value());
  return *made;
}

[[nodiscard]] Bytes encodedSet(const Set& set) {
  const auto bytes = set.encoded();
  EXPECT_TRUE(bytes.has_value());
  return bytes ? *bytes : Bytes{};
}

[[nodiscard]] Value::Map setFields() {
  const auto decoded = format::DeterministicCBOR::decode(encodedSet(validSet()), Set::encodingLimits);
  EXPECT_TRUE(decoded && decoded->asMap());
  return *decoded->asMap();
}

[[nodiscard]] Value entryValue(ByteView envelope, bool isActive) {
  return Value::map({{0, Value::byteString(envelope)}, {1, Value::boolean(isActive)}});
}

// withField re-encodes the valid set with one field replaced (or, for a null, removed).
[[nodiscard]] Bytes withField(std::uint64_t key, const Value& value) {
  Value::Map fields = setFields();
  if (value.isNull()) {
    fields.erase(key);
  } else {
    fields.insert_or_assign(key, value);
  }
  return encoded(Value::map(fields), Set::encodingLimits);
}

[[nodiscard]] Bytes withEntries(Value::Array entries) { return withField(5, Value::array(std::move(entries))); }

}  // namespace

TEST(BackupKeyEnvelopeSetV1, StoresEntriesInCanonicalOrderAndRoundTrips) {
  for (const std::vector<Entry>& entries : {std::vector{kPassphraseEntry}, std::vector{kRecoveryEntry},
                                           std::vector{kRecoveryEntry, kPassphraseEntry},
                                           std::vector{entry(Factor::recoveryKey, 1, 6, 0), kPassphraseEntry}}) {
    const Set set = validSet(entries);
    EXPECT_TRUE(std::ranges::is_sorted(set.entries(), Set::entryPrecedes));
    EXPECT_EQ(Set::decode(encodedSet(set)), set);
  }
  const Set both = validSet();
  EXPECT_EQ(both.entries(), (std::vector{kPassphraseEntry, kRecoveryEntry}));
  EXPECT_EQ(both.activeEntries(), both.entries());
  EXPECT_EQ(both.activeEntry(Factor::recoveryKey), kRecoveryEntry);
  EXPECT_EQ(validSet({kPassphraseEntry}).activeEntry(Factor::recoveryKey), std::nullopt);
}

TEST(BackupKeyEnvelopeSetV1, EntryPrecedesByFactorThenGenerationThenArtifact) {
  const Entry recoveryFirstGeneration = entry(Factor::recoveryKey, 9, 6, 0);
  EXPECT_TRUE(Set::entryPrecedes(entry(Factor::backupPassphrase, 9, 4, 9), recoveryFirstGeneration));
  EXPECT_FALSE(Set::entryPrecedes(recoveryFirstGeneration, entry(Factor::backupPassphrase, 9, 4, 9)));
  EXPECT_TRUE(Set::entryPrecedes(recoveryFirstGeneration, entry(Factor::recoveryKey, 1, 6, 1)));
  EXPECT_TRUE(Set::entryPrecedes(entry(Factor::recoveryKey, 1, 6, 0), recoveryFirstGeneration));
  EXPECT_FALSE(Set::entryPrecedes(recoveryFirstGeneration, recoveryFirstGeneration));
}

TEST(BackupKeyEnvelopeSetV1, MakeRefusesInCheckOrder) {
  struct MakeCase {
    const char* name;
    Bytes package;
    Bytes libraryDomain;
    std::vector<Entry> entries;
    Error expected;
  };
  const MakeCase cases[] = {
      {"15-byte package", identifier(1, 15), identifier(2, 15), {}, Error::invalidPackageIdentifier()},
      {"17-byte library domain", kPackage, identifier(2, 17), {}, Error::invalidLibraryDomainIdentifier()},
      {"no entry", kPackage, kLibraryDomain, {}, Error::invalidEntryCount()},
      {"three entries", kPackage, kLibraryDomain,
       {kPassphraseEntry, kRecoveryEntry, entry(Factor::recoveryKey, 7, 6, 2)}, Error::invalidEntryCount()},
      {"two passphrase entries", kPackage, kLibraryDomain,
       {kPassphraseEntry, entry(Factor::backupPassphrase, 7, 4, 2, false)}, Error::invalidEntryCount()},
      {"the only entry inactive", kPackage, kLibraryDomain, {entry(Factor::backupPassphrase, 3, 4, 1, false)},
       Error::missingActiveEnvelope(Factor::backupPassphrase)},
      {"inactive recovery entry", kPackage, kLibraryDomain, {kPassphraseEntry, entry(Factor::recoveryKey, 5, 6, 1, false)},
       Error::missingActiveEnvelope(Factor::recoveryKey)},
      {"one key slot for both factors", kPackage, kLibraryDomain, {kPassphraseEntry, entry(Factor::recoveryKey, 5, 4, 1)},
       Error::sharedKeySlot()},
      {"one artifact for both factors", kPackage, kLibraryDomain, {kPassphraseEntry, entry(Factor::recoveryKey, 3, 6, 1)},
       Error::duplicateArtifactIdentifier()},
      {"slot before artifact", kPackage, kLibraryDomain, {kPassphraseEntry, entry(Factor::recoveryKey, 3, 4, 1)},
       Error::sharedKeySlot()},
  };
  for (const MakeCase& makeCase : cases) {
    EXPECT_EQ(failureOf(Set::make(makeCase.package, makeCase.libraryDomain, makeCase.entries)), makeCase.expected)
        << makeCase.name;
  }
}

// Over 2048 bytes an envelope is refused by size; up to 2048 it reaches the envelope's own
// reading, whose limits no valid envelope comes near.
TEST(BackupKeyEnvelopeSetV1, EntryBoundsTheEnvelopeBeforeReadingIt) {
  EXPECT_EQ(failureOf(Entry::make(Bytes{}, true)), Failure(Error::envelopeTooLarge()));
  EXPECT_EQ(failureOf(Entry::make(Bytes(2049), true)), Failure(Error::envelopeTooLarge()));
  EXPECT_EQ(failureOf(Entry::make(Bytes(2048), true)), Failure(EnvelopeError::malformedEnvelope()));
  const Entry made = entry(Factor::recoveryKey, 5, 6, 3, false);
  EXPECT_EQ(made.metadata().generation(), 3U);
  EXPECT_FALSE(made.isActive());
}

TEST(BackupKeyEnvelopeSetV1, DecodeRefusesInCheckOrder) {
  const Bytes passphrase = kPassphraseEntry.envelope();
  const Bytes recovery = kRecoveryEntry.envelope();
  const Value text = Value::textString("x");
  const Value bytes = Value::byteString(identifier(9));
  Bytes trailing = encodedSet(validSet());
  trailing.push_back(0);
  struct DecodeCase {
    const char* name;
    Bytes input;
    Failure expected;
  };
  const DecodeCase cases[] = {
      {"trailing byte", trailing, Error::malformedSet()},
      {"an array", encoded(Value::array({text}), Set::encodingLimits), Error::malformedSet()},
      {"key 6", withField(6, text), Error::invalidFieldSet()},
      {"key 4 missing", withField(4, Value::null()), Error::invalidFieldSet()},
      {"schema as bytes", withField(0, bytes), Error::invalidFieldType(0)},
      {"another schema", withField(0, text), Error::unsupportedSchema()},
      {"version as text", withField(1, text), Error::invalidFieldType(1)},
      {"version 2", withField(1, Value::unsignedInteger(2)), Error::unsupportedVersion()},
      {"format as a number", withField(2, Value::unsignedInteger(1)), Error::invalidFieldType(2)},
      {"another format", withField(2, text), Error::unsupportedFormat()},
      {"entries as a map", withField(5, Value::map({})), Error::invalidFieldType(5)},
      {"an entry not a map", withEntries({bytes}), Error::malformedSet()},
      {"an entry with key 2",
       withEntries({Value::map({{0, Value::byteString(passphrase)}, {1, Value::boolean(true)}, {2, text}})}),
       Error::invalidFieldSet()},
      {"an envelope as text", withEntries({Value::map({{0, text}, {1, Value::boolean(true)}})}), Error::invalidFieldType(0)},
      {"active as a number", withEntries({Value::map({{0, Value::byteString(passphrase)}, {1, Value::unsignedInteger(1)}})}),
       Error::invalidFieldType(1)},
      {"an unreadable envelope", withEntries({entryValue(identifier(9), true)}),
       EnvelopeError::malformedEnvelope()},
      {"package as text", withField(3, text), Error::invalidFieldType(3)},
      {"library domain as text", withField(4, text), Error::invalidFieldType(4)},
      {"15-byte package", withField(3, Value::byteString(identifier(1, 15))), Error::invalidPackageIdentifier()},
      {"no entries", withEntries({}), Error::invalidEntryCount()},
      {"recovery before passphrase", withEntries({entryValue(recovery, true), entryValue(passphrase, true)}),
       Error::nonCanonicalEncoding()},
  };
  for (const DecodeCase& decodeCase : cases) {
    EXPECT_EQ(failureOf(Set::decode(decodeCase.input)), decodeCase.expected) << decodeCase.name;
  }
  // Entries are taken before the identifiers: both wrong gives the entries' error.
  Value::Map fields = setFields();
  fields.insert_or_assign(3, text);
  fields.insert_or_assign(5, text);
  EXPECT_EQ(failureOf(Set::decode(encoded(Value::map(fields), Set::encodingLimits))), Failure(Error::invalidFieldType(5)));
}

}  // namespace galdrine::envelope
