#pragma once
// FixtureProducerSeeds are the key seeds a fixture set is produced with. The verifier
// holds its own copy of each (FixtureMaterial) and builds the keys from those, so a set made
// with any other text does not verify. project() gives the texts of this project's set.

#include <string_view>

#include "fixtures/FixtureMaterial.hpp"

namespace galdrine::fixtureproducer {

struct FixtureProducerSeeds {
  std::string_view resourceChunkKeySeed;
  std::string_view packEntryKeySeed;
  std::string_view recoveryEnvelopeKeySeed;
  std::string_view recoveryEnvelopePlaintextSeed;
  std::string_view packSegmentKeySeed;
  std::string_view standaloneChunkKeySeed;
  std::string_view graphBPMKSeed;

  [[nodiscard]] static constexpr FixtureProducerSeeds project() {
    return {fixtures::FixtureMaterial::resourceChunkKeySeed,    fixtures::FixtureMaterial::packEntryKeySeed,
            fixtures::FixtureMaterial::recoveryEnvelopeKeySeed, fixtures::FixtureMaterial::recoveryEnvelopePlaintextSeed,
            fixtures::FixtureMaterial::packSegmentKeySeed,      fixtures::FixtureMaterial::standaloneChunkKeySeed,
            fixtures::FixtureMaterial::graphBPMKSeed};
  }
};

}  // namespace galdrine::fixtureproducer
