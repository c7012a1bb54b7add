#include "envelope/BackupKeyEnvelopeSetV1.hpp"

#include <gtest/gtest.h>

#include "EnvelopeFixtures.hpp"

namespace galdrine::envelope {

namespace {

using namespace EnvelopeFixtures;
using Set = BackupKeyEnvelopeSetV1;
using Entry = BackupKeyEnvelopeEntryV1;
using Error = BackupKeyEnvelopeSetV1Error;
using Failure = BackupKeyEnvelopeSetV1Failure;

const Entry kPassphraseEntry = entry(Factor::backupPassphrase, 3, 4, 1);
const Entry kRecoveryEntry = entry(Factor::recoveryKey, 5, 6, 1);

// withFields re-encodes the set of both entries with fields replaced, and one removed if named.
[[nodiscard]] Bytes withFields(const Value::Map& changes, std::optional<std::uint64_t> removedKey = std::nullopt) {
  const auto decoded =
      format::DeterministicCBOR::decode(encodedSet(setOf({kPassphraseEntry, kRecoveryEntry})), Set::encodingLimits);
  Value::Map fields = decoded && decoded->asMap() ? *decoded->asMap() : Value::Map{};
  for (const auto& [key, value] : changes) fields.insert_or_assign(key, value);
  if (removedKey) fields.erase(*removedKey);
  return encoded(Value::map(fields), Set::encodingLimits);
}

[[nodiscard]] Bytes withEntries(Value::Array entries) { return withFields({{5, Value::array(std::move(entries))}}); }

}  // namespace

// Entries are stored by factor text, then generation, then artifact, so the same content
// always encodes to the same bytes.
TEST(BackupKeyEnvelopeSetV1, StoresEntriesInCanonicalOrderAndRoundTrips) {
  const Set both = setOf({kRecoveryEntry, kPassphraseEntry});
  EXPECT_EQ(both.entries(), (std::vector{kPassphraseEntry, kRecoveryEntry}));
  EXPECT_EQ(Set::decode(encodedSet(both)), both);
  EXPECT_EQ(both.activeEntry(Factor::recoveryKey), kRecoveryEntry);
  EXPECT_EQ(setOf({kPassphraseEntry}).activeEntry(Factor::recoveryKey), std::nullopt);
  const Entry recoveryFirstGeneration = entry(Factor::recoveryKey, 9, 6, 0);
  EXPECT_TRUE(Set::entryPrecedes(entry(Factor::backupPassphrase, 9, 4, 9), recoveryFirstGeneration));
  EXPECT_TRUE(Set::entryPrecedes(recoveryFirstGeneration, entry(Factor::recoveryKey, 1, 6, 1)));
  EXPECT_TRUE(Set::entryPrecedes(entry(Factor::recoveryKey, 1, 6, 0), recoveryFirstGeneration));
  EXPECT_FALSE(Set::entryPrecedes(recoveryFirstGeneration, recoveryFirstGeneration));
}

TEST(BackupKeyEnvelopeSetV1, MakeRefusesInCheckOrder) {
  EXPECT_EQ(failureOf(Set::make(identifier(1, 15), identifier(2, 15), {})), Error::invalidPackageIdentifier());
  EXPECT_EQ(failureOf(Set::make(identifier(1), identifier(2, 17), {})), Error::invalidLibraryDomainIdentifier());
  const std::pair<std::vector<Entry>, Error> cases[] = {
      {{}, Error::invalidEntryCount()},
      {{kPassphraseEntry, kRecoveryEntry, entry(Factor::recoveryKey, 7, 6, 2)}, Error::invalidEntryCount()},
      {{kPassphraseEntry, entry(Factor::backupPassphrase, 7, 4, 2, false)},
       Error::invalidEntryCount()},  // two of a factor
      {{entry(Factor::backupPassphrase, 3, 4, 1, false)}, Error::missingActiveEnvelope(Factor::backupPassphrase)},
      {{kPassphraseEntry, entry(Factor::recoveryKey, 5, 6, 1, false)},
       Error::missingActiveEnvelope(Factor::recoveryKey)},
      {{kPassphraseEntry, entry(Factor::recoveryKey, 3, 6, 1)}, Error::duplicateArtifactIdentifier()},
      {{kPassphraseEntry, entry(Factor::recoveryKey, 3, 4, 1)},
       Error::sharedKeySlot()},  // the slot before the artifact
  };
  for (std::size_t index = 0; index < std::size(cases); ++index) {
    EXPECT_EQ(failureOf(Set::make(identifier(1), identifier(2), cases[index].first)), cases[index].second)
        << "case " << index;
  }
  // An entry refuses an envelope over 2048 bytes by size; up to 2048 it reaches the envelope's
  // own reading, whose limits no valid envelope comes near.
  EXPECT_EQ(failureOf(Entry::make(Bytes{}, true)), Failure(Error::envelopeTooLarge()));
  EXPECT_EQ(failureOf(Entry::make(Bytes(2049), true)), Failure(Error::envelopeTooLarge()));
  EXPECT_EQ(failureOf(Entry::make(Bytes(2048), true)), Failure(PortableKeyEnvelopeV1Error::malformedEnvelope()));
}

TEST(BackupKeyEnvelopeSetV1, DecodeRefusesInCheckOrder) {
  const Bytes& passphrase = kPassphraseEntry.envelope();
  const Value text = Value::textString("x");
  const Value bytes = Value::byteString(identifier(9));
  const std::pair<Bytes, Failure> cases[] = {
      {encoded(Value::array({text}), Set::encodingLimits), Error::malformedSet()},
      {withFields({{6, text}}), Error::invalidFieldSet()},
      {withFields({}, 4), Error::invalidFieldSet()},
      {withFields({{0, text}}), Error::unsupportedSchema()},
      {withFields({{1, Value::unsignedInteger(2)}}), Error::unsupportedVersion()},
      {withFields({{2, text}}), Error::unsupportedFormat()},
      {withEntries({bytes}), Error::malformedSet()},
      {withEntries({Value::map({{0, Value::byteString(passphrase)}, {1, Value::boolean(true)}, {2, text}})}),
       Error::invalidFieldSet()},
      {withEntries({Value::map({{0, bytes}, {1, Value::boolean(true)}})}),
       PortableKeyEnvelopeV1Error::malformedEnvelope()},
      {withEntries({Value::map({{0, text}, {1, Value::boolean(true)}})}), Error::invalidFieldType(0)},
      {withEntries({Value::map({{0, Value::byteString(passphrase)}, {1, Value::unsignedInteger(1)}})}),
       Error::invalidFieldType(1)},
      {withFields({{3, Value::byteString(identifier(1, 15))}}), Error::invalidPackageIdentifier()},
      {withEntries({}), Error::invalidEntryCount()},
      {withEntries({Value::map({{0, Value::byteString(kRecoveryEntry.envelope())}, {1, Value::boolean(true)}}),
                    Value::map({{0, Value::byteString(passphrase)}, {1, Value::boolean(true)}})}),
       Error::nonCanonicalEncoding()},
  };
  for (std::size_t index = 0; index < std::size(cases); ++index) {
    EXPECT_EQ(failureOf(Set::decode(cases[index].first)), cases[index].second) << "case " << index;
  }
  // Every field of another CBOR type names its key; the identifiers 3 and 4 are byte strings.
  for (std::uint64_t key = 0; key <= 5; ++key) {
    EXPECT_EQ(failureOf(Set::decode(withFields({{key, key == 3 || key == 4 ? text : bytes}}))),
              Failure(Error::invalidFieldType(key)));
  }
  // Entries are taken before the identifiers: both wrong gives the entries' error.
  EXPECT_EQ(failureOf(Set::decode(withFields({{3, text}, {5, text}}))), Failure(Error::invalidFieldType(5)));
}

}  // namespace galdrine::envelope
