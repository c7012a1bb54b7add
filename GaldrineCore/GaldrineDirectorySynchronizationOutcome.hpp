#pragma once
// GaldrineDirectorySynchronizationOutcome is how a directory synchronisation succeeded.

#include <cstdint>

enum class GaldrineDirectorySynchronizationOutcome : std::uint8_t {
  synchronized,             // the directory's entries reached stable storage
  delegatedToFileProvider,  // the volume refused in the way a provider-managed location does
};
