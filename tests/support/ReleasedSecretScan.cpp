#include "support/ReleasedSecretScan.hpp"

#include <malloc.h>

#include <cstdlib>
#include <new>

namespace galdrine::testsupport {

namespace ReleasedSecretScan {
namespace {

// Plain static storage: the hooks below must not allocate.
std::string_view armedMarker;
int blocksWithMarker = 0;

}  // namespace

void arm(std::string_view marker) {
  armedMarker = marker;
  blocksWithMarker = 0;
}

int disarm() {
  armedMarker = {};
  return blocksWithMarker;
}

void noteRelease(void* block) {
  if (block == nullptr || armedMarker.empty()) return;
  const std::string_view contents(static_cast<const char*>(block), ::malloc_usable_size(block));
  if (contents.contains(armedMarker)) ++blocksWithMarker;
}

}  // namespace ReleasedSecretScan

}  // namespace galdrine::testsupport

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
  galdrine::testsupport::ReleasedSecretScan::noteRelease(block);
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

void operator delete(void* block, const std::nothrow_t&) noexcept { operator delete(block); }
