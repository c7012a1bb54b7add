#pragma once
// openDescriptorCount counts this process's open file descriptors, so that a test can show
// that an operation leaves none behind on any path.

#include <cstddef>

namespace galdrine::testsupport {

[[nodiscard]] std::size_t openDescriptorCount();

}  // namespace galdrine::testsupport
