#include "credential/BoundedCredentialRead.hpp"

#include <utility>

#include "platform/SecureMemory.hpp"

namespace galdrine::credential {

namespace BoundedCredentialRead {

std::expected<Bytes, BoundedCredentialReadError> read(CredentialReading& reader, envelope::PortableKeyFactorV1 factor,
                                                      CredentialInput input) {
  auto given = reader.read(factor, input, maximumByteCount);
  if (!given) return std::unexpected(BoundedCredentialReadError::unavailable);
  Bytes credential = std::move(*given);
  // The reader is trusted with nothing, not even with its own bound.
  if (credential.empty() || credential.size() > static_cast<std::size_t>(maximumByteCount)) {
    platform::SecureMemory::wipe(credential);
    return std::unexpected(BoundedCredentialReadError::invalid);
  }
  return credential;
}

}  // namespace BoundedCredentialRead

}  // namespace galdrine::credential
