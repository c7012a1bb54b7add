#include "ReleasedSecretScan.hpp"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace galdrine::credential {

namespace ReleasedSecretScan {
namespace {

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
  const auto* bytes = static_cast<const char*>(block);
  const std::string_view contents(bytes, ::malloc_usable_size(block));
  if (contents.contains(armedMarker)) ++blocksWithMarker;
}

}  // namespace ReleasedSecretScan

}  // namespace galdrine::credential

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
  galdrine::credential::ReleasedSecretScan::noteRelease(block);
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

void operator delete(void* block, const std::nothrow_t&) noexcept { operator delete(block); }
