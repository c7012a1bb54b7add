#pragma once
// FixtureMaterial is the fixed material that fixtures are verified against: per label, the
// ASCII key seed whose SHA-256 is the key, and the plaintext the frame must hold. The keys are
// never stored, only built from their seeds when needed, so a fixture proves that this build
// reads the format and gives no access to anything. A fixture set verifies only against the
// seeds it was produced with; its producer takes them from here.

#include <optional>
#include <string_view>

#include "GaldrinePlatform/GaldrineBytes.hpp"

namespace FixtureMaterial {

// Golden vectors, by the label each vector carries as its name.
inline constexpr std::string_view resourceChunkLabel = "resource-chunk";
inline constexpr std::string_view packEntryLabel = "pack-entry";
inline constexpr std::string_view recoveryEnvelopeLabel = "recovery-envelope";

inline constexpr std::string_view resourceChunkKeySeed = "galdrine/fixture/v1/golden/resource-chunk/key-01";
inline constexpr std::string_view packEntryKeySeed = "galdrine/fixture/v1/golden/pack-entry/key-01";
inline constexpr std::string_view recoveryEnvelopeKeySeed = "galdrine/fixture/v1/golden/recovery-env/key";
// The recovery envelope holds a master key: the SHA-256 of this text.
inline constexpr std::string_view recoveryEnvelopePlaintextSeed = "galdrine/fixture/v1/golden/bpmk/01";

inline constexpr std::string_view resourceChunkPlaintext = "Galdrine V1 synthetic resource chunk.\n";
inline constexpr std::string_view packEntryPlaintext = "Synthetic packed entry.";

// Payload fixtures: one key for the pack segment, one for the standalone chunk, and the
// plaintext of each entry by its name.
inline constexpr std::string_view packSegmentKeySeed = "galdrine/fixture/v1/payload/pack-segment/key-1";
inline constexpr std::string_view standaloneChunkKeySeed = "galdrine/fixture/v1/payload/standalone/key-1";

inline constexpr std::string_view packEntryZeroName = "pack-entry-zero";
inline constexpr std::string_view packEntryOneName = "pack-entry-one";
inline constexpr std::string_view standaloneChunkName = "standalone-chunk";

inline constexpr std::string_view packEntryZeroPlaintext = "Galdrine V1 packed payload A.\n";
inline constexpr std::string_view packEntryOnePlaintext = "Galdrine V1 packed payload B.";
inline constexpr std::string_view standaloneChunkPlaintext = "Galdrine V1 standalone payload.\n";

// Graph fixtures: the master key of the whole synthetic package.
inline constexpr std::string_view graphBPMKSeed = "galdrine/fixture/v1/graph/bpmk/key-0001";

static_assert(resourceChunkKeySeed.size() == 48);
static_assert(packEntryKeySeed.size() == 44);
static_assert(recoveryEnvelopeKeySeed.size() == 43);
static_assert(recoveryEnvelopePlaintextSeed.size() == 34);
static_assert(packSegmentKeySeed.size() == 46);
static_assert(standaloneChunkKeySeed.size() == 44);
static_assert(graphBPMKSeed.size() == 39);

// Material is one golden vector's key and expected plaintext. The key is the holder's to wipe.
struct Material {
  Bytes key;
  Bytes plaintext;
};

// keyFromSeed is the SHA-256 of the seed's bytes, 32 bytes.
[[nodiscard]] Bytes keyFromSeed(std::string_view seed);

// expectedMaterial gives the material of the golden vector named `label`, or nothing for a
// name that is no label.
[[nodiscard]] std::optional<Material> expectedMaterial(std::string_view label);

// payloadEntryPlaintext gives the plaintext of the payload fixture entry `name`, or nothing.
[[nodiscard]] std::optional<Bytes> payloadEntryPlaintext(std::string_view name);

}  // namespace FixtureMaterial
