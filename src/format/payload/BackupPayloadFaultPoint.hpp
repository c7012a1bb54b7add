#pragma once
// BackupPayloadFaultPoint names the places where a payload writer can be stopped on
// purpose, in the order in which a writer passes them. Only a caller's fault hook stops a
// write at one of them; the ordinary writers never do.

#include <cstdint>

namespace galdrine::format {

enum class BackupPayloadFaultPoint : std::uint8_t {
  afterStagingCreation,
  afterPayloadWrite,
  afterIndexWrite,  // pack segments only
  afterStagingSync,
  afterStagingVerification,
  afterFinalRename,
};

}  // namespace galdrine::format
