#include "fixtureproducer/FixtureProducer.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "format/header/BackupFormatHeaderV1.hpp"
#include "fixtureproducer/FixtureProducerCredentials.hpp"
#include "envelope/BackupKeyEnvelopeSetV1.hpp"
#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "fixtures/FixtureMaterial.hpp"
#include "fixtures/RecoveryFixtureVerifier.hpp"
#include "support/FileFixtures.hpp"
#include "support/ProgramRunner.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::fixtureproducer {

namespace {

using Error = fixtures::RecoveryFixtureVerificationError;
using Seeds = FixtureProducerSeeds;
namespace fs = std::filesystem;

const fs::path committedSet = GALDRINE_FIXTURE_SET_DIRECTORY;

// The project's set, made once for the suite: it runs one Argon2id derivation.
const std::vector<ProducedFixtureFile>& projectFiles() {
  static const auto files = FixtureProducer::fixtureFiles(Seeds::project());
  EXPECT_TRUE(files.has_value());
  static const std::vector<ProducedFixtureFile> none;
  return files ? *files : none;
}

TEST(FixtureProducer, RegeneratedSetEqualsTheCommittedOneByteForByte) {
  const testsupport::TemporaryDirectory temporary;
  ASSERT_TRUE(FixtureProducer::produce(temporary / "v1", Seeds::project()).has_value());

  std::vector<std::string> committedNames;
  for (const auto& entry : fs::directory_iterator(committedSet)) committedNames.push_back(entry.path().filename());
  std::vector<std::string> producedNames;
  for (const auto& entry : fs::directory_iterator(temporary / "v1")) producedNames.push_back(entry.path().filename());
  std::ranges::sort(committedNames);
  std::ranges::sort(producedNames);
  ASSERT_EQ(producedNames, committedNames);
  for (const std::string& name : producedNames) {
    EXPECT_EQ(testsupport::FileFixtures::readFile(temporary / "v1" / name), testsupport::FileFixtures::readFile(committedSet / name))
        << name;
  }
  // Producing in memory gives the same files as producing to disk.
  for (const ProducedFixtureFile& file : projectFiles())
    EXPECT_EQ(file.bytes, testsupport::FileFixtures::readFile(committedSet / file.name)) << file.name;
}

TEST(FixtureProducer, RefusesADirectoryThatExists) {
  const testsupport::TemporaryDirectory temporary;
  testsupport::FileFixtures::makeDirectory(temporary / "v1");
  const auto produced = FixtureProducer::produce(temporary / "v1", Seeds::project());
  ASSERT_FALSE(produced.has_value());
  EXPECT_EQ(produced.error(), FixtureProducerError::outputFailed);
  EXPECT_TRUE(fs::is_empty(temporary / "v1"));
}

// The envelopes of the key envelope set fixture are real ones: each opens with the envelope
// operations, under the producer's credentials, to the graph fixture's master key.
TEST(FixtureProducer, KeyEnvelopesOpenToTheGraphMasterKey) {
  const auto file = std::ranges::find(projectFiles(), std::string("key-envelopes-v1.json"), &ProducedFixtureFile::name);
  ASSERT_NE(file, projectFiles().end());
  const auto document = nlohmann::json::parse(file->bytes.begin(), file->bytes.end());
  const auto registry = ByteText::parseLowerHex(document["registryHex"].get<std::string>());
  const auto packageIdentifier = ByteText::parseLowerHex(document["packageIdentifierHex"].get<std::string>());
  ASSERT_TRUE(registry && packageIdentifier);
  const auto set = envelope::BackupKeyEnvelopeSetV1::decode(*registry);
  const auto header = format::BackupFormatHeaderV1::make(*packageIdentifier);
  ASSERT_TRUE(set && header);

  const Bytes bpmk = fixtures::FixtureMaterial::keyFromSeed(fixtures::FixtureMaterial::graphBPMKSeed);
  ASSERT_EQ(set->entries().size(), 2u);
  for (const auto& entry : set->entries()) {
    const auto& metadata = entry.metadata();
    const auto context = envelope::PortableKeyEnvelopeContextV1::make(*header, set->libraryDomainIdentifier(),
                                                                    metadata.artifactIdentifier(),
                                                                    metadata.keySlotIdentifier(), metadata.generation());
    ASSERT_TRUE(context.has_value());
    const auto opened =
        metadata.factor() == envelope::PortableKeyFactorV1::recoveryKey
            ? envelope::PortableKeyEnvelopeV1::openWithRecoveryKey(entry.envelope(),
                                                                 FixtureProducerCredentials::recoveryKey(), *context)
            : envelope::PortableKeyEnvelopeV1::openWithBackupPassphrase(
                  entry.envelope(), ByteText::view(FixtureProducerCredentials::backupPassphrase),
                  *context);
    ASSERT_TRUE(opened.has_value()) << static_cast<int>(metadata.factor());
    EXPECT_EQ(*opened, bpmk);
  }
}

// A set produced with any other key seed text does not verify: each seed is changed in one
// character, and the one fixture it goes into is verified by its kind.
TEST(FixtureProducer, FixturesOfAnotherSeedFail) {
  const std::string other = "galdrine/fixture/v1/other/seed";
  const struct {
    std::string_view seed;
    std::function<void(Seeds&, std::string_view)> replace;
    fixtures::FixtureKind kind;
    std::expected<std::int64_t, Error> (*verify)(const fs::path&);
  } cases[] = {
      {"resource chunk", [](Seeds& seeds, std::string_view text) { seeds.resourceChunkKeySeed = text; },
       fixtures::FixtureKind::productionGoldenV1, fixtures::RecoveryFixtureVerifier::verifyGoldenFixture},
      {"pack entry", [](Seeds& seeds, std::string_view text) { seeds.packEntryKeySeed = text; },
       fixtures::FixtureKind::productionGoldenV1, fixtures::RecoveryFixtureVerifier::verifyGoldenFixture},
      {"recovery envelope", [](Seeds& seeds, std::string_view text) { seeds.recoveryEnvelopeKeySeed = text; },
       fixtures::FixtureKind::productionGoldenV1, fixtures::RecoveryFixtureVerifier::verifyGoldenFixture},
      {"recovery envelope plaintext", [](Seeds& seeds, std::string_view text) { seeds.recoveryEnvelopePlaintextSeed = text; },
       fixtures::FixtureKind::productionGoldenV1, fixtures::RecoveryFixtureVerifier::verifyGoldenFixture},
      {"pack segment", [](Seeds& seeds, std::string_view text) { seeds.packSegmentKeySeed = text; },
       fixtures::FixtureKind::productionPayloadV1, fixtures::RecoveryFixtureVerifier::verifyPayloadFixture},
      {"standalone chunk", [](Seeds& seeds, std::string_view text) { seeds.standaloneChunkKeySeed = text; },
       fixtures::FixtureKind::productionPayloadV1, fixtures::RecoveryFixtureVerifier::verifyPayloadFixture},
      {"graph master key", [](Seeds& seeds, std::string_view text) { seeds.graphBPMKSeed = text; },
       fixtures::FixtureKind::productionGraphV1, fixtures::RecoveryFixtureVerifier::verifyGraphFixture},
  };
  const testsupport::TemporaryDirectory temporary;
  for (const auto& testCase : cases) {
    Seeds seeds = Seeds::project();
    testCase.replace(seeds, other);
    const auto file = FixtureProducer::fixtureFile(testCase.kind, seeds);
    ASSERT_TRUE(file.has_value()) << testCase.seed;
    testsupport::FileFixtures::writeFile(temporary / file->name, file->bytes);
    const auto verified = testCase.verify(temporary / file->name);
    ASSERT_FALSE(verified.has_value()) << testCase.seed;
    EXPECT_EQ(verified.error(), Error::invalidFixture) << testCase.seed;
  }
}

// A whole set produced with another seed is refused by the program, with the one message.
TEST(FixtureProducer, ProgramRefusesASetOfAnotherSeed) {
  Seeds seeds = Seeds::project();
  seeds.resourceChunkKeySeed = "galdrine/fixture/v1/golden/resource-chunk/key-02";
  const testsupport::TemporaryDirectory temporary;
  ASSERT_TRUE(FixtureProducer::produce(temporary / "v1", seeds).has_value());

  const auto result = fixtures::RecoveryFixtureVerifier::verifyFixtureIndex(temporary / "v1" / "index.json");
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(result.error(), Error::invalidFixture);
  const testsupport::ProgramOutcome run =
      testsupport::ProgramRunner::run(GALDRINE_RECOVERY_EXECUTABLE, {"verify-fixtures", (temporary / "v1" / "index.json").string()});
  EXPECT_EQ(run.exitStatus, 4);
  EXPECT_EQ(run.standardOutput, "");
  EXPECT_EQ(run.standardError, "Galdrine compatibility verification failed.\n");
}

}  // namespace

}  // namespace galdrine::fixtureproducer
