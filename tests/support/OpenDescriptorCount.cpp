#include "support/OpenDescriptorCount.hpp"

#include <filesystem>

namespace galdrine::testsupport {

std::size_t openDescriptorCount() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
  return count;
}

}  // namespace galdrine::testsupport
