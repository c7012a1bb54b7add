#include "format/header/BackupFormatV1.hpp"

#include <algorithm>
#include <string>

#include "platform/UnicodeScalars.hpp"

namespace galdrine::format {

namespace {

constexpr std::size_t smallestRootNameByteCount = 10;
constexpr std::size_t largestRootNameByteCount = 128;

bool isForbiddenInRootName(char32_t scalar) {
  return scalar == U'/' || scalar == U'\\' || platform::UnicodeScalars::isControl(scalar);
}

}  // namespace

namespace BackupFormatV1 {

bool isValidPackageRootName(std::string_view name) {
  if (!name.ends_with(dottedPackageExtension)) return false;
  if (name.size() < smallestRootNameByteCount || name.size() > largestRootNameByteCount) return false;
  const auto scalars = platform::UnicodeScalars::scalars(name);
  if (!scalars) return false;
  // The extension is ASCII, so the stem ends on a scalar boundary of valid text.
  const std::string_view stem = name.substr(0, name.size() - dottedPackageExtension.size());
  if (platform::UnicodeScalars::trimmingWhiteSpace(stem).empty()) return false;
  return std::ranges::none_of(*scalars, isForbiddenInRootName);
}

}  // namespace BackupFormatV1

}  // namespace galdrine::format
