#include "GaldrineRecoveryCore/RecoveryTestPackages.hpp"

#include <vector>

#include "GaldrineCore/GaldrineBackupPackageV1.hpp"
#include "GaldrineCryptoSupport/GaldrineArgon2idParameters.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupKeyEnvelopeFileV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupPassphraseKDFProfileV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1.hpp"

namespace RecoveryTestPackages {

namespace {

[[nodiscard]] GaldrinePortableKeyEnvelopeContextV1 contextFor(ByteView packageIdentifier, std::uint8_t slotSeed) {
  const auto header = GaldrineBackupFormatHeaderV1::make(packageIdentifier);
  EXPECT_TRUE(header.has_value());
  const auto context = GaldrinePortableKeyEnvelopeContextV1::make(*header, kLibraryDomainIdentifier, identifier(slotSeed),
                                                                  identifier(slotSeed + 1), 1);
  EXPECT_TRUE(context.has_value());
  return *context;
}

[[nodiscard]] GaldrineBackupKeyEnvelopeEntryV1 entryOf(const std::expected<Bytes, GaldrinePortableKeyEnvelopeV1Error>& sealed) {
  EXPECT_TRUE(sealed.has_value());
  const auto entry = GaldrineBackupKeyEnvelopeEntryV1::make(sealed ? *sealed : Bytes{}, true);
  EXPECT_TRUE(entry.has_value());
  return *entry;
}

}  // namespace

Bytes identifier(std::uint8_t seed) {
  Bytes bytes(16);
  for (std::size_t index = 0; index < bytes.size(); ++index) bytes[index] = static_cast<std::uint8_t>(seed + index * 16);
  return bytes;
}

GaldrineBackupKeyEnvelopeSetV1 envelopeSet(ByteView packageIdentifier, Factors factors) {
  std::vector<GaldrineBackupKeyEnvelopeEntryV1> entries;
  entries.push_back(
      entryOf(GaldrinePortableKeyEnvelopeV1::sealWithRecoveryKey(kBpmk, kRecoveryKey, contextFor(packageIdentifier, 0xA0))));
  if (factors == Factors::both) {
    const auto profile = GaldrineBackupPassphraseKDFProfileV1::make(GaldrineArgon2idParameters::minimumOperationsLimit,
                                                                    GaldrineArgon2idParameters::minimumMemoryLimitBytes);
    EXPECT_TRUE(profile.has_value());
    entries.push_back(entryOf(GaldrinePortableKeyEnvelopeV1::sealWithBackupPassphrase(
        kBpmk, GaldrineByteText::view(kPassphrase), *profile, contextFor(packageIdentifier, 0xB0))));
  }
  const auto set = GaldrineBackupKeyEnvelopeSetV1::make(packageIdentifier, kLibraryDomainIdentifier, std::move(entries));
  EXPECT_TRUE(set.has_value());
  return *set;
}

void createPackage(const std::filesystem::path& url, ByteView packageIdentifier, Factors factors) {
  const auto package = GaldrineBackupPackageV1::create(url, packageIdentifier);
  ASSERT_TRUE(package.has_value());
  const auto written = GaldrineBackupKeyEnvelopeFileV1::writeAtomically(envelopeSet(packageIdentifier, factors), *package,
                                                                         std::nullopt);
  ASSERT_TRUE(written.has_value());
}

}  // namespace RecoveryTestPackages
