#include "writer/BackupPseudoRandom.hpp"

#include <bit>
#include <cstring>

namespace galdrine::writer {

namespace BackupPseudoRandom {

void fill(std::uint64_t seed, std::uint64_t offset, std::span<std::uint8_t> into) {
  std::size_t written = 0;
  std::uint64_t index = offset / 8;
  // A start inside a word takes that word's tail first; then whole words, then a head.
  if (const std::size_t skipped = offset % 8; skipped != 0 && !into.empty()) {
    const std::uint64_t value = word(seed, index++);
    for (std::size_t byte = skipped; byte < 8 && written < into.size(); ++byte)
      into[written++] = static_cast<std::uint8_t>(value >> (8 * byte));
  }
  for (; into.size() - written >= 8; written += 8) {
    const std::uint64_t value = word(seed, index++);
    if constexpr (std::endian::native == std::endian::little) {
      std::memcpy(into.data() + written, &value, 8);
    } else {
      for (std::size_t byte = 0; byte < 8; ++byte) into[written + byte] = static_cast<std::uint8_t>(value >> (8 * byte));
    }
  }
  if (written < into.size()) {
    const std::uint64_t value = word(seed, index);
    for (std::size_t byte = 0; written < into.size(); ++byte) into[written++] = static_cast<std::uint8_t>(value >> (8 * byte));
  }
}

}  // namespace BackupPseudoRandom

}  // namespace galdrine::writer
