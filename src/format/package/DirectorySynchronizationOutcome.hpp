#pragma once
// DirectorySynchronizationOutcome is how a directory synchronisation succeeded.

#include <cstdint>

namespace galdrine::format {

enum class DirectorySynchronizationOutcome : std::uint8_t {
  synchronized,             // the directory's entries reached stable storage
  delegatedToFileProvider,  // the volume refused in the way a provider-managed location does
};

}  // namespace galdrine::format
