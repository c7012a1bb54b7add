#include "GaldrineRecoveryCore/FixtureMaterial.hpp"

#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"

namespace FixtureMaterial {

Bytes keyFromSeed(std::string_view seed) {
  const GaldrineSHA256Digest digest = GaldrinePlatformSHA256::digest(GaldrineByteText::view(seed));
  return Bytes(digest.begin(), digest.end());
}

std::optional<Material> expectedMaterial(std::string_view label) {
  if (label == resourceChunkLabel) return Material{keyFromSeed(resourceChunkKeySeed), GaldrineByteText::bytes(resourceChunkPlaintext)};
  if (label == packEntryLabel) return Material{keyFromSeed(packEntryKeySeed), GaldrineByteText::bytes(packEntryPlaintext)};
  if (label == recoveryEnvelopeLabel)
    return Material{keyFromSeed(recoveryEnvelopeKeySeed), keyFromSeed(recoveryEnvelopePlaintextSeed)};
  return std::nullopt;
}

std::optional<Bytes> payloadEntryPlaintext(std::string_view name) {
  if (name == packEntryZeroName) return GaldrineByteText::bytes(packEntryZeroPlaintext);
  if (name == packEntryOneName) return GaldrineByteText::bytes(packEntryOnePlaintext);
  if (name == standaloneChunkName) return GaldrineByteText::bytes(standaloneChunkPlaintext);
  return std::nullopt;
}

}  // namespace FixtureMaterial
