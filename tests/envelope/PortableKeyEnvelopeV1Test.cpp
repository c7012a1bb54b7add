#include "envelope/PortableKeyEnvelopeV1.hpp"

#include <gtest/gtest.h>

#include "EnvelopeFixtures.hpp"
#include "envelope/BackupPassphrasePolicy.hpp"
#include "kdf/Argon2id.hpp"

namespace galdrine::envelope {

namespace {

using namespace EnvelopeFixtures;
using Error = PortableKeyEnvelopeV1Error;
using Metadata = PortableKeyEnvelopeMetadataV1;
namespace Envelope = PortableKeyEnvelopeV1;

const Bytes kBackupPackageMasterKey = identifier(0x0B, 32);
const Bytes kRecoveryKey = identifier(0x0C, 32);
const Bytes kPassphrase = ByteText::bytes("correct horse battery staple");
const Bytes kArtifact = identifier(3);
const Bytes kKeySlot = identifier(4);
constexpr std::uint64_t kGeneration = 7;
const PortableKeyEnvelopeContextV1 kContext = context(kArtifact, kKeySlot, kGeneration);
const auto kMinimumProfile = *BackupPassphraseKDFProfileV1::make(3, 64 * 1024 * 1024);  // Argon2id's least cost

[[nodiscard]] Bytes sealedWithRecoveryKey() {
  return Envelope::sealWithRecoveryKey(kBackupPackageMasterKey, kRecoveryKey, kContext).value_or(Bytes{});
}

[[nodiscard]] Value::Map decodedMap(ByteView envelope) {
  const auto decoded = format::DeterministicCBOR::decode(envelope, Envelope::encodingLimits);
  return decoded && decoded->asMap() ? *decoded->asMap() : Value::Map{};
}

// Wide enough to write what the envelope's own limits refuse to read.
constexpr format::CBORLimits kWideLimits{8192, 4096, 256, 16, 32, 2};

// withField re-encodes an envelope with one field set (or, for std::nullopt, removed).
[[nodiscard]] Bytes withField(ByteView envelope, std::uint64_t key, std::optional<Value> value,
                              const format::CBORLimits& limits = Envelope::encodingLimits) {
  Value::Map fields = decodedMap(envelope);
  if (value) fields.insert_or_assign(key, std::move(*value));
  if (!value) fields.erase(key);
  return encoded(Value::map(fields), limits);
}

// altered changes one stored field to another value of its kind (the memory limit by a KiB).
[[nodiscard]] Bytes altered(ByteView envelope, std::uint64_t key) {
  const Value::Map fields = decodedMap(envelope);
  const Bytes* bytes = fields.at(key).asByteString();
  if (!bytes)
    return withField(envelope, key, Value::unsignedInteger(*fields.at(key).asUnsigned() + (key == 7 ? 1024 : 1)));
  Bytes changed = *bytes;
  changed.front() ^= 0x01;
  return withField(envelope, key, Value::byteString(changed));
}

}  // namespace

// Both factors round trip and declare their factor, derivation, cost and the context's artifact,
// key slot and generation; every seal draws a fresh salt and nonce.
TEST(PortableKeyEnvelopeV1, SealsAndOpensWithEitherFactor) {
  const Bytes recovery = sealedWithRecoveryKey();
  const Bytes passphrase =
      Envelope::sealWithBackupPassphrase(kBackupPackageMasterKey, kPassphrase, kMinimumProfile, kContext)
          .value_or(Bytes{});
  EXPECT_EQ(Envelope::openWithRecoveryKey(recovery, kRecoveryKey, kContext), kBackupPackageMasterKey);
  EXPECT_EQ(Envelope::openWithBackupPassphrase(passphrase, kPassphrase, kContext), kBackupPackageMasterKey);
  const Value::Map fields = decodedMap(recovery);
  EXPECT_EQ(Envelope::metadata(recovery),
            Metadata::make(Factor::recoveryKey, PortableKeyDerivationV1::hkdfSHA256, *fields.at(5).asByteString(), 0, 0,
                           kArtifact, kKeySlot, kGeneration));
  EXPECT_EQ(Envelope::metadata(passphrase),
            Metadata::make(Factor::backupPassphrase, PortableKeyDerivationV1::argon2idV13,
                           *decodedMap(passphrase).at(5).asByteString(), kMinimumProfile.operationsLimit(),
                           kMinimumProfile.memoryLimitBytes(), kArtifact, kKeySlot, kGeneration));
  const Value::Map second = decodedMap(sealedWithRecoveryKey());
  EXPECT_TRUE(second.at(5) != fields.at(5) && second.at(11) != fields.at(11));
  // Another key, or the passphrase with a trailing space, is another credential.
  EXPECT_EQ(failureOf(Envelope::openWithRecoveryKey(recovery, identifier(0x0D, 32), kContext)),
            Error::authenticationFailed());
  EXPECT_EQ(failureOf(Envelope::openWithBackupPassphrase(passphrase, ByteText::bytes("correct horse battery staple "),
                                                         kContext)),
            Error::authenticationFailed());
}

TEST(PortableKeyEnvelopeV1, SealChecksKeysAndPolicyInOrderWithoutDeriving) {
  const Bytes shortKey = identifier(0x0B, 31);
  const Bytes weak = ByteText::bytes("aaaa aaaa");
  const std::uint64_t derivations = kdf::Argon2id::derivationCount();
  EXPECT_EQ(failureOf(Envelope::sealWithRecoveryKey(shortKey, shortKey, kContext)),
            Error::invalidBackupPackageMasterKeyByteCount());
  EXPECT_EQ(failureOf(Envelope::sealWithRecoveryKey(kBackupPackageMasterKey, shortKey, kContext)),
            Error::invalidRecoveryKeyByteCount());
  EXPECT_EQ(failureOf(Envelope::sealWithBackupPassphrase(shortKey, weak, kMinimumProfile, kContext)),
            Error::invalidBackupPackageMasterKeyByteCount());
  // The backup passphrase policy: eight characters of valid UTF-8, and the creation rule.
  EXPECT_TRUE(BackupPassphrasePolicy::accepts(ByteText::view("abcdefgh")));
  for (const Bytes& refused :
       {weak, ByteText::bytes("abcdefg"), Bytes{'a', 'b', 'c', 'd', 'e', 'f', 'g', 0xFF}, Bytes{}}) {
    EXPECT_EQ(
        failureOf(Envelope::sealWithBackupPassphrase(kBackupPackageMasterKey, refused, kMinimumProfile, kContext)),
        Error::invalidCredential());
  }
  EXPECT_EQ(kdf::Argon2id::derivationCount(), derivations);
}

TEST(PortableKeyEnvelopeV1, OpeningRefusesInCheckOrderBeforeAnyArgon2id) {
  const Bytes passphrase = placeholderEnvelope(Factor::backupPassphrase, kArtifact, kKeySlot, kGeneration);
  const Bytes recovery = sealedWithRecoveryKey();
  struct OpenCase {
    const char* name;
    bool withPassphrase;
    Bytes envelope;
    Bytes credential;
    PortableKeyEnvelopeContextV1 context;
    Error expected;
  };
  const OpenCase cases[] = {
      {"empty passphrase, envelope not read", true, {0xFF}, {}, kContext, Error::invalidCredential()},
      {"31-byte recovery key, envelope not read",
       false,
       {0xFF},
       identifier(0x0C, 31),
       kContext,
       Error::invalidRecoveryKeyByteCount()},
      {"recovery key on a passphrase envelope", false, passphrase, kRecoveryKey, kContext, Error::unexpectedFactor()},
      {"factor before derivation", true, withField(recovery, 4, Value::textString("scrypt")), kPassphrase, kContext,
       Error::unexpectedFactor()},
      {"another generation", true, passphrase, kPassphrase, context(kArtifact, kKeySlot, kGeneration + 1),
       Error::contextMismatch()},
      {"another artifact", true, passphrase, kPassphrase, context(identifier(5), kKeySlot, kGeneration),
       Error::contextMismatch()},
      {"another key slot", false, recovery, kRecoveryKey, context(kArtifact, identifier(5), kGeneration),
       Error::contextMismatch()},
      {"operations limit 13", true, withField(passphrase, 6, Value::unsignedInteger(13)), kPassphrase, kContext,
       Error::invalidDerivationProfile()},
      // Reading the metadata never looks at key 11; only the open step does.
      {"frame as text", false, withField(recovery, 11, Value::textString("frame")), kRecoveryKey, kContext,
       Error::invalidFieldType(11)},
  };
  const std::uint64_t derivations = kdf::Argon2id::derivationCount();
  for (const OpenCase& open : cases) {
    const auto result = open.withPassphrase
                            ? Envelope::openWithBackupPassphrase(open.envelope, open.credential, open.context)
                            : Envelope::openWithRecoveryKey(open.envelope, open.credential, open.context);
    EXPECT_EQ(failureOf(result), open.expected) << open.name;
  }
  EXPECT_EQ(kdf::Argon2id::derivationCount(), derivations);
}

TEST(PortableKeyEnvelopeV1, MetadataReadingRefusesInCheckOrder) {
  const Bytes recovery = placeholderEnvelope(Factor::recoveryKey, kArtifact, kKeySlot, kGeneration);
  const Bytes passphrase = placeholderEnvelope(Factor::backupPassphrase, kArtifact, kKeySlot, kGeneration);
  const Value bytes = Value::byteString(identifier(9));
  const Value text = Value::textString("x");
  const Value tooLarge = Value::unsignedInteger(std::uint64_t{1} << 63);
  const auto with = [&recovery](std::uint64_t key, std::optional<Value> value) {
    return withField(recovery, key, std::move(value));
  };
  const std::pair<Bytes, Error> cases[] = {
      {encoded(Value::array({text})), Error::malformedEnvelope()},
      {withField(recovery, 11, Value::byteString(Bytes(513)), kWideLimits), Error::malformedEnvelope()},
      {with(11, std::nullopt), Error::invalidFieldSet()},
      {with(0, text), Error::unsupportedSchema()},
      {with(1, Value::unsignedInteger(2)), Error::unsupportedVersion()},
      {with(2, Value::textString("aes-128-gcm")), Error::unsupportedAlgorithm()},
      {with(3, Value::textString("password")), Error::unsupportedFactor()},
      {with(4, Value::textString("scrypt")), Error::unsupportedDerivation()},
      {with(7, tooLarge), Error::invalidDerivationProfile()},                      // above the signed range
      {withField(with(0, text), 1, bytes), Error::unsupportedSchema()},            // schema before version
      {withField(with(3, text), 4, text), Error::unsupportedFactor()},             // factor before derivation
      {withField(with(7, tooLarge), 5, text), Error::invalidDerivationProfile()},  // memory limit before salt
      {withField(with(5, Value::byteString(identifier(1, 15))), 10, bytes),
       Error::invalidFieldType(10)},  // types first
      {with(5, Value::byteString(identifier(1, 15))), Error::invalidSaltByteCount()},
      {with(8, Value::byteString(identifier(1, 17))), Error::invalidArtifactIdentifier()},
      {with(9, Value::byteString(identifier(1, 15))), Error::invalidKeySlotIdentifier()},
      {with(6, Value::unsignedInteger(1)), Error::invalidDerivationProfile()},
      {with(7, Value::unsignedInteger(1024)), Error::invalidDerivationProfile()},
      {withField(passphrase, 4, Value::textString("hkdf-sha-256")), Error::invalidDerivationProfile()},
  };
  for (std::size_t index = 0; index < std::size(cases); ++index) {
    EXPECT_EQ(failureOf(Envelope::metadata(cases[index].first)), cases[index].second) << "case " << index;
  }
  // Every field 0 to 10 of another CBOR type names its key; the byte strings are 5, 8 and 9.
  for (std::uint64_t key = 0; key <= 10; ++key) {
    EXPECT_EQ(failureOf(Envelope::metadata(with(key, key == 5 || key == 8 || key == 9 ? text : bytes))),
              Error::invalidFieldType(key))
        << "key " << key;
  }
}

// Every public field and the package and library domain feed the authenticated data (of both
// factors alike): with the right credential and a context that agrees with the change, the
// envelope still must not open. Nor does any single-bit change of the whole envelope.
TEST(PortableKeyEnvelopeV1, EveryAlteredFieldAndBitFailsToOpen) {
  const Bytes passphrase =
      Envelope::sealWithBackupPassphrase(kBackupPackageMasterKey, kPassphrase, kMinimumProfile, kContext)
          .value_or(Bytes{});
  for (std::uint64_t key = 5; key <= 10; ++key) {
    const Bytes changed = altered(passphrase, key);
    const Metadata agreed = Envelope::metadata(changed).value_or(*Envelope::metadata(passphrase));
    const auto agreeing = context(agreed.artifactIdentifier(), agreed.keySlotIdentifier(), agreed.generation());
    EXPECT_EQ(failureOf(Envelope::openWithBackupPassphrase(changed, kPassphrase, agreeing)),
              Error::authenticationFailed())
        << "key " << key;
  }
  const Bytes recovery = sealedWithRecoveryKey();
  for (const auto& elsewhere :
       {context(kArtifact, kKeySlot, kGeneration, 9), context(kArtifact, kKeySlot, kGeneration, 1, 9)}) {
    EXPECT_EQ(failureOf(Envelope::openWithRecoveryKey(recovery, kRecoveryKey, elsewhere)),
              Error::authenticationFailed());
  }
  for (std::size_t bit = 0; bit < recovery.size() * 8; ++bit) {
    Bytes tampered = recovery;
    tampered[bit / 8] ^= static_cast<std::uint8_t>(1U << (bit % 8));
    EXPECT_FALSE(Envelope::openWithRecoveryKey(tampered, kRecoveryKey, kContext).has_value()) << "bit " << bit;
  }
}

}  // namespace galdrine::envelope
