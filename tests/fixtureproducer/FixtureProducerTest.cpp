#include "fixtureproducer/FixtureProducer.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>

#include "envelope/BackupKeyEnvelopeSetV1.hpp"
#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "fixtureproducer/FixtureProducerCredentials.hpp"
#include "fixtures/FixtureMaterial.hpp"
#include "format/header/BackupFormatHeaderV1.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::fixtureproducer {

namespace {

namespace fs = std::filesystem;

[[nodiscard]] std::vector<std::string> namesIn(const fs::path& directory) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory)) names.push_back(entry.path().filename());
  std::ranges::sort(names);
  return names;
}

TEST(FixtureProducer, RegeneratedSetEqualsTheCommittedOneByteForByte) {
  const fs::path committed = GALDRINE_FIXTURE_SET_DIRECTORY;
  const testsupport::TemporaryDirectory temporary;
  ASSERT_TRUE(FixtureProducer::produce(temporary / "v1").has_value());
  ASSERT_EQ(namesIn(temporary / "v1"), namesIn(committed));
  for (const std::string& name : namesIn(committed)) {
    EXPECT_EQ(testsupport::FileFixtures::readFile(temporary / "v1" / name),
              testsupport::FileFixtures::readFile(committed / name))
        << name;
  }
  // A directory that exists is refused and left as it was.
  EXPECT_EQ(FixtureProducer::produce(temporary / "v1"), std::unexpected(FixtureProducerError::outputFailed));
  EXPECT_EQ(namesIn(temporary / "v1"), namesIn(committed));
}

// The verifier opens no envelope of the key envelope set fixture, so this is what proves them
// real: each opens with the envelope operations, under the producer's credentials, to the
// graph fixture's master key.
TEST(FixtureProducer, KeyEnvelopesOpenToTheGraphMasterKey) {
  const auto file = FixtureProducer::fixtureFile(fixtures::FixtureKind::productionKeyEnvelopesV1);
  ASSERT_TRUE(file.has_value());
  const auto document = nlohmann::json::parse(file->bytes.begin(), file->bytes.end());
  const auto registry = ByteText::parseLowerHex(document["registryHex"].get<std::string>());
  const auto packageIdentifier = ByteText::parseLowerHex(document["packageIdentifierHex"].get<std::string>());
  ASSERT_TRUE(registry && packageIdentifier);
  const auto set = envelope::BackupKeyEnvelopeSetV1::decode(*registry);
  const auto header = format::BackupFormatHeaderV1::make(*packageIdentifier);
  ASSERT_TRUE(set && header);
  ASSERT_EQ(set->entries().size(), 2u);
  for (const auto& entry : set->entries()) {
    const auto& metadata = entry.metadata();
    const auto context = envelope::PortableKeyEnvelopeContextV1::make(
        *header, set->libraryDomainIdentifier(), metadata.artifactIdentifier(), metadata.keySlotIdentifier(),
        metadata.generation());
    ASSERT_TRUE(context.has_value());
    const auto opened =
        metadata.factor() == envelope::PortableKeyFactorV1::recoveryKey
            ? envelope::PortableKeyEnvelopeV1::openWithRecoveryKey(entry.envelope(),
                                                                   FixtureProducerCredentials::recoveryKey(), *context)
            : envelope::PortableKeyEnvelopeV1::openWithBackupPassphrase(
                  entry.envelope(), ByteText::view(FixtureProducerCredentials::backupPassphrase), *context);
    EXPECT_EQ(opened, fixtures::FixtureMaterial::keyFromSeed(fixtures::FixtureMaterial::graphBPMKSeed))
        << static_cast<int>(metadata.factor());
  }
}

}  // namespace

}  // namespace galdrine::fixtureproducer
