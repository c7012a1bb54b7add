#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

#include "format/header/BackupFormatV1.hpp"

namespace galdrine::format {

namespace {

template <typename Enumeration>
void expectRawValuesRoundTripAndAreDistinct() {
  std::set<std::string_view> seen;
  for (const Enumeration value : allCases<Enumeration>) {
    EXPECT_EQ(fromRawValue<Enumeration>(rawValue(value)), value);
    EXPECT_TRUE(seen.insert(rawValue(value)).second) << rawValue(value);
  }
  EXPECT_EQ(fromRawValue<Enumeration>(""), std::nullopt);
}

}  // namespace

TEST(BackupFormatV1, DomainsAreElevenInOrderWithDistinctRawValues) {
  ASSERT_EQ(allCases<BackupAADDomainV1>.size(), 11u);
  EXPECT_EQ(allCases<BackupAADDomainV1>.front(), BackupAADDomainV1::bpmkPassphraseEnvelope);
  EXPECT_EQ(allCases<BackupAADDomainV1>.back(), BackupAADDomainV1::verificationReport);
  EXPECT_EQ(rawValue(BackupAADDomainV1::head), "galdrine/backup/head/v1");
  EXPECT_EQ(fromRawValue<BackupAADDomainV1>("galdrine/backup/HEAD/v1"), std::nullopt);
  expectRawValuesRoundTripAndAreDistinct<BackupAADDomainV1>();
}

TEST(BackupFormatV1, AlgorithmSuiteIsSixInOrderWithDistinctRawValues) {
  ASSERT_EQ(allCases<BackupAlgorithmV1>.size(), 6u);
  EXPECT_EQ(rawValue(BackupAlgorithmV1::payloadAEAD), "aes-256-gcm");
  EXPECT_EQ(rawValue(BackupAlgorithmV1::manifestCompression), "zstd");
  EXPECT_EQ(fromRawValue<BackupAlgorithmV1>("AES-256-GCM"), std::nullopt);
  expectRawValuesRoundTripAndAreDistinct<BackupAlgorithmV1>();
}

namespace {

struct RootNameCase {
  std::string name;
  bool valid;
};

std::string nameOfByteCount(std::size_t byteCount) {
  return std::string(byteCount - BackupFormatV1::dottedPackageExtension.size(), 'a') + ".galdrine";
}

}  // namespace

TEST(BackupFormatV1, PackageRootNames) {
  const RootNameCase cases[] = {
      {"Photos.galdrine", true},
      {"a.galdrine", true},
      {"Fotos f\u00FCr Oma \u2014 2024.galdrine", true},
      {"a b.galdrine", true},
      {nameOfByteCount(128), true},
      {nameOfByteCount(129), false},
      {".galdrine", false},
      {" .galdrine", false},
      {"\u3000\n.galdrine", false},
      {"x.GALDRINE", false},
      {"x.galdrine ", false},
      {"x.galdrine/", false},
      {"a/b.galdrine", false},
      {"a\\b.galdrine", false},
      {"a\tb.galdrine", false},
      {"a\u200Bb.galdrine", false},          // zero width space is a format character
      {std::string("a\0b.galdrine", 12), false},
      {"a\u2028b.galdrine", true},           // a line separator is not a control character
      {"\xC3.galdrine", false},              // not UTF-8
      {"", false},
  };
  for (const RootNameCase& testCase : cases) {
    EXPECT_EQ(BackupFormatV1::isValidPackageRootName(testCase.name), testCase.valid) << testCase.name;
  }
}

}  // namespace galdrine::format
