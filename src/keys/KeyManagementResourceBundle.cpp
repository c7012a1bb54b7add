#include "keys/KeyManagementResourceBundle.hpp"

#include <system_error>

namespace galdrine::keys {

namespace {

std::filesystem::path locate() {
  std::error_code error;
  const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error) {
    const std::filesystem::path besideExecutable = executable.parent_path() / GALDRINE_KEY_MANAGEMENT_BUNDLE_NAME;
    if (std::filesystem::is_directory(besideExecutable, error)) return besideExecutable;
  }
  return std::filesystem::path(GALDRINE_BUILD_RESOURCE_BUNDLE);
}

}  // namespace

namespace KeyManagementResourceBundle {

const std::filesystem::path& location() {
  static const std::filesystem::path located = locate();
  return located;
}

std::filesystem::path wordListFile() { return location() / "bip39-english-v1.txt"; }

}  // namespace KeyManagementResourceBundle

}  // namespace galdrine::keys
