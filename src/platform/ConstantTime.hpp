#pragma once
// Comparison of secret bytes in time that does not depend on where they first differ.

#include "platform/Bytes.hpp"

namespace galdrine::platform {

namespace ConstantTime {

// equal tells whether the two byte strings are the same. Lengths are not secret and are
// compared first; equal lengths are compared without an early exit.
[[nodiscard]] bool equal(ByteView left, ByteView right);

}  // namespace ConstantTime

}  // namespace galdrine::platform
