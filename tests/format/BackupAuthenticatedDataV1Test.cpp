#include "format/sealing/BackupAuthenticatedDataV1.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "format/header/BackupFormatV1.hpp"
#include "support/HexBytes.hpp"

namespace galdrine::format {

namespace {

using Domain = BackupAADDomainV1;
using Error = BackupAuthenticatedDataV1Error;
using Binding = BackupAuthenticatedDataV1::EnvelopeBinding;

const Bytes packageIdentifier(16, 0x11);
const Bytes libraryDomainIdentifier(16, 0x22);
const Bytes artifactIdentifier(16, 0x33);

Binding validBinding() { return *Binding::make(Bytes(32, 0x44), Bytes(16, 0x55), Bytes(32, 0x66)); }

// The bytes as the layout table gives them, built without the codec.
Bytes expectedBytes(std::string_view domain, bool bound, std::string_view ordinalHex) {
  const auto text = [](std::string_view value) { return ByteText::lowerHex(ByteText::view(value)); };
  const Bytes head = domain.size() < 24 ? Bytes{static_cast<std::uint8_t>(0x60 | domain.size())}
                                        : Bytes{0x78, static_cast<std::uint8_t>(domain.size())};
  std::string hex =
      (bound ? "8b" : "88") + ByteText::lowerHex(head) + text(domain) + "76" + text("com.galdrine.backup.v1");
  hex +=
      "01"
      "6b" +
      text("aes-256-gcm") + "50" + std::string(32, '1') + "50" + std::string(32, '2') + "50" + std::string(32, '3');
  hex += ordinalHex;
  if (bound) hex.append("5820").append(64, '4').append("50").append(32, '5').append("5820").append(64, '6');
  return testsupport::hexBytes(hex);
}

}  // namespace

// Every domain, and the ordinal in its shortest form.
TEST(BackupAuthenticatedDataV1, EncodesTheExactBytes) {
  const struct {
    Domain domain;
    std::string_view rawText;
    std::uint64_t ordinal;
    std::string_view ordinalHex;
  } cases[] = {
      {Domain::bpmkPassphraseEnvelope, "galdrine/backup/bpmk-passphrase-envelope/v1", 5, "05"},
      {Domain::bpmkRecoveryEnvelope, "galdrine/backup/bpmk-recovery-envelope/v1", 5, "05"},
      {Domain::payloadKeyEnvelope, "galdrine/backup/payload-key-envelope/v1", 5, "05"},
      {Domain::manifest, "galdrine/backup/manifest/v1", 5, "05"},
      {Domain::snapshot, "galdrine/backup/snapshot/v1", 5, "05"},
      {Domain::commit, "galdrine/backup/commit/v1", 5, "05"},
      {Domain::head, "galdrine/backup/head/v1", 5, "05"},
      {Domain::packIndex, "galdrine/backup/pack-index/v1", 5, "05"},
      {Domain::packEntry, "galdrine/backup/pack-entry/v1", 5, "05"},
      {Domain::resourceChunk, "galdrine/backup/resource-chunk/v1", 5, "05"},
      {Domain::verificationReport, "galdrine/backup/verification-report/v1", 5, "05"},
      {Domain::packEntry, "galdrine/backup/pack-entry/v1", 0, "00"},
      {Domain::packEntry, "galdrine/backup/pack-entry/v1", 24, "1818"},
      {Domain::packIndex, "galdrine/backup/pack-index/v1", BackupFormatV1::packIndexOrdinal, "1bffffffffffffffff"},
  };
  for (const auto& row : cases) {
    const bool bound = row.domain == Domain::bpmkPassphraseEnvelope || row.domain == Domain::bpmkRecoveryEnvelope;
    const auto record =
        BackupAuthenticatedDataV1::make(row.domain, packageIdentifier, libraryDomainIdentifier, artifactIdentifier,
                                        row.ordinal, bound ? std::optional(validBinding()) : std::nullopt);
    ASSERT_TRUE(record.has_value()) << row.rawText;
    EXPECT_EQ(record->encoded(), expectedBytes(row.rawText, bound, row.ordinalHex))
        << row.rawText << " " << row.ordinal;
  }
  EXPECT_EQ(allCases<Domain>.size(), 11u);
}

TEST(BackupAuthenticatedDataV1, ChecksRunInOrder) {
  const struct {
    std::size_t headerDigest, keySlot, kdfDigest;
    Error expected;
  } bindingCases[] = {
      {31, 15, 31, Error::invalidHeaderDigest},
      {32, 17, 31, Error::invalidKeySlotIdentifier},
      {32, 16, 0, Error::invalidKDFParameterDigest},
  };
  for (const auto& row : bindingCases) {
    EXPECT_EQ(Binding::make(Bytes(row.headerDigest, 1), Bytes(row.keySlot, 1), Bytes(row.kdfDigest, 1)),
              std::unexpected(row.expected));
  }
  const struct {
    std::string_view name;
    Domain domain;
    std::size_t package, library, artifact;
    bool bound;
    Error expected;
  } recordCases[] = {
      {"short package identifier first", Domain::manifest, 15, 15, 15, true, Error::invalidPackageIdentifier},
      {"long library domain", Domain::manifest, 16, 17, 15, true, Error::invalidLibraryDomainIdentifier},
      {"short artifact on an unbound envelope", Domain::bpmkPassphraseEnvelope, 16, 16, 15, false,
       Error::invalidArtifactIdentifier},
      {"recovery envelope without binding", Domain::bpmkRecoveryEnvelope, 16, 16, 16, false,
       Error::envelopeBindingRequired},
      {"manifest with binding", Domain::manifest, 16, 16, 16, true, Error::envelopeBindingNotAllowed},
      {"payload key envelope with binding", Domain::payloadKeyEnvelope, 16, 16, 16, true,
       Error::envelopeBindingNotAllowed},
  };
  for (const auto& row : recordCases) {
    EXPECT_EQ(BackupAuthenticatedDataV1::make(row.domain, Bytes(row.package, 1), Bytes(row.library, 1),
                                              Bytes(row.artifact, 1), 0,
                                              row.bound ? std::optional(validBinding()) : std::nullopt),
              std::unexpected(row.expected))
        << row.name;
  }
}

}  // namespace galdrine::format
