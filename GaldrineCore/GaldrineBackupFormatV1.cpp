#include "GaldrineCore/GaldrineBackupFormatV1.hpp"

#include <algorithm>
#include <string>

#include "GaldrinePlatform/GaldrineUnicodeScalars.hpp"

namespace {

constexpr std::size_t smallestRootNameByteCount = 10;
constexpr std::size_t largestRootNameByteCount = 128;

bool isForbiddenInRootName(char32_t scalar) {
  return scalar == U'/' || scalar == U'\\' || GaldrineUnicodeScalars::isControl(scalar);
}

}  // namespace

namespace GaldrineBackupFormatV1 {

bool isValidPackageRootName(std::string_view name) {
  if (!name.ends_with(dottedPackageExtension)) return false;
  if (name.size() < smallestRootNameByteCount || name.size() > largestRootNameByteCount) return false;
  const auto scalars = GaldrineUnicodeScalars::scalars(name);
  if (!scalars) return false;
  // The extension is ASCII, so the stem ends on a scalar boundary of valid text.
  const std::string_view stem = name.substr(0, name.size() - dottedPackageExtension.size());
  if (GaldrineUnicodeScalars::trimmingWhiteSpace(stem).empty()) return false;
  return std::ranges::none_of(*scalars, isForbiddenInRootName);
}

}  // namespace GaldrineBackupFormatV1
