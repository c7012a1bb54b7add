#pragma once
// CredentialReading is how a credential enters a tool. A tool asks once per run, after its
// command line parsed, through BoundedCredentialRead, and owns (and wipes) what it is given.

#include <cstdint>
#include <expected>

#include "credential/CredentialInput.hpp"
#include "envelope/PortableKeyFactorV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::credential {

// A reader's failure reaches the tool without a reason: whatever went wrong, no usable
// credential was obtained. A reader keeps its own reasons to itself.
struct CredentialReadingFailure {
  friend bool operator==(const CredentialReadingFailure&, const CredentialReadingFailure&) = default;
};

class CredentialReading {
 public:
  virtual ~CredentialReading() = default;

  // read gives the credential for `factor` from `input` as raw bytes, which the caller owns
  // and must wipe. `maximumByteCount` is the bound the reader enforces on its own input; a
  // reader that fails keeps no copy of what it read.
  [[nodiscard]] virtual std::expected<Bytes, CredentialReadingFailure> read(envelope::PortableKeyFactorV1 factor,
                                                                            CredentialInput input,
                                                                            std::int64_t maximumByteCount) = 0;
};

}  // namespace galdrine::credential
