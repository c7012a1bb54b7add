#include "GaldrineKeyManagement/GaldrineLibraryDomainIdentifier.hpp"

#include <algorithm>

std::expected<GaldrineLibraryDomainIdentifier, GaldrineLibraryDomainIdentifierError> GaldrineLibraryDomainIdentifier::make(
    ByteView bytes) {
  if (bytes.size() != byteCount) {
    return std::unexpected(
        GaldrineLibraryDomainIdentifierError::invalidByteCount(byteCount, static_cast<std::int64_t>(bytes.size())));
  }
  GaldrineLibraryDomainIdentifier identifier;
  std::ranges::copy(bytes, identifier.bytes_.begin());
  return identifier;
}
