#pragma once
// SHA-256, one-shot and streaming.

#include <array>
#include <cstdint>
#include <memory>

#include "platform/Bytes.hpp"

namespace galdrine::platform {

using SHA256Digest = std::array<std::uint8_t, 32>;

namespace SHA256 {

[[nodiscard]] SHA256Digest digest(ByteView bytes);

// Hasher takes bytes piece by piece. A hasher is used once: update any number of times,
// then finalize.
class Hasher {
 public:
  Hasher();
  ~Hasher();
  Hasher(Hasher&&) noexcept;
  Hasher& operator=(Hasher&&) noexcept;
  Hasher(const Hasher&) = delete;
  Hasher& operator=(const Hasher&) = delete;

  void update(ByteView bytes);
  [[nodiscard]] SHA256Digest finalize();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace SHA256

}  // namespace galdrine::platform
