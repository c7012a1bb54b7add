#include "envelope/PortableKeyEnvelopeV1.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "format/sealing/AESGCMFrameV1.hpp"
#include "kdf/Argon2id.hpp"
#include "platform/HKDF.hpp"
#include "envelope/PortableKeyEnvelopeBindingV1.hpp"
#include "envelope/PortableKeyEnvelopeEncodingV1.hpp"
#include "EnvelopeFixtures.hpp"

namespace galdrine::envelope {

namespace {

using namespace EnvelopeFixtures;
using Error = PortableKeyEnvelopeV1Error;
using Derivation = PortableKeyDerivationV1;
namespace Envelope = PortableKeyEnvelopeV1;

const Bytes kBackupPackageMasterKey = identifier(0x0B, 32);
const Bytes kRecoveryKey = identifier(0x0C, 32);
const Bytes kPassphrase = ByteText::bytes("correct horse battery staple");
const Bytes kArtifact = identifier(3);
const Bytes kKeySlot = identifier(4);
constexpr std::uint64_t kGeneration = 7;

[[nodiscard]] BackupPassphraseKDFProfileV1 minimumProfile() {
  auto profile = BackupPassphraseKDFProfileV1::make(minimumOperationsLimit, minimumMemoryLimitBytes);
  EXPECT_TRUE(profile.has_value());
  return *profile;
}

[[nodiscard]] PortableKeyEnvelopeContextV1 ownContext() { return context(kArtifact, kKeySlot, kGeneration); }

[[nodiscard]] Bytes sealedWithRecoveryKey() {
  const auto envelope = Envelope::sealWithRecoveryKey(kBackupPackageMasterKey, kRecoveryKey, ownContext());
  EXPECT_TRUE(envelope.has_value());
  return envelope ? *envelope : Bytes{};
}

[[nodiscard]] Bytes sealedWithPassphrase() {
  const auto envelope = Envelope::sealWithBackupPassphrase(kBackupPackageMasterKey, kPassphrase, minimumProfile(), ownContext());
  EXPECT_TRUE(envelope.has_value());
  return envelope ? *envelope : Bytes{};
}

[[nodiscard]] Bytes withField(ByteView envelope, std::uint64_t key, Value value,
                             const format::CBORLimits& limits = Envelope::encodingLimits) {
  Value::Map fields = decodedMap(envelope);
  fields.insert_or_assign(key, std::move(value));
  return encoded(Value::map(fields), limits);
}

// Wide enough to write what the envelope's own limits refuse to read.
constexpr format::CBORLimits kWideLimits{8192, 4096, 256, 16, 32, 2};

// altered changes one stored field to a different value of the same kind.
[[nodiscard]] Bytes altered(ByteView envelope, std::uint64_t key) {
  const Value::Map fields = decodedMap(envelope);
  const Value& value = fields.at(key);
  if (const Bytes* bytes = value.asByteString()) {
    Bytes changed = *bytes;
    changed.front() ^= 0x01;
    return withField(envelope, key, Value::byteString(changed));
  }
  // The memory limit must stay a multiple of 1 KiB to pass the bounds.
  const std::uint64_t step = key == 7 ? 1024 : 1;
  return withField(envelope, key, Value::unsignedInteger(*value.asUnsigned() + step));
}

// derivations runs `operation` and gives how many Argon2id derivations it started.
template <typename Operation>
[[nodiscard]] std::uint64_t derivations(Operation operation) {
  const std::uint64_t before = kdf::Argon2id::derivationCount();
  operation();
  return kdf::Argon2id::derivationCount() - before;
}

}  // namespace

TEST(PortableKeyEnvelopeV1, RecoveryKeyRoundTripDeclaresItsMetadataAndDrawsFreshRandomness) {
  const Bytes envelope = sealedWithRecoveryKey();
  EXPECT_EQ(Envelope::openWithRecoveryKey(envelope, kRecoveryKey, ownContext()), kBackupPackageMasterKey);
  const auto metadata = Envelope::metadata(envelope);
  ASSERT_TRUE(metadata.has_value());
  EXPECT_EQ(metadata->factor(), Factor::recoveryKey);
  EXPECT_EQ(metadata->derivation(), Derivation::hkdfSHA256);
  EXPECT_EQ(metadata->derivationSalt().size(), 16U);
  EXPECT_EQ(metadata->operationsLimit(), 0U);
  EXPECT_EQ(metadata->memoryLimitBytes(), 0);
  EXPECT_EQ(metadata->artifactIdentifier(), kArtifact);
  EXPECT_EQ(metadata->keySlotIdentifier(), kKeySlot);
  EXPECT_EQ(metadata->generation(), kGeneration);

  const Bytes second = sealedWithRecoveryKey();
  EXPECT_NE(Envelope::metadata(second)->derivationSalt(), metadata->derivationSalt());
  EXPECT_NE(decodedMap(second).at(11), decodedMap(envelope).at(11));
  EXPECT_EQ(failureOf(Envelope::openWithRecoveryKey(envelope, identifier(0x0D, 32), ownContext())),
            Error::authenticationFailed());
}

TEST(PortableKeyEnvelopeV1, PassphraseRoundTripHashesTheBytesAsGiven) {
  const Bytes envelope = sealedWithPassphrase();
  EXPECT_EQ(Envelope::openWithBackupPassphrase(envelope, kPassphrase, ownContext()), kBackupPackageMasterKey);
  const auto metadata = Envelope::metadata(envelope);
  ASSERT_TRUE(metadata.has_value());
  EXPECT_EQ(metadata->factor(), Factor::backupPassphrase);
  EXPECT_EQ(metadata->derivation(), Derivation::argon2idV13);
  EXPECT_EQ(metadata->operationsLimit(), minimumOperationsLimit);
  EXPECT_EQ(metadata->memoryLimitBytes(), minimumMemoryLimitBytes);
  // A trailing space is another passphrase: nothing is trimmed or normalised on opening.
  const Bytes spaced = ByteText::bytes("correct horse battery staple ");
  EXPECT_EQ(failureOf(Envelope::openWithBackupPassphrase(envelope, spaced, ownContext())), Error::authenticationFailed());
}

TEST(PortableKeyEnvelopeV1, SealChecksKeysAndPolicyInOrderWithoutDeriving) {
  const Bytes shortKey = identifier(0x0B, 31);
  const Bytes longKey = identifier(0x0B, 33);
  EXPECT_EQ(failureOf(Envelope::sealWithRecoveryKey(shortKey, shortKey, ownContext())),
            Error::invalidBackupPackageMasterKeyByteCount());
  EXPECT_EQ(failureOf(Envelope::sealWithRecoveryKey(longKey, kRecoveryKey, ownContext())),
            Error::invalidBackupPackageMasterKeyByteCount());
  EXPECT_EQ(failureOf(Envelope::sealWithRecoveryKey(kBackupPackageMasterKey, shortKey, ownContext())),
            Error::invalidRecoveryKeyByteCount());

  const Bytes weak = ByteText::bytes("aaaa aaaa");
  const Bytes notText = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 0xFF};
  EXPECT_EQ(derivations([&] {
              EXPECT_EQ(failureOf(Envelope::sealWithBackupPassphrase(shortKey, weak, minimumProfile(), ownContext())),
                        Error::invalidBackupPackageMasterKeyByteCount());
              for (const Bytes& refused : {weak, notText, Bytes{}}) {
                EXPECT_EQ(failureOf(Envelope::sealWithBackupPassphrase(kBackupPackageMasterKey, refused, minimumProfile(),
                                                                       ownContext())),
                          Error::invalidCredential());
              }
            }),
            0U);
}

TEST(PortableKeyEnvelopeV1, OpeningRefusesCredentialFactorContextAndProfileBeforeAnyDerivation) {
  const Bytes passphraseEnvelope = placeholderEnvelope(Factor::backupPassphrase, kArtifact, kKeySlot, kGeneration);
  const Bytes recoveryEnvelope = sealedWithRecoveryKey();
  const Bytes garbage = {0xFF};
  struct OpenCase {
    const char* name;
    bool withPassphrase;
    Bytes envelope;
    Bytes credential;
    PortableKeyEnvelopeContextV1 context;
    Error expected;
  };
  const OpenCase cases[] = {
      {"empty passphrase, envelope not read", true, garbage, {}, ownContext(), Error::invalidCredential()},
      {"31-byte recovery key, envelope not read", false, garbage, identifier(0x0C, 31), ownContext(),
       Error::invalidRecoveryKeyByteCount()},
      {"passphrase on a recovery envelope", true, recoveryEnvelope, kPassphrase, ownContext(), Error::unexpectedFactor()},
      {"recovery key on a passphrase envelope", false, passphraseEnvelope, kRecoveryKey, ownContext(),
       Error::unexpectedFactor()},
      {"the factor is read before the derivation",
       true, withField(recoveryEnvelope, 4, Value::textString("scrypt")), kPassphrase, ownContext(),
       Error::unexpectedFactor()},
      {"another generation", true, passphraseEnvelope, kPassphrase, context(kArtifact, kKeySlot, kGeneration + 1),
       Error::contextMismatch()},
      {"another artifact", true, passphraseEnvelope, kPassphrase, context(identifier(5), kKeySlot, kGeneration),
       Error::contextMismatch()},
      {"another key slot", false, recoveryEnvelope, kRecoveryKey, context(kArtifact, identifier(5), kGeneration),
       Error::contextMismatch()},
      {"operations limit 13", true, withField(passphraseEnvelope, 6, Value::unsignedInteger(13)), kPassphrase,
       ownContext(), Error::invalidDerivationProfile()},
      {"memory limit below 64 MiB", true, withField(passphraseEnvelope, 7, Value::unsignedInteger(65536)), kPassphrase,
       ownContext(), Error::invalidDerivationProfile()},
  };
  for (const OpenCase& openCase : cases) {
    const std::uint64_t started = derivations([&] {
      const auto result = openCase.withPassphrase
                              ? Envelope::openWithBackupPassphrase(openCase.envelope, openCase.credential, openCase.context)
                              : Envelope::openWithRecoveryKey(openCase.envelope, openCase.credential, openCase.context);
      EXPECT_EQ(failureOf(result), openCase.expected) << openCase.name;
    });
    EXPECT_EQ(started, 0U) << openCase.name;
  }
}

// The authenticated data binds what the metadata does not carry: package and library domain.
TEST(PortableKeyEnvelopeV1, AnotherPackageOrLibraryDomainDoesNotOpen) {
  const Bytes envelope = sealedWithRecoveryKey();
  EXPECT_EQ(failureOf(Envelope::openWithRecoveryKey(envelope, kRecoveryKey, context(kArtifact, kKeySlot, kGeneration, 9))),
            Error::authenticationFailed());
  EXPECT_EQ(
      failureOf(Envelope::openWithRecoveryKey(envelope, kRecoveryKey, context(kArtifact, kKeySlot, kGeneration, 1, 9))),
      Error::authenticationFailed());
}

TEST(PortableKeyEnvelopeV1, OpenStepChecksTheFrameFieldAndThePlaintextLength) {
  const Bytes envelope = sealedWithRecoveryKey();
  const Bytes textFrame = withField(envelope, 11, Value::textString("frame"));
  EXPECT_TRUE(Envelope::metadata(textFrame).has_value());  // reading the metadata never looks at key 11
  EXPECT_EQ(failureOf(Envelope::openWithRecoveryKey(textFrame, kRecoveryKey, ownContext())), Error::invalidFieldType(11));

  // A frame that authenticates but holds 31 bytes, sealed under the envelope's own binding.
  const auto metadata = Envelope::metadata(envelope);
  ASSERT_TRUE(metadata.has_value());
  const auto info = PortableKeyEnvelopeBindingV1::recoveryKeyDerivationInfo(*metadata, ownContext());
  const auto authenticatedData = PortableKeyEnvelopeBindingV1::authenticatedData(*metadata, ownContext());
  ASSERT_TRUE(info && authenticatedData);
  Bytes frameKey(32);
  ASSERT_TRUE(platform::HKDF::deriveSHA256(kRecoveryKey, metadata->derivationSalt(), *info, frameKey));
  const auto shortFrame = format::AESGCMFrameV1::seal(identifier(0x0B, 31), frameKey, *authenticatedData, 32);
  ASSERT_TRUE(shortFrame.has_value());
  EXPECT_EQ(failureOf(Envelope::openWithRecoveryKey(withField(envelope, 11, Value::byteString(*shortFrame)), kRecoveryKey,
                                                    ownContext())),
            Error::invalidBackupPackageMasterKeyByteCount());
}

TEST(PortableKeyEnvelopeV1, MetadataReadingRefusesInCheckOrder) {
  const Bytes recovery = placeholderEnvelope(Factor::recoveryKey, kArtifact, kKeySlot, kGeneration);
  const Bytes passphrase = placeholderEnvelope(Factor::backupPassphrase, kArtifact, kKeySlot, kGeneration);
  const Value bytesValue = Value::byteString(identifier(9));
  const Value textValue = Value::textString("x");
  const auto without = [](ByteView envelope, std::uint64_t key) {
    Value::Map fields = decodedMap(envelope);
    fields.erase(key);
    return encoded(Value::map(fields));
  };
  Bytes trailing = recovery;
  trailing.push_back(0x00);
  struct ReadCase {
    const char* name;
    Bytes envelope;
    Error expected;
  };
  const ReadCase cases[] = {
      {"trailing byte", trailing, Error::malformedEnvelope()},
      {"an array", encoded(Value::array({textValue})), Error::malformedEnvelope()},
      {"a 513-byte frame", withField(recovery, 11, Value::byteString(Bytes(513)), kWideLimits), Error::malformedEnvelope()},
      {"over 2048 bytes", withField(withField(recovery, 11, Value::byteString(Bytes(500))), 12, Value::byteString(Bytes(1600)), kWideLimits),
       Error::malformedEnvelope()},
      {"a thirteenth key", withField(recovery, 12, Value::null()), Error::invalidFieldSet()},
      {"key 11 missing", without(recovery, 11), Error::invalidFieldSet()},
      {"schema as bytes", withField(recovery, 0, bytesValue), Error::invalidFieldType(0)},
      {"another schema", withField(recovery, 0, textValue), Error::unsupportedSchema()},
      {"version as bytes", withField(recovery, 1, bytesValue), Error::invalidFieldType(1)},
      {"version 2", withField(recovery, 1, Value::unsignedInteger(2)), Error::unsupportedVersion()},
      {"schema before version", withField(withField(recovery, 0, textValue), 1, bytesValue), Error::unsupportedSchema()},
      {"algorithm as a number", withField(recovery, 2, Value::unsignedInteger(1)), Error::invalidFieldType(2)},
      {"another algorithm", withField(recovery, 2, Value::textString("aes-128-gcm")), Error::unsupportedAlgorithm()},
      {"factor as bytes", withField(recovery, 3, bytesValue), Error::invalidFieldType(3)},
      {"unknown factor", withField(recovery, 3, Value::textString("password")), Error::unsupportedFactor()},
      {"factor before derivation", withField(withField(recovery, 3, textValue), 4, textValue), Error::unsupportedFactor()},
      {"derivation as a number", withField(recovery, 4, Value::unsignedInteger(0)), Error::invalidFieldType(4)},
      {"unknown derivation", withField(recovery, 4, Value::textString("scrypt")), Error::unsupportedDerivation()},
      {"memory limit as bytes", withField(recovery, 7, bytesValue), Error::invalidFieldType(7)},
      {"memory limit above the signed range",
       withField(recovery, 7, Value::unsignedInteger(std::uint64_t{1} << 63)), Error::invalidDerivationProfile()},
      {"memory limit read before the salt",
       withField(withField(recovery, 7, Value::unsignedInteger(std::uint64_t{1} << 63)), 5, textValue),
       Error::invalidDerivationProfile()},
      {"salt as text", withField(recovery, 5, textValue), Error::invalidFieldType(5)},
      {"operations limit as bytes", withField(recovery, 6, bytesValue), Error::invalidFieldType(6)},
      {"artifact as text", withField(recovery, 8, textValue), Error::invalidFieldType(8)},
      {"key slot as text", withField(recovery, 9, textValue), Error::invalidFieldType(9)},
      {"generation as bytes", withField(recovery, 10, bytesValue), Error::invalidFieldType(10)},
      {"types before lengths", withField(withField(recovery, 5, Value::byteString(identifier(1, 15))), 10, bytesValue),
       Error::invalidFieldType(10)},
      {"15-byte salt", withField(recovery, 5, Value::byteString(identifier(1, 15))), Error::invalidSaltByteCount()},
      {"17-byte artifact", withField(recovery, 8, Value::byteString(identifier(1, 17))), Error::invalidArtifactIdentifier()},
      {"15-byte key slot", withField(recovery, 9, Value::byteString(identifier(1, 15))), Error::invalidKeySlotIdentifier()},
      {"recovery key with Argon2id", withField(recovery, 4, Value::textString("argon2id-v1.3")),
       Error::invalidDerivationProfile()},
      {"recovery key with passes", withField(recovery, 6, Value::unsignedInteger(1)), Error::invalidDerivationProfile()},
      {"recovery key with memory", withField(recovery, 7, Value::unsignedInteger(1024)), Error::invalidDerivationProfile()},
      {"passphrase with HKDF", withField(passphrase, 4, Value::textString("hkdf-sha-256")),
       Error::invalidDerivationProfile()},
      {"passphrase with operations limit 13", withField(passphrase, 6, Value::unsignedInteger(13)),
       Error::invalidDerivationProfile()},
      {"passphrase with memory not whole KiB",
       withField(passphrase, 7, Value::unsignedInteger(static_cast<std::uint64_t>(minimumMemoryLimitBytes) + 1)),
       Error::invalidDerivationProfile()},
  };
  for (const ReadCase& readCase : cases) {
    EXPECT_EQ(failureOf(Envelope::metadata(readCase.envelope)), readCase.expected) << readCase.name;
  }
}

// Each public field feeds the authenticated data; with the right passphrase and a context
// that agrees with the altered field, the envelope must still refuse to open.
TEST(PortableKeyEnvelopeV1, EveryAlteredPublicFieldOfAPassphraseEnvelopeFailsAuthentication) {
  const Bytes envelope = sealedWithPassphrase();
  for (std::uint64_t key = 5; key <= 10; ++key) {
    const Bytes changed = altered(envelope, key);
    EXPECT_EQ(failureOf(Envelope::openWithBackupPassphrase(changed, kPassphrase, contextOf(changed))),
              Error::authenticationFailed())
        << "key " << key;
  }
}

TEST(PortableKeyEnvelopeV1, NoSingleBitFlipOfARecoveryEnvelopeOpens) {
  const Bytes envelope = sealedWithRecoveryKey();
  for (const std::uint64_t key : {5u, 8u, 9u, 10u}) {
    const Bytes changed = altered(envelope, key);
    EXPECT_EQ(failureOf(Envelope::openWithRecoveryKey(changed, kRecoveryKey, contextOf(changed))),
              Error::authenticationFailed())
        << "key " << key;
  }
  for (std::size_t bit = 0; bit < envelope.size() * 8; ++bit) {
    Bytes tampered = envelope;
    tampered[bit / 8] ^= static_cast<std::uint8_t>(1U << (bit % 8));
    EXPECT_FALSE(Envelope::openWithRecoveryKey(tampered, kRecoveryKey, ownContext()).has_value()) << "bit " << bit;
  }
}

TEST(PortableKeyEnvelopeV1, ContextChecksIdentifierLengthsInOrder) {
  const Bytes short15 = identifier(1, 15);
  EXPECT_EQ(failureOf(PortableKeyEnvelopeContextV1::make(header(), short15, short15, short15, 0)),
            Error::invalidLibraryDomainIdentifier());
  EXPECT_EQ(failureOf(PortableKeyEnvelopeContextV1::make(header(), kArtifact, short15, short15, 0)),
            Error::invalidArtifactIdentifier());
  EXPECT_EQ(failureOf(PortableKeyEnvelopeContextV1::make(header(), kArtifact, kArtifact, identifier(1, 17), 0)),
            Error::invalidKeySlotIdentifier());
  EXPECT_TRUE(PortableKeyEnvelopeContextV1::make(header(), kArtifact, kArtifact, kArtifact,
                                                         std::numeric_limits<std::uint64_t>::max())
                  .has_value());
}

TEST(BackupPassphraseKDFProfileV1, KeepsTheArgon2idBoundsInValueAndDocument) {
  EXPECT_EQ(failureOf(BackupPassphraseKDFProfileV1::make(13, minimumMemoryLimitBytes)),
            kdf::Argon2idError::operationsLimitOutOfRange(3, 12, 13));
  EXPECT_EQ(failureOf(BackupPassphraseKDFProfileV1::make(3, minimumMemoryLimitBytes + 1)),
            kdf::Argon2idError::memoryLimitMustBeKiBAligned(minimumMemoryLimitBytes + 1));

  const auto profile = BackupPassphraseKDFProfileV1::make(4, 2 * minimumMemoryLimitBytes);
  ASSERT_TRUE(profile.has_value());
  const nlohmann::json document = profile->encodeDocument();
  EXPECT_EQ(document, nlohmann::json::parse(R"({"operationsLimit": 4, "memoryLimitBytes": 134217728})"));
  EXPECT_EQ(BackupPassphraseKDFProfileV1::decodeDocument(document), *profile);

  using DocumentFailure = kdf::Argon2idParametersDocumentFailure;
  const auto decodeFailure = [](const char* text) {
    return failureOf(BackupPassphraseKDFProfileV1::decodeDocument(nlohmann::json::parse(text)));
  };
  EXPECT_EQ(decodeFailure(R"({"memoryLimitBytes": 67108864})"), DocumentFailure(platform::JSONDocumentError::keyNotFound));
  EXPECT_EQ(decodeFailure(R"({"operationsLimit": "3", "memoryLimitBytes": 67108864})"),
            DocumentFailure(platform::JSONDocumentError::typeMismatch));
  EXPECT_EQ(decodeFailure(R"({"operationsLimit": 2, "memoryLimitBytes": 67108864})"),
            DocumentFailure(kdf::Argon2idError::operationsLimitOutOfRange(3, 12, 2)));
}

}  // namespace galdrine::envelope
