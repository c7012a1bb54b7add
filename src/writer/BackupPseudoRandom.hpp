#pragma once
// BackupPseudoRandom makes reproducible bytes for tests, fixtures and benchmarks: the
// SplitMix64 finaliser applied to a seeded counter. Any 8-byte word of a stream can be computed
// on its own, so a stream of many gigabytes is produced piece by piece, at any offset, without
// state. These bytes are not secret and must never serve as keys of a real backup.

#include <cstdint>
#include <span>

namespace galdrine::writer {

namespace BackupPseudoRandom {

// word gives the 64-bit word at position `index` of the stream of `seed`.
[[nodiscard]] constexpr std::uint64_t word(std::uint64_t seed, std::uint64_t index) {
  std::uint64_t value = seed + (index + 1) * 0x9E3779B97F4A7C15ULL;
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
  return value ^ (value >> 31);
}

// fill writes the bytes of the stream of `seed` that start at byte `offset`, little-endian
// within each word, over all of `into`.
void fill(std::uint64_t seed, std::uint64_t offset, std::span<std::uint8_t> into);

}  // namespace BackupPseudoRandom

}  // namespace galdrine::writer
