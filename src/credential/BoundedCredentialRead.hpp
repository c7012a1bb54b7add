#pragma once
// BoundedCredentialRead is how both tools take a credential from a CredentialReading: one
// read with the shared bound, and the same two outcomes, which each tool names in its own
// error table.

#include <cstdint>
#include <expected>

#include "credential/CredentialInput.hpp"
#include "credential/CredentialReading.hpp"
#include "envelope/PortableKeyFactorV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::credential {

enum class BoundedCredentialReadError : std::uint8_t {
  unavailable,  // the reader obtained no credential, whatever its reason
  invalid,      // the reader gave an empty credential, or one above the bound
};

namespace BoundedCredentialRead {

// The bound for a credential, in bytes, on either input.
inline constexpr std::int64_t maximumByteCount = 16384;

// read asks `reader` once for the credential of `factor` from `input`, with the bound. A
// credential of exactly maximumByteCount bytes is accepted; an invalid one is wiped before
// this returns. On success the caller owns the bytes and wipes them.
[[nodiscard]] std::expected<Bytes, BoundedCredentialReadError> read(CredentialReading& reader,
                                                                    envelope::PortableKeyFactorV1 factor,
                                                                    CredentialInput input);

}  // namespace BoundedCredentialRead

}  // namespace galdrine::credential
