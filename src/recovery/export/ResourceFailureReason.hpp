#pragma once
// ResourceFailureReason is why one payload artifact of a resource could not give its bytes.
// Its texts are the ones the recovery report writes.

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/RawValue.hpp"

namespace galdrine::recovery {

namespace RecoveryExporter {

enum class ResourceFailureReason : std::uint8_t {
  missingPayload,           // the artifact file is not there
  unreadablePayload,        // it cannot be opened or read, is no regular file, or changed while read
  payloadIntegrityFailure,  // its size or digest is wrong, or its bytes do not open
};

}  // namespace RecoveryExporter

}  // namespace galdrine::recovery

namespace galdrine {

template <>
struct RawValueTable<recovery::RecoveryExporter::ResourceFailureReason> {
  static constexpr std::array<std::string_view, 3> rawValues{"missing-payload", "unreadable-payload",
                                                             "payload-integrity-failure"};
};

}  // namespace galdrine

