#pragma once
// RecoveryExportStatusV1 says whether an export recovered every resource of its
// snapshot. Both cases are a finished export: missing or damaged payloads only mark their
// resources, so a partial recovery still publishes its output. The raw values are the texts
// the recovery report writes.

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/RawValue.hpp"

namespace galdrine::recovery {

enum class RecoveryExportStatusV1 : std::uint8_t {
  completed,
  completedWithIssues,
};

}  // namespace galdrine::recovery

namespace galdrine {

template <>
struct RawValueTable<recovery::RecoveryExportStatusV1> {
  static constexpr std::array<std::string_view, 2> rawValues{"completed", "completed-with-issues"};
};

}  // namespace galdrine

