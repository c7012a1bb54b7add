#include "GaldrineFixtureProducer/GaldrineFixtureProducer.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "GaldrineCore/GaldrineBackupFormatHeaderV1.hpp"
#include "GaldrineFixtureProducer/GaldrineFixtureProducerCredentials.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupKeyEnvelopeSetV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1.hpp"
#include "GaldrineRecoveryCore/FixtureMaterial.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerifier.hpp"
#include "Support/GaldrineFileFixtures.hpp"
#include "Support/GaldrineProgramRunner.hpp"
#include "Support/GaldrineTemporaryDirectory.hpp"

namespace {

using Error = GaldrineRecoveryFixtureVerificationError;
using Seeds = GaldrineFixtureProducerSeeds;
namespace fs = std::filesystem;

const fs::path committedSet = GALDRINE_FIXTURE_SET_DIRECTORY;

// The project's set, made once for the suite: it runs one Argon2id derivation.
const std::vector<GaldrineProducedFixtureFile>& projectFiles() {
  static const auto files = GaldrineFixtureProducer::fixtureFiles(Seeds::project());
  EXPECT_TRUE(files.has_value());
  static const std::vector<GaldrineProducedFixtureFile> none;
  return files ? *files : none;
}

TEST(GaldrineFixtureProducer, RegeneratedSetEqualsTheCommittedOneByteForByte) {
  const GaldrineTemporaryDirectory temporary;
  ASSERT_TRUE(GaldrineFixtureProducer::produce(temporary / "v1", Seeds::project()).has_value());

  std::vector<std::string> committedNames;
  for (const auto& entry : fs::directory_iterator(committedSet)) committedNames.push_back(entry.path().filename());
  std::vector<std::string> producedNames;
  for (const auto& entry : fs::directory_iterator(temporary / "v1")) producedNames.push_back(entry.path().filename());
  std::ranges::sort(committedNames);
  std::ranges::sort(producedNames);
  ASSERT_EQ(producedNames, committedNames);
  for (const std::string& name : producedNames) {
    EXPECT_EQ(GaldrineFileFixtures::readFile(temporary / "v1" / name), GaldrineFileFixtures::readFile(committedSet / name))
        << name;
  }
  // Producing in memory gives the same files as producing to disk.
  for (const GaldrineProducedFixtureFile& file : projectFiles())
    EXPECT_EQ(file.bytes, GaldrineFileFixtures::readFile(committedSet / file.name)) << file.name;
}

TEST(GaldrineFixtureProducer, RefusesADirectoryThatExists) {
  const GaldrineTemporaryDirectory temporary;
  GaldrineFileFixtures::makeDirectory(temporary / "v1");
  const auto produced = GaldrineFixtureProducer::produce(temporary / "v1", Seeds::project());
  ASSERT_FALSE(produced.has_value());
  EXPECT_EQ(produced.error(), GaldrineFixtureProducerError::outputFailed);
  EXPECT_TRUE(fs::is_empty(temporary / "v1"));
}

// The envelopes of the key envelope set fixture are real ones: each opens with the envelope
// operations, under the producer's credentials, to the graph fixture's master key.
TEST(GaldrineFixtureProducer, KeyEnvelopesOpenToTheGraphMasterKey) {
  const auto file = std::ranges::find(projectFiles(), std::string("key-envelopes-v1.json"), &GaldrineProducedFixtureFile::name);
  ASSERT_NE(file, projectFiles().end());
  const auto document = nlohmann::json::parse(file->bytes.begin(), file->bytes.end());
  const auto registry = GaldrineByteText::parseLowerHex(document["registryHex"].get<std::string>());
  const auto packageIdentifier = GaldrineByteText::parseLowerHex(document["packageIdentifierHex"].get<std::string>());
  ASSERT_TRUE(registry && packageIdentifier);
  const auto set = GaldrineBackupKeyEnvelopeSetV1::decode(*registry);
  const auto header = GaldrineBackupFormatHeaderV1::make(*packageIdentifier);
  ASSERT_TRUE(set && header);

  const Bytes bpmk = FixtureMaterial::keyFromSeed(FixtureMaterial::graphBPMKSeed);
  ASSERT_EQ(set->entries().size(), 2u);
  for (const auto& entry : set->entries()) {
    const auto& metadata = entry.metadata();
    const auto context = GaldrinePortableKeyEnvelopeContextV1::make(*header, set->libraryDomainIdentifier(),
                                                                    metadata.artifactIdentifier(),
                                                                    metadata.keySlotIdentifier(), metadata.generation());
    ASSERT_TRUE(context.has_value());
    const auto opened =
        metadata.factor() == GaldrinePortableKeyFactorV1::recoveryKey
            ? GaldrinePortableKeyEnvelopeV1::openWithRecoveryKey(entry.envelope(),
                                                                 GaldrineFixtureProducerCredentials::recoveryKey(), *context)
            : GaldrinePortableKeyEnvelopeV1::openWithBackupPassphrase(
                  entry.envelope(), GaldrineByteText::view(GaldrineFixtureProducerCredentials::backupPassphrase),
                  *context);
    ASSERT_TRUE(opened.has_value()) << static_cast<int>(metadata.factor());
    EXPECT_EQ(*opened, bpmk);
  }
}

// A set produced with any other key seed text does not verify: each seed is changed in one
// character, and the one fixture it goes into is verified by its kind.
TEST(GaldrineFixtureProducer, FixturesOfAnotherSeedFail) {
  const std::string other = "galdrine/fixture/v1/other/seed";
  const struct {
    std::string_view seed;
    std::function<void(Seeds&, std::string_view)> replace;
    FixtureKind kind;
    std::expected<std::int64_t, Error> (*verify)(const fs::path&);
  } cases[] = {
      {"resource chunk", [](Seeds& seeds, std::string_view text) { seeds.resourceChunkKeySeed = text; },
       FixtureKind::productionGoldenV1, GaldrineRecoveryFixtureVerifier::verifyGoldenFixture},
      {"pack entry", [](Seeds& seeds, std::string_view text) { seeds.packEntryKeySeed = text; },
       FixtureKind::productionGoldenV1, GaldrineRecoveryFixtureVerifier::verifyGoldenFixture},
      {"recovery envelope", [](Seeds& seeds, std::string_view text) { seeds.recoveryEnvelopeKeySeed = text; },
       FixtureKind::productionGoldenV1, GaldrineRecoveryFixtureVerifier::verifyGoldenFixture},
      {"recovery envelope plaintext", [](Seeds& seeds, std::string_view text) { seeds.recoveryEnvelopePlaintextSeed = text; },
       FixtureKind::productionGoldenV1, GaldrineRecoveryFixtureVerifier::verifyGoldenFixture},
      {"pack segment", [](Seeds& seeds, std::string_view text) { seeds.packSegmentKeySeed = text; },
       FixtureKind::productionPayloadV1, GaldrineRecoveryFixtureVerifier::verifyPayloadFixture},
      {"standalone chunk", [](Seeds& seeds, std::string_view text) { seeds.standaloneChunkKeySeed = text; },
       FixtureKind::productionPayloadV1, GaldrineRecoveryFixtureVerifier::verifyPayloadFixture},
      {"graph master key", [](Seeds& seeds, std::string_view text) { seeds.graphBPMKSeed = text; },
       FixtureKind::productionGraphV1, GaldrineRecoveryFixtureVerifier::verifyGraphFixture},
  };
  const GaldrineTemporaryDirectory temporary;
  for (const auto& testCase : cases) {
    Seeds seeds = Seeds::project();
    testCase.replace(seeds, other);
    const auto file = GaldrineFixtureProducer::fixtureFile(testCase.kind, seeds);
    ASSERT_TRUE(file.has_value()) << testCase.seed;
    GaldrineFileFixtures::writeFile(temporary / file->name, file->bytes);
    const auto verified = testCase.verify(temporary / file->name);
    ASSERT_FALSE(verified.has_value()) << testCase.seed;
    EXPECT_EQ(verified.error(), Error::invalidFixture) << testCase.seed;
  }
}

// A whole set produced with another seed is refused by the program, with the one message.
TEST(GaldrineFixtureProducer, ProgramRefusesASetOfAnotherSeed) {
  Seeds seeds = Seeds::project();
  seeds.resourceChunkKeySeed = "galdrine/fixture/v1/golden/resource-chunk/key-02";
  const GaldrineTemporaryDirectory temporary;
  ASSERT_TRUE(GaldrineFixtureProducer::produce(temporary / "v1", seeds).has_value());

  const auto result = GaldrineRecoveryFixtureVerifier::verifyFixtureIndex(temporary / "v1" / "index.json");
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(result.error(), Error::invalidFixture);
  const GaldrineProgramOutcome run =
      GaldrineProgramRunner::run(GALDRINE_RECOVERY_EXECUTABLE, {"verify-fixtures", (temporary / "v1" / "index.json").string()});
  EXPECT_EQ(run.exitStatus, 4);
  EXPECT_EQ(run.standardOutput, "");
  EXPECT_EQ(run.standardError, "Galdrine compatibility verification failed.\n");
}

}  // namespace
