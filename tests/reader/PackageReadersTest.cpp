// The package readers: binding an envelope file to its package, unlocking, loose envelopes and
// the draft header check. Unlocking with the passphrase and reading payload frames are met by
// every inspection and export the recovery suite runs.

#include <gtest/gtest.h>

#include "envelope/BackupKeyEnvelopeFileV1.hpp"
#include "kdf/Argon2id.hpp"
#include "reader/BackupKeyEnvelopeSetReader.hpp"
#include "reader/PortableKeyEnvelopeReader.hpp"
#include "reader/PrototypeHeaderValidator.hpp"
#include "support/RecoveryTestPackages.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::reader {

namespace {

using namespace testsupport::RecoveryTestPackages;
using Reader = BackupKeyEnvelopeSetReader;
using ReaderError = BackupKeyEnvelopeSetReaderError;
using UnlockFailure = BackupKeyEnvelopeSetReaderUnlockFailure;
using FileError = envelope::BackupKeyEnvelopeFileV1Error;
using EnvelopeError = envelope::PortableKeyEnvelopeV1Error;

class KeyEnvelopeSetReaderTest : public testing::Test {
 protected:
  [[nodiscard]] fs::path packagePath() const { return directory_ / "Library.galdrine"; }
  [[nodiscard]] Bytes bpmk() const {
    return Bytes(writer_.backupPackageMasterKey().begin(), writer_.backupPackageMasterKey().end());
  }

  testsupport::TemporaryDirectory directory_;
  Writer writer_ = createWithRecoveryKey(packagePath());
};

TEST_F(KeyEnvelopeSetReaderTest, TheRecoveryKeyUnlocksAndAMissingFactorCostsNoDerivation) {
  const auto reader = Reader::open(packagePath());
  ASSERT_TRUE(reader.has_value());
  EXPECT_EQ(reader->openWithRecoveryKey(kRecoveryKey), bpmk());
  const auto derivationsBefore = kdf::Argon2id::derivationCount();
  EXPECT_EQ(reader->openWithBackupPassphrase(kPassphrase).error(),
            UnlockFailure(ReaderError::factorUnavailable(envelope::PortableKeyFactorV1::backupPassphrase)));
  EXPECT_EQ(kdf::Argon2id::derivationCount(), derivationsBefore);
  Bytes wrongKey = kRecoveryKey;
  wrongKey[31] ^= 0x01;
  EXPECT_EQ(reader->openWithRecoveryKey(wrongKey).error(), UnlockFailure(EnvelopeError::authenticationFailed()));
}

TEST_F(KeyEnvelopeSetReaderTest, AnEnvelopeFileMustBeThereAndNameItsPackage) {
  const fs::path otherPath = directory_ / "Other.galdrine";
  const Writer other = createWithRecoveryKey(otherPath, 8);
  const auto foreign = envelope::BackupKeyEnvelopeFileV1::read(other.package());
  const auto package = format::BackupPackageV1::open(packagePath());
  ASSERT_TRUE(foreign && package);
  // Built field by field, the reader makes the binding check itself.
  EXPECT_EQ(Reader::make(*package, foreign->envelopeSet, foreign->encodedSHA256).error(),
            ReaderError::packageBindingMismatch());
  // Opened from disk, the envelope file's own read binds first, and its refusal passes on as it came.
  const fs::path envelopes = packagePath() / format::BackupPackageV1::keyEnvelopesName;
  fs::copy_file(otherPath / format::BackupPackageV1::keyEnvelopesName, envelopes, fs::copy_options::overwrite_existing);
  using OpenFailure = BackupKeyEnvelopeSetReaderOpenFailure;
  EXPECT_EQ(Reader::open(packagePath()).error(),
            OpenFailure(envelope::BackupKeyEnvelopeFileV1Failure(FileError::packageBindingMismatch)));
  fs::remove(envelopes);
  EXPECT_EQ(Reader::open(packagePath()).error(),
            OpenFailure(envelope::BackupKeyEnvelopeFileV1Failure(FileError::envelopeFileMissing)));
}

TEST_F(KeyEnvelopeSetReaderTest, ALooseEnvelopeOpensOnlyWithItsWholeContext) {
  const auto reader = Reader::open(packagePath());
  ASSERT_TRUE(reader.has_value());
  const auto& entry = reader->envelopeSet().entries().front();
  const auto& metadata = entry.metadata();
  const Bytes& domain = reader->envelopeSet().libraryDomainIdentifier();
  const auto open = [&](ByteView headerData, ByteView libraryDomain, std::uint64_t generation) {
    return PortableKeyEnvelopeReader::openWithRecoveryKey(entry.envelope(), kRecoveryKey, headerData, libraryDomain,
                                                          metadata.artifactIdentifier(), metadata.keySlotIdentifier(),
                                                          generation);
  };
  using Failure = PortableKeyEnvelopeReaderFailure;
  const ByteView headerData = reader->package().headerData();
  EXPECT_EQ(open(headerData, domain, metadata.generation()), bpmk());
  EXPECT_EQ(open(headerData, domain, metadata.generation() + 1).error(), Failure(EnvelopeError::contextMismatch()));
  EXPECT_EQ(open(headerData, Bytes(16, 7), metadata.generation()).error(),
            Failure(EnvelopeError::authenticationFailed()));
  // The header is decoded before anything else: a cut header wins over a short domain.
  const auto cutHeader = open(headerData.first(headerData.size() - 1), Bytes(3, 0), metadata.generation());
  ASSERT_FALSE(cutHeader.has_value());
  EXPECT_TRUE(std::holds_alternative<format::BackupFormatHeaderV1Failure>(cutHeader.error()));
}

TEST(PrototypeHeaderValidatorTest, TheMagicIsJudgedBeforeTheVersion) {
  using Error = PrototypeHeaderValidationError;
  const struct {
    std::string magic;
    std::int64_t formatVersion;
    std::optional<Error> expected;
  } cases[] = {
      {"GALDRINE-DRAFT", 0, std::nullopt},
      {"GALDRINE-DRAFT", 1, Error::unsupportedVersion(1)},
      {"GALDRINE-DRAFT", -3, Error::unsupportedVersion(-3)},
      {"GALDRINE-DRAFX", 7, Error::invalidMagic()},
      {"GALDRINE-DRAFT ", 0, Error::invalidMagic()},
      {"", 0, Error::invalidMagic()},
  };
  for (const auto& testCase : cases) {
    const auto result = PrototypeHeaderValidator::validate({testCase.magic, testCase.formatVersion});
    EXPECT_EQ(result ? std::nullopt : std::optional<Error>(result.error()), testCase.expected) << testCase.magic;
  }
}

}  // namespace

}  // namespace galdrine::reader
