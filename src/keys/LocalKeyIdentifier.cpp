#include "keys/LocalKeyIdentifier.hpp"

#include <algorithm>

namespace galdrine::keys {

std::expected<LocalKeyIdentifier, KeyMaterialError> LocalKeyIdentifier::make(ByteView bytes) {
  if (bytes.size() != byteCount) {
    return std::unexpected(
        KeyMaterialError::invalidIdentifierByteCount(byteCount, static_cast<std::int64_t>(bytes.size())));
  }
  LocalKeyIdentifier identifier;
  std::ranges::copy(bytes, identifier.bytes_.begin());
  return identifier;
}

}  // namespace galdrine::keys
