#include "platform/ConstantTime.hpp"

#include <openssl/crypto.h>

namespace galdrine::platform {

namespace ConstantTime {

bool equal(ByteView left, ByteView right) {
  if (left.size() != right.size()) return false;
  if (left.empty()) return true;
  return CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

}  // namespace ConstantTime

}  // namespace galdrine::platform
