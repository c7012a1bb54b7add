#pragma once
// The rows of the uniform type registry as compiled into the program. The build generates
// their definition from resources/uniform-types.tsv and checks every line when it does; only
// GaldrineUniformType reads them.

#include <cstdint>
#include <span>
#include <string_view>

enum class GaldrineUniformTypeConformance : std::uint8_t { none, image, movie };

struct GaldrineUniformTypeRow {
  std::string_view identifier;
  GaldrineUniformTypeConformance conformance;
  std::string_view fileNameExtensionTags;  // comma-separated, lower case, preferred first; empty for none
};

namespace GaldrineUniformTypeRows {

[[nodiscard]] std::span<const GaldrineUniformTypeRow> all();

}  // namespace GaldrineUniformTypeRows
