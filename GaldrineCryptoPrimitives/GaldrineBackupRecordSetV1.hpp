#pragma once
// GaldrineBackupRecordSetV1 is one working set of the manifest checks: the records of one kind
// in the order they were read, and a hash index from each record's key to its position.
// Checks visit `records()` in that order, so which failure is found first never depends on
// the hash; lookups are one hash probe each.

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierHasherV1.hpp"

template <typename Key, typename Record>
class GaldrineBackupRecordSetV1 {
 public:
  // enter appends `record` under `key`, or gives false and keeps nothing when the key is taken.
  [[nodiscard]] bool enter(const Key& key, Record&& record) {
    if (!positions_.try_emplace(key, records_.size()).second) return false;
    records_.push_back(std::move(record));
    return true;
  }

  [[nodiscard]] std::optional<std::size_t> positionOf(const Key& key) const {
    const auto found = positions_.find(key);
    if (found == positions_.end()) return std::nullopt;
    return found->second;
  }
  [[nodiscard]] const Record* find(const Key& key) const {
    const auto position = positionOf(key);
    return position ? &records_[*position] : nullptr;
  }
  [[nodiscard]] bool contains(const Key& key) const { return positions_.contains(key); }

  [[nodiscard]] const std::vector<Record>& records() const { return records_; }
  [[nodiscard]] std::size_t size() const { return records_.size(); }

 private:
  std::vector<Record> records_;
  std::unordered_map<Key, std::size_t, GaldrineBackupIdentifierHasherV1> positions_;
};
