#pragma once
// BackupFlatIndex maps fixed-size keys (identifiers, or identifier pairs) to
// positions, for the working sets of the manifest checks. It is an open-addressing table in one
// array, at most three quarters full, probed linearly: a lookup mostly touches one or two
// cache lines, and entering a key takes no allocation of its own. Keys are hashed with the process's seed, so
// crafted identifiers cannot pile into one run of slots.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "format/graph/BackupIdentifierHasher.hpp"

namespace galdrine::format {

template <std::size_t KeyByteCount>
class BackupFlatIndex {
 public:
  using Key = std::array<std::uint8_t, KeyByteCount>;

  // reserve makes room for `count` keys, so that entering them never grows the table.
  void reserve(std::size_t count) {
    if (slotCountFor(count) > slots_.size()) rebuild(slotCountFor(count));
  }

  // enter maps `key` to `position`, or gives false and changes nothing when `key` is present.
  [[nodiscard]] bool enter(const Key& key, std::size_t position) {
    if (slotCountFor(size_ + 1) > slots_.size()) rebuild(slotCountFor(size_ + 1));
    Slot& slot = slots_[slotIndexFor(key)];
    if (slot.position != empty) return false;
    slot.key = key;
    slot.position = position;
    ++size_;
    return true;
  }

  [[nodiscard]] std::optional<std::size_t> find(const Key& key) const {
    if (slots_.empty()) return std::nullopt;
    const Slot& slot = slots_[slotIndexFor(key)];
    if (slot.position == empty) return std::nullopt;
    return slot.position;
  }

  [[nodiscard]] std::size_t size() const { return size_; }

 private:
  static constexpr std::size_t empty = std::numeric_limits<std::size_t>::max();

  struct Slot {
    Key key{};
    std::size_t position = empty;
  };

  // slotCountFor keeps the table at most three quarters full, in a power of two of at least 16
  // slots. Counts come from records already in memory, far below where this could overflow.
  static std::size_t slotCountFor(std::size_t count) {
    return std::bit_ceil(std::max<std::size_t>(16, count + count / 3 + 1));
  }

  // slotIndexFor gives the slot that holds `key`, or the empty slot where it belongs; there is
  // always an empty slot, since the table is never full.
  std::size_t slotIndexFor(const Key& key) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t index = BackupIdentifierHasher{}(key)&mask;
    while (slots_[index].position != empty && slots_[index].key != key) index = (index + 1) & mask;
    return index;
  }

  void rebuild(std::size_t slotCount) {
    std::vector<Slot> previous(slotCount);
    previous.swap(slots_);
    for (const Slot& slot : previous) {
      if (slot.position != empty) slots_[slotIndexFor(slot.key)] = slot;
    }
  }

  std::vector<Slot> slots_;
  std::size_t size_ = 0;
};

}  // namespace galdrine::format
