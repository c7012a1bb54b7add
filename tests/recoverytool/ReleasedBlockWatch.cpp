#include "ReleasedBlockWatch.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>

namespace galdrine::recoverytool {

namespace ReleasedBlockWatch {
namespace {

struct Watched {
  const void* block = nullptr;
  std::size_t byteCount = 0;
};

// Plain static storage: the hooks below must not allocate.
std::array<Watched, 8> watched{};
Report report{};

void noteRelease(void* block) {
  for (Watched& entry : watched) {
    if (entry.block != block || block == nullptr) continue;
    const auto* bytes = static_cast<const unsigned char*>(block);
    ++report.releasedCount;
    if (std::any_of(bytes, bytes + entry.byteCount, [](unsigned char byte) { return byte != 0; })) {
      ++report.releasedUnwipedCount;
    }
    entry = {};
  }
}

}  // namespace

void watch(const void* block, std::size_t byteCount) {
  if (block == nullptr) return;
  for (const Watched& entry : watched) {
    if (entry.block == block) return;
  }
  for (Watched& entry : watched) {
    if (entry.block == nullptr) {
      entry = {block, byteCount};
      return;
    }
  }
  std::abort();  // more blocks than a test should ever watch
}

Report takeReport() {
  const Report taken = report;
  report = {};
  watched.fill({});
  return taken;
}

}  // namespace ReleasedBlockWatch

}  // namespace galdrine::recoverytool

// Allocation and release (also the nothrow forms the standard library uses for temporary
// buffers) go through malloc and free, so that a sanitizer runtime sees matching pairs.
void* operator new(std::size_t byteCount) {
  if (void* block = std::malloc(byteCount == 0 ? 1 : byteCount)) return block;
  throw std::bad_alloc();
}

void* operator new(std::size_t byteCount, const std::nothrow_t&) noexcept {
  return std::malloc(byteCount == 0 ? 1 : byteCount);
}

void operator delete(void* block) noexcept {
  galdrine::recoverytool::ReleasedBlockWatch::noteRelease(block);
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

void operator delete(void* block, const std::nothrow_t&) noexcept { operator delete(block); }
