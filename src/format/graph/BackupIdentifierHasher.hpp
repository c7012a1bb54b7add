#pragma once
// BackupIdentifierHasher hashes identifiers and other fixed keys of the manifest's
// working sets. The identifiers come from a package, so the hash is seeded once per process
// from the secure random source: nobody can craft identifiers that pile into one bucket and
// turn the linear checks quadratic. Nothing depends on the hash values' order.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace galdrine::format {

namespace BackupIdentifierHasherDetail {

// words folds two 64-bit words under the process's seed.
[[nodiscard]] std::size_t words(std::uint64_t first, std::uint64_t second) noexcept;

}  // namespace BackupIdentifierHasherDetail

struct BackupIdentifierHasher {
  template <std::size_t ByteCount>
  requires(ByteCount % 16 == 0) [[nodiscard]] std::size_t operator()(
      const std::array<std::uint8_t, ByteCount>& key) const noexcept {
    std::size_t hash = 0;
    for (std::size_t offset = 0; offset < ByteCount; offset += 16) {
      std::uint64_t first = 0;
      std::uint64_t second = 0;
      std::memcpy(&first, key.data() + offset, 8);
      std::memcpy(&second, key.data() + offset + 8, 8);
      hash = BackupIdentifierHasherDetail::words(first ^ hash, second);
    }
    return hash;
  }
};

}  // namespace galdrine::format
