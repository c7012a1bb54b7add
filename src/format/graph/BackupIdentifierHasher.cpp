#include "format/graph/BackupIdentifierHasher.hpp"

#include "platform/Random.hpp"

namespace galdrine::format {

namespace {

// The finaliser of SplitMix64: a bijection in which every input bit reaches every output bit.
std::uint64_t mixed(std::uint64_t value) {
  value ^= value >> 30;
  value *= 0xBF58476D1CE4E5B9ULL;
  value ^= value >> 27;
  value *= 0x94D049BB133111EBULL;
  value ^= value >> 31;
  return value;
}

struct Seed {
  std::array<std::uint64_t, 2> words{0x243F6A8885A308D3ULL, 0x13198A2E03707344ULL};

  Seed() {
    std::array<std::uint8_t, 16> drawn{};
    // Without a random source the fixed words stay: the sets still work, only unseeded.
    if (platform::Random::fill(drawn) != 0) return;
    std::memcpy(&words[0], drawn.data(), 8);
    std::memcpy(&words[1], drawn.data() + 8, 8);
  }
};

const Seed& processSeed() {
  static const Seed seed;
  return seed;
}

}  // namespace

namespace BackupIdentifierHasherDetail {

std::size_t words(std::uint64_t first, std::uint64_t second) noexcept {
  const auto& seed = processSeed().words;
  return static_cast<std::size_t>(mixed(mixed(first ^ seed[0]) ^ second ^ seed[1]));
}

}  // namespace BackupIdentifierHasherDetail

}  // namespace galdrine::format
