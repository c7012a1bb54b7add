// The package readers: binding an envelope file to its package, unlocking with either factor,
// loose envelopes, payload frame forwarding and the draft header check.

#include <gtest/gtest.h>

#include <filesystem>

#include "GaldrineCore/GaldrineBackupAuthenticatedDataV1.hpp"
#include "GaldrineCore/GaldrineBackupPackageV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineAESGCMFrameV1.hpp"
#include "GaldrineCryptoSupport/GaldrineArgon2id.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupKeyEnvelopeFileV1.hpp"
#include "GaldrineRecoveryCore/GaldrineBackupKeyEnvelopeSetReaderV1.hpp"
#include "GaldrineRecoveryCore/GaldrineBackupPayloadReader.hpp"
#include "GaldrineRecoveryCore/GaldrinePortableKeyEnvelopeReaderV1.hpp"
#include "GaldrineRecoveryCore/GaldrinePrototypeHeaderValidator.hpp"
#include "GaldrineRecoveryCore/RecoveryTestPackages.hpp"
#include "Support/GaldrineFileFixtures.hpp"
#include "Support/GaldrineTemporaryDirectory.hpp"

namespace {

namespace fs = std::filesystem;
using namespace RecoveryTestPackages;
using Reader = GaldrineBackupKeyEnvelopeSetReaderV1;
using ReaderError = GaldrineBackupKeyEnvelopeSetReaderV1Error;
using OpenFailure = GaldrineBackupKeyEnvelopeSetReaderV1OpenFailure;
using UnlockFailure = GaldrineBackupKeyEnvelopeSetReaderV1UnlockFailure;
using EnvelopeError = GaldrinePortableKeyEnvelopeV1Error;
using Factor = GaldrinePortableKeyFactorV1;

class GaldrineKeyEnvelopeSetReaderTest : public testing::Test {
 protected:
  void SetUp() override { createPackage(packageURL(), identifier(1)); }
  [[nodiscard]] fs::path packageURL() const { return directory_ / "library.galdrine"; }

  GaldrineTemporaryDirectory directory_;
};

TEST_F(GaldrineKeyEnvelopeSetReaderTest, UnlocksWithTheRecoveryKeyAndReadsTheSameTwice) {
  const auto first = Reader::open(packageURL());
  const auto second = Reader::open(packageURL());
  ASSERT_TRUE(first && second);
  EXPECT_EQ(*first, *second);
  EXPECT_EQ(first->envelopeSetSHA256().size(), 32u);
  EXPECT_EQ(first->envelopeSetSHA256(), second->envelopeSetSHA256());
  const auto bpmk = first->openWithRecoveryKey(kRecoveryKey);
  ASSERT_TRUE(bpmk.has_value());
  EXPECT_EQ(*bpmk, kBpmk);
}

TEST_F(GaldrineKeyEnvelopeSetReaderTest, AMissingFactorIsRefusedBeforeAnyDerivation) {
  const auto reader = Reader::open(packageURL());
  ASSERT_TRUE(reader.has_value());
  const auto derivationsBefore = GaldrineArgon2id::derivationCount();
  const auto refused = reader->openWithBackupPassphrase(GaldrineByteText::view(kPassphrase));
  ASSERT_FALSE(refused.has_value());
  EXPECT_EQ(refused.error(), UnlockFailure(ReaderError::factorUnavailable(Factor::backupPassphrase)));
  EXPECT_EQ(GaldrineArgon2id::derivationCount(), derivationsBefore);
  EXPECT_TRUE(reader->openWithRecoveryKey(kRecoveryKey).has_value());
}

TEST_F(GaldrineKeyEnvelopeSetReaderTest, AWrongRecoveryKeyReadsAsTheEnvelopesAuthenticationFailure) {
  const auto reader = Reader::open(packageURL());
  ASSERT_TRUE(reader.has_value());
  Bytes wrongKey = kRecoveryKey;
  wrongKey[31] ^= 0x01;
  const auto refused = reader->openWithRecoveryKey(wrongKey);
  ASSERT_FALSE(refused.has_value());
  EXPECT_EQ(refused.error(), UnlockFailure(EnvelopeError::authenticationFailed()));
}

TEST_F(GaldrineKeyEnvelopeSetReaderTest, AForeignEnvelopeFileIsRefusedWhateverTheCredential) {
  const fs::path foreignURL = directory_ / "other.galdrine";
  createPackage(foreignURL, identifier(9));
  fs::copy_file(foreignURL / GaldrineBackupPackageV1::keyEnvelopesName, packageURL() / GaldrineBackupPackageV1::keyEnvelopesName,
                fs::copy_options::overwrite_existing);
  const auto refused = Reader::open(packageURL());
  ASSERT_FALSE(refused.has_value());
  // The envelope file's own read binds first; the reader passes its refusal on unchanged.
  EXPECT_EQ(refused.error(), OpenFailure(GaldrineBackupKeyEnvelopeFileV1Failure(
                                 GaldrineBackupKeyEnvelopeFileV1Error::packageBindingMismatch)));
}

TEST_F(GaldrineKeyEnvelopeSetReaderTest, APackageWithoutEnvelopeFileFailsInTheFileRead) {
  fs::remove(packageURL() / GaldrineBackupPackageV1::keyEnvelopesName);
  const auto refused = Reader::open(packageURL());
  ASSERT_FALSE(refused.has_value());
  EXPECT_EQ(refused.error(), OpenFailure(GaldrineBackupKeyEnvelopeFileV1Failure(
                                 GaldrineBackupKeyEnvelopeFileV1Error::envelopeFileMissing)));
}

TEST_F(GaldrineKeyEnvelopeSetReaderTest, BuiltFieldByFieldTheSetMustNameThePackage) {
  const auto package = GaldrineBackupPackageV1::open(packageURL());
  ASSERT_TRUE(package.has_value());
  const auto foreign = Reader::make(*package, envelopeSet(identifier(9), Factors::recoveryKeyOnly), Bytes(32, 1));
  ASSERT_FALSE(foreign.has_value());
  EXPECT_EQ(foreign.error(), ReaderError::packageBindingMismatch());
  const auto own = Reader::make(*package, envelopeSet(identifier(1), Factors::recoveryKeyOnly), Bytes(32, 1));
  ASSERT_TRUE(own.has_value());
  EXPECT_EQ(*own->openWithRecoveryKey(kRecoveryKey), kBpmk);
}

TEST_F(GaldrineKeyEnvelopeSetReaderTest, ABackupPassphraseUnlocksAndAWrongOneDoesNot) {
  const fs::path bothURL = directory_ / "both.galdrine";
  createPackage(bothURL, identifier(2), Factors::both);
  const auto reader = Reader::open(bothURL);
  ASSERT_TRUE(reader.has_value());
  const auto bpmk = reader->openWithBackupPassphrase(GaldrineByteText::view(kPassphrase));
  ASSERT_TRUE(bpmk.has_value());
  EXPECT_EQ(*bpmk, kBpmk);
  const auto refused = reader->openWithBackupPassphrase(GaldrineByteText::view("lantern orchard 47 quietly drifted"));
  ASSERT_FALSE(refused.has_value());
  EXPECT_EQ(refused.error(), UnlockFailure(EnvelopeError::authenticationFailed()));
}

TEST_F(GaldrineKeyEnvelopeSetReaderTest, ALooseEnvelopeOpensOnlyWithItsWholeContext) {
  const auto reader = Reader::open(packageURL());
  ASSERT_TRUE(reader.has_value());
  const auto& entry = reader->envelopeSet().entries().front();
  const auto& metadata = entry.metadata();
  const ByteView headerData = reader->package().headerData();
  const auto opened = GaldrinePortableKeyEnvelopeReaderV1::openWithRecoveryKey(
      entry.envelope(), kRecoveryKey, headerData, kLibraryDomainIdentifier, metadata.artifactIdentifier(),
      metadata.keySlotIdentifier(), metadata.generation());
  ASSERT_TRUE(opened.has_value());
  EXPECT_EQ(*opened, kBpmk);

  using Failure = GaldrinePortableKeyEnvelopeReaderV1Failure;
  const auto wrongGeneration = GaldrinePortableKeyEnvelopeReaderV1::openWithRecoveryKey(
      entry.envelope(), kRecoveryKey, headerData, kLibraryDomainIdentifier, metadata.artifactIdentifier(),
      metadata.keySlotIdentifier(), metadata.generation() + 1);
  EXPECT_EQ(wrongGeneration.error(), Failure(EnvelopeError::contextMismatch()));
  const auto otherDomain = GaldrinePortableKeyEnvelopeReaderV1::openWithRecoveryKey(
      entry.envelope(), kRecoveryKey, headerData, identifier(7), metadata.artifactIdentifier(), metadata.keySlotIdentifier(),
      metadata.generation());
  EXPECT_EQ(otherDomain.error(), Failure(EnvelopeError::authenticationFailed()));
  // The header is decoded before anything else: a bad header wins over a bad domain.
  const Bytes truncatedHeader(headerData.begin(), headerData.end() - 1);
  const auto badHeader = GaldrinePortableKeyEnvelopeReaderV1::openWithRecoveryKey(
      entry.envelope(), kRecoveryKey, truncatedHeader, Bytes(3, 0), metadata.artifactIdentifier(),
      metadata.keySlotIdentifier(), metadata.generation());
  ASSERT_FALSE(badHeader.has_value());
  EXPECT_TRUE(std::holds_alternative<GaldrineBackupFormatHeaderV1Failure>(badHeader.error()));
}

TEST(GaldrineBackupPayloadReaderTest, OpensAFrameUnderItsAuthenticatedDataOnly) {
  const Bytes key(32, 0x77);
  const auto data = GaldrineBackupAuthenticatedDataV1::make(GaldrineBackupAADDomainV1::resourceChunk, identifier(1),
                                                            identifier(2), identifier(3), 4, std::nullopt);
  const auto otherOrdinal = GaldrineBackupAuthenticatedDataV1::make(GaldrineBackupAADDomainV1::resourceChunk, identifier(1),
                                                                    identifier(2), identifier(3), 5, std::nullopt);
  ASSERT_TRUE(data && otherOrdinal);
  const Bytes plaintext = GaldrineByteText::bytes("a resource chunk");
  const auto frame = GaldrineAESGCMFrameV1::seal(plaintext, key, *data->encoded(), 1024);
  ASSERT_TRUE(frame.has_value());

  const auto opened = GaldrineBackupPayloadReader::open(*frame, key, *data, 1024);
  ASSERT_TRUE(opened.has_value());
  EXPECT_EQ(*opened, plaintext);
  const auto moved = GaldrineBackupPayloadReader::open(*frame, key, *otherOrdinal, 1024);
  ASSERT_FALSE(moved.has_value());
  EXPECT_EQ(moved.error(), GaldrineBackupPayloadReaderOpenFailure(GaldrineAESGCMFrameV1Error::authenticationFailed()));
}

TEST(GaldrinePrototypeHeaderValidatorTest, TheMagicIsJudgedBeforeTheVersion) {
  using Error = GaldrinePrototypeHeaderValidationError;
  struct Case {
    std::string magic;
    std::int64_t formatVersion;
    std::optional<Error> expected;
  };
  const Case cases[] = {
      {"GALDRINE-DRAFT", 0, std::nullopt},
      {"GALDRINE-DRAFT", 1, Error::unsupportedVersion(1)},
      {"GALDRINE-DRAFT", -3, Error::unsupportedVersion(-3)},
      {"GALDRINE-DRAFX", 7, Error::invalidMagic()},
      {"GALDRINE-DRAFT ", 0, Error::invalidMagic()},
      {"", 0, Error::invalidMagic()},
  };
  for (const Case& testCase : cases) {
    const auto result = GaldrinePrototypeHeaderValidator::validate({testCase.magic, testCase.formatVersion});
    EXPECT_EQ(result ? std::nullopt : std::optional<Error>(result.error()), testCase.expected) << testCase.magic;
  }
}

}  // namespace
