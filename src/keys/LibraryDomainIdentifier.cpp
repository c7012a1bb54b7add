#include "keys/LibraryDomainIdentifier.hpp"

#include <algorithm>

namespace galdrine::keys {

std::expected<LibraryDomainIdentifier, LibraryDomainIdentifierError> LibraryDomainIdentifier::make(ByteView bytes) {
  if (bytes.size() != byteCount) {
    return std::unexpected(
        LibraryDomainIdentifierError::invalidByteCount(byteCount, static_cast<std::int64_t>(bytes.size())));
  }
  LibraryDomainIdentifier identifier;
  std::ranges::copy(bytes, identifier.bytes_.begin());
  return identifier;
}

}  // namespace galdrine::keys
