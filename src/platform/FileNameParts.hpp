#pragma once
// FileNameParts splits a file name into stem and extension by the path rules of the
// platform: at the last ".", except that a "." standing first begins no extension. So
// ".jpg" is all stem, "a.b.c" is "a.b" and "c", and "a." is "a" with an empty extension. The
// dot itself belongs to neither part.

#include <string_view>

namespace galdrine::platform {

struct FileNameParts {
  std::string_view stem;
  std::string_view extension;

  // split gives views into `name`, which the caller keeps alive while it uses them. Bytes other
  // than "." are never looked at, so any UTF-8 name splits between whole scalars.
  [[nodiscard]] static constexpr FileNameParts split(std::string_view name) {
    const std::size_t lastDot = name.rfind('.');
    if (lastDot == std::string_view::npos || lastDot == 0) return {name, {}};
    return {name.substr(0, lastDot), name.substr(lastDot + 1)};
  }

  friend constexpr bool operator==(const FileNameParts&, const FileNameParts&) = default;
};

}  // namespace galdrine::platform
