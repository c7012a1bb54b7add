#pragma once
// GaldrineRecoveryExportStatusV1 says whether an export recovered every resource of its
// snapshot. Both cases are a finished export: missing or damaged payloads only mark their
// resources, so a partial recovery still publishes its output. The raw values are the texts
// the recovery report writes.

#include <array>
#include <cstdint>
#include <string_view>

#include "GaldrineCore/GaldrineRawValue.hpp"

enum class GaldrineRecoveryExportStatusV1 : std::uint8_t {
  completed,
  completedWithIssues,
};

template <>
struct GaldrineRawValueTable<GaldrineRecoveryExportStatusV1> {
  static constexpr std::array<std::string_view, 2> rawValues{"completed", "completed-with-issues"};
};
