#pragma once
// SecretKeyStorage holds one 32-byte key for every handle that shares it, so that a
// key can be invalidated everywhere at once. It is shared and reference counted
// (std::shared_ptr); its lock guards only the bytes and is held for a copy or an erase, never
// while a caller's function runs. Storages may be used from any thread.

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <type_traits>

#include "keys/KeyMaterialError.hpp"
#include "platform/Bytes.hpp"
#include "platform/ScopeGuard.hpp"
#include "platform/SecureMemory.hpp"

namespace galdrine::keys {

class SecretKeyStorage {
 public:
  static constexpr std::size_t keyByteCount = 32;

  // make copies `bytes` into a new storage; the caller still owns and wipes its own value.
  // Bytes of another length are invalidKeyByteCount(32, length), and nothing is kept.
  [[nodiscard]] static std::expected<std::shared_ptr<SecretKeyStorage>, KeyMaterialError> make(ByteView bytes);

  SecretKeyStorage(const SecretKeyStorage&) = delete;
  SecretKeyStorage& operator=(const SecretKeyStorage&) = delete;
  ~SecretKeyStorage() { invalidate(); }

  // invalidate wipes and drops the bytes, under the lock. Repeating it does nothing.
  void invalidate() noexcept;

  // withTemporaryBytes copies the key out under the lock, releases the lock, and calls
  // `function` with the copy; the copy is wiped when the function returns, whatever it
  // returns. The function must not keep the view. An invalidated storage is `invalidated`, and
  // the function is then not called.
  template <typename Function>
  [[nodiscard]] auto withTemporaryBytes(Function&& function) const
      -> std::expected<std::invoke_result_t<Function&, ByteView>, KeyMaterialError> {
    std::array<std::uint8_t, keyByteCount> copy{};
    ScopeGuard wipeCopy{[&copy] { platform::SecureMemory::wipe(copy); }};
    if (!copyBytes(copy)) return std::unexpected(KeyMaterialError::invalidated());
    if constexpr (std::is_void_v<std::invoke_result_t<Function&, ByteView>>) {
      std::invoke(function, ByteView(copy));
      return {};
    } else {
      return std::invoke(function, ByteView(copy));
    }
  }

 private:
  SecretKeyStorage() = default;
  [[nodiscard]] bool copyBytes(std::span<std::uint8_t, keyByteCount> destination) const;

  mutable std::mutex lock_;
  std::optional<std::array<std::uint8_t, keyByteCount>> bytes_;
};

}  // namespace galdrine::keys
