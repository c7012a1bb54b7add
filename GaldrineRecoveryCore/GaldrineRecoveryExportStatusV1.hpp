#pragma once
// GaldrineRecoveryExportStatusV1 says whether an export recovered every resource of its
// snapshot. Both cases are a finished export: missing or damaged payloads only mark their
// resources, so a partial recovery still publishes its output.

#include <cstdint>

enum class GaldrineRecoveryExportStatusV1 : std::uint8_t {
  completed,
  completedWithIssues,
};
