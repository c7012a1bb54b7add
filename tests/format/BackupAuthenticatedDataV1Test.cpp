#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string_view>

#include "format/sealing/BackupAuthenticatedDataV1.hpp"
#include "format/header/BackupFormatV1.hpp"

namespace galdrine::format {

namespace {

using Domain = BackupAADDomainV1;
using Error = BackupAuthenticatedDataV1Error;
using Binding = BackupAuthenticatedDataV1::EnvelopeBinding;

const Bytes packageIdentifier(16, 0x11);
const Bytes libraryDomainIdentifier(16, 0x22);
const Bytes artifactIdentifier(16, 0x33);
const Bytes headerDigest(32, 0x44);
const Bytes keySlotIdentifier(16, 0x55);
const Bytes kdfParameterDigest(32, 0x66);

Binding validBinding() { return *Binding::make(headerDigest, keySlotIdentifier, kdfParameterDigest); }

bool isEnvelopeDomain(Domain domain) { return domain == Domain::bpmkPassphraseEnvelope || domain == Domain::bpmkRecoveryEnvelope; }

std::optional<Binding> bindingFor(Domain domain) {
  return isEnvelopeDomain(domain) ? std::optional(validBinding()) : std::nullopt;
}

void append(Bytes& output, std::initializer_list<std::uint8_t> head, ByteView body = {}) {
  output.insert(output.end(), head);
  output.insert(output.end(), body.begin(), body.end());
}

// The bytes as the layout table gives them, built without the codec.
Bytes expectedBytes(std::string_view domainText, bool bound, std::initializer_list<std::uint8_t> ordinal) {
  Bytes output;
  append(output, {static_cast<std::uint8_t>(bound ? 0x8B : 0x88)});
  if (domainText.size() < 24) {
    append(output, {static_cast<std::uint8_t>(0x60 | domainText.size())}, ByteText::view(domainText));
  } else {
    append(output, {0x78, static_cast<std::uint8_t>(domainText.size())}, ByteText::view(domainText));
  }
  append(output, {0x76}, ByteText::view("com.galdrine.backup.v1"));
  append(output, {0x01});
  append(output, {0x6B}, ByteText::view("aes-256-gcm"));
  append(output, {0x50}, packageIdentifier);
  append(output, {0x50}, libraryDomainIdentifier);
  append(output, {0x50}, artifactIdentifier);
  append(output, ordinal);
  if (bound) {
    append(output, {0x58, 0x20}, headerDigest);
    append(output, {0x50}, keySlotIdentifier);
    append(output, {0x58, 0x20}, kdfParameterDigest);
  }
  return output;
}

struct DomainBytesCase {
  Domain domain;
  std::string_view rawText;
};

const DomainBytesCase kDomainBytesCases[] = {
    {Domain::bpmkPassphraseEnvelope, "galdrine/backup/bpmk-passphrase-envelope/v1"},
    {Domain::bpmkRecoveryEnvelope, "galdrine/backup/bpmk-recovery-envelope/v1"},
    {Domain::payloadKeyEnvelope, "galdrine/backup/payload-key-envelope/v1"},
    {Domain::manifest, "galdrine/backup/manifest/v1"},
    {Domain::snapshot, "galdrine/backup/snapshot/v1"},
    {Domain::commit, "galdrine/backup/commit/v1"},
    {Domain::head, "galdrine/backup/head/v1"},
    {Domain::packIndex, "galdrine/backup/pack-index/v1"},
    {Domain::packEntry, "galdrine/backup/pack-entry/v1"},
    {Domain::resourceChunk, "galdrine/backup/resource-chunk/v1"},
    {Domain::verificationReport, "galdrine/backup/verification-report/v1"},
};

}  // namespace

TEST(BackupAuthenticatedDataV1, EncodesTheExactBytesOfEveryDomain) {
  ASSERT_EQ(std::size(kDomainBytesCases), allCases<Domain>.size());
  std::set<Bytes> distinct;
  for (const DomainBytesCase& testCase : kDomainBytesCases) {
    const auto record = BackupAuthenticatedDataV1::make(testCase.domain, packageIdentifier, libraryDomainIdentifier,
                                                                artifactIdentifier, 5, bindingFor(testCase.domain));
    ASSERT_TRUE(record.has_value()) << testCase.rawText;
    const auto encoded = record->encoded();
    ASSERT_TRUE(encoded.has_value()) << testCase.rawText;
    EXPECT_EQ(*encoded, expectedBytes(testCase.rawText, isEnvelopeDomain(testCase.domain), {0x05})) << testCase.rawText;
    distinct.insert(*encoded);
  }
  EXPECT_EQ(distinct.size(), std::size(kDomainBytesCases));
}

TEST(BackupAuthenticatedDataV1, WritesTheOrdinalInShortestForm) {
  struct OrdinalCase {
    std::uint64_t ordinal;
    std::initializer_list<std::uint8_t> bytes;
  };
  const OrdinalCase cases[] = {
      {0, {0x00}},
      {23, {0x17}},
      {24, {0x18, 0x18}},
      {256, {0x19, 0x01, 0x00}},
      {65536, {0x1A, 0x00, 0x01, 0x00, 0x00}},
      {4294967296, {0x1B, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00}},
      {BackupFormatV1::packIndexOrdinal, {0x1B, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
  };
  for (const OrdinalCase& testCase : cases) {
    const auto record = BackupAuthenticatedDataV1::make(Domain::packIndex, packageIdentifier, libraryDomainIdentifier,
                                                                artifactIdentifier, testCase.ordinal, std::nullopt);
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(record->encoded(), expectedBytes("galdrine/backup/pack-index/v1", false, testCase.bytes)) << testCase.ordinal;
  }
}

TEST(BackupAuthenticatedDataV1, BindingChecksRunInOrder) {
  struct BindingCase {
    std::size_t headerDigestByteCount, keySlotByteCount, kdfDigestByteCount;
    Error expected;
  };
  const BindingCase cases[] = {
      {31, 15, 31, Error::invalidHeaderDigest},
      {33, 16, 32, Error::invalidHeaderDigest},
      {32, 15, 31, Error::invalidKeySlotIdentifier},
      {32, 17, 32, Error::invalidKeySlotIdentifier},
      {32, 16, 0, Error::invalidKDFParameterDigest},
  };
  for (const BindingCase& testCase : cases) {
    EXPECT_EQ(Binding::make(Bytes(testCase.headerDigestByteCount, 1), Bytes(testCase.keySlotByteCount, 1),
                            Bytes(testCase.kdfDigestByteCount, 1)),
              std::unexpected(testCase.expected));
  }
}

TEST(BackupAuthenticatedDataV1, RecordChecksRunInOrder) {
  struct RecordCase {
    std::string_view name;
    Domain domain;
    std::size_t packageByteCount, libraryByteCount, artifactByteCount;
    bool bound;
    Error expected;
  };
  const RecordCase cases[] = {
      {"short package identifier first", Domain::manifest, 15, 15, 15, true, Error::invalidPackageIdentifier},
      {"long library domain", Domain::manifest, 16, 17, 15, true, Error::invalidLibraryDomainIdentifier},
      {"short artifact on an unbound envelope", Domain::bpmkPassphraseEnvelope, 16, 16, 15, false, Error::invalidArtifactIdentifier},
      {"recovery envelope without binding", Domain::bpmkRecoveryEnvelope, 16, 16, 16, false, Error::envelopeBindingRequired},
      {"passphrase envelope without binding", Domain::bpmkPassphraseEnvelope, 16, 16, 16, false, Error::envelopeBindingRequired},
      {"manifest with binding", Domain::manifest, 16, 16, 16, true, Error::envelopeBindingNotAllowed},
      {"payload key envelope with binding", Domain::payloadKeyEnvelope, 16, 16, 16, true, Error::envelopeBindingNotAllowed},
  };
  for (const RecordCase& testCase : cases) {
    const auto record = BackupAuthenticatedDataV1::make(
        testCase.domain, Bytes(testCase.packageByteCount, 1), Bytes(testCase.libraryByteCount, 1),
        Bytes(testCase.artifactByteCount, 1), 0, testCase.bound ? std::optional(validBinding()) : std::nullopt);
    EXPECT_EQ(record, std::unexpected(testCase.expected)) << testCase.name;
  }
}

}  // namespace galdrine::format
