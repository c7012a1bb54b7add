#pragma once
// CountsDocument holds a snapshot's record counts under their document keys.

#include <cstdint>

namespace galdrine::recoverytool {

struct CountsDocument {
  std::uint64_t items = 0;
  std::uint64_t resources = 0;
  std::uint64_t folders = 0;
  std::uint64_t albums = 0;
  std::uint64_t memberships = 0;
  std::uint64_t tombstones = 0;

  friend bool operator==(const CountsDocument&, const CountsDocument&) = default;
};

}  // namespace galdrine::recoverytool
