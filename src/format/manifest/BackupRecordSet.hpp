#pragma once
// BackupRecordSet is one working set of the manifest checks: the records of one kind
// in the order they were read, and a hash index from each record's key to its position.
// Checks visit `records()` in that order, so which failure is found first never depends on
// the hash; lookups are one hash probe each.

#include <array>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "format/manifest/BackupFlatIndex.hpp"

namespace galdrine::format {

template <typename Key, typename Record>
class BackupRecordSet {
 public:
  // reserve makes room for `count` records at once, so that the index never grows.
  void reserve(std::size_t count) {
    records_.reserve(count);
    positions_.reserve(count);
  }

  // enter appends `record` under `key`, or gives false and keeps nothing when the key is taken.
  [[nodiscard]] bool enter(const Key& key, Record&& record) {
    if (!positions_.enter(key, records_.size())) return false;
    records_.push_back(std::move(record));
    return true;
  }

  [[nodiscard]] std::optional<std::size_t> positionOf(const Key& key) const { return positions_.find(key); }
  [[nodiscard]] const Record* find(const Key& key) const {
    const auto position = positionOf(key);
    return position ? &records_[*position] : nullptr;
  }
  [[nodiscard]] bool contains(const Key& key) const { return positions_.find(key).has_value(); }

  [[nodiscard]] const std::vector<Record>& records() const { return records_; }
  [[nodiscard]] std::size_t size() const { return records_.size(); }

 private:
  std::vector<Record> records_;
  BackupFlatIndex<std::tuple_size_v<Key>> positions_;
};

}  // namespace galdrine::format
