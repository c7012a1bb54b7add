#pragma once
// The rows of the uniform type registry as compiled into the program. The build generates
// their definition from resources/uniform-types.tsv and checks every line when it does; only
// UniformType reads them.

#include <cstdint>
#include <span>
#include <string_view>

namespace galdrine::platform {

enum class UniformTypeConformance : std::uint8_t { none, image, movie };

struct UniformTypeRow {
  std::string_view identifier;
  UniformTypeConformance conformance;
  std::string_view fileNameExtensionTags;  // comma-separated, lower case, preferred first; empty for none
};

namespace UniformTypeRows {

[[nodiscard]] std::span<const UniformTypeRow> all();

}  // namespace UniformTypeRows

}  // namespace galdrine::platform
