#pragma once
// ReleasedBlockWatch tells whether watched heap blocks held only zero bytes when they were
// given back, so a test can show that a secret was wiped on every way out without reading
// freed memory. It replaces the global operator new and delete of the test program.

#include <cstddef>

namespace galdrine::recoverytool {

namespace ReleasedBlockWatch {

struct Report {
  int releasedCount = 0;         // watched blocks given back
  int releasedUnwipedCount = 0;  // of those, blocks with a non-zero byte left
};

// watch starts watching the block that begins at `block`; a block already watched is left
// as it is. At most a few blocks are watched at once.
void watch(const void* block, std::size_t byteCount);

// takeReport gives what happened since the last call and stops watching everything.
[[nodiscard]] Report takeReport();

}  // namespace ReleasedBlockWatch

}  // namespace galdrine::recoverytool
