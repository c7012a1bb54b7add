#include "GaldrineKeyManagement/GaldrineLocalKeyIdentifier.hpp"

#include <algorithm>

std::expected<GaldrineLocalKeyIdentifier, GaldrineKeyMaterialError> GaldrineLocalKeyIdentifier::make(ByteView bytes) {
  if (bytes.size() != byteCount) {
    return std::unexpected(
        GaldrineKeyMaterialError::invalidIdentifierByteCount(byteCount, static_cast<std::int64_t>(bytes.size())));
  }
  GaldrineLocalKeyIdentifier identifier;
  std::ranges::copy(bytes, identifier.bytes_.begin());
  return identifier;
}
