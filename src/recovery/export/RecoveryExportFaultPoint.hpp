#pragma once
// RecoveryExportFaultPoint names the points at which a test makes an export fail on
// purpose, to observe what the export leaves behind. Only a caller's argument triggers one; an
// export without a fault point never stops at any of them.

#include <cstdint>

namespace galdrine::recovery {

enum class RecoveryExportFaultPoint : std::uint8_t {
  afterStagingCreated,        // the hidden staging directory exists, nothing is in it
  afterFirstResourceAttempt,  // the first planned resource has been attempted
  beforeMetadata,             // every resource is attempted, no document is written
  beforePublication,          // the staging directory is complete and synchronised
};

}  // namespace galdrine::recovery
