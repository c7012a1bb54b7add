#include "format/package/PathConfinement.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <optional>

#include "platform/FileDescriptor.hpp"
#include "platform/FilePath.hpp"

namespace galdrine::format {

namespace PathConfinement {

namespace {

using Error = PathConfinementError;

[[nodiscard]] bool isWalkableComponent(const std::filesystem::path& component) {
  const std::string& text = component.native();
  return !text.empty() && text != "." && text != ".." && text.find('/') == std::string::npos;
}

// flagsForStepInto gives the openat flags for stepping into an entry of this status, or nothing
// if the walk must not go there. The trusted first link is the only entry opened with following.
[[nodiscard]] std::optional<int> flagsForStepInto(const struct stat& status, bool isFirstComponent) {
  if (S_ISDIR(status.st_mode)) return O_RDONLY | O_DIRECTORY | O_NOFOLLOW;
  if (isFirstComponent && S_ISLNK(status.st_mode) && status.st_uid == 0) return O_RDONLY | O_DIRECTORY;
  return std::nullopt;
}

}  // namespace

std::expected<void, Error> requireExistingDirectoryWithoutUntrustedSymbolicLinks(
    const std::filesystem::path& directory) {
  if (directory.empty() || !directory.is_absolute()) return std::unexpected(Error::invalidPath);
  const std::filesystem::path standardized = platform::FilePath::standardized(directory);
  if (!standardized.native().starts_with('/') || *standardized.begin() != "/")
    return std::unexpected(Error::invalidPath);

  auto current = platform::FileDescriptor::openDirectory("/");
  if (!current) return std::unexpected(Error::unavailableDirectory);
  bool isFirstComponent = true;
  for (auto component = std::next(standardized.begin()); component != standardized.end(); ++component) {
    if (!isWalkableComponent(*component)) return std::unexpected(Error::invalidPath);
    struct stat status {};
    if (::fstatat(current->get(), component->c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
      return std::unexpected(Error::unavailableDirectory);
    }
    const std::optional<int> flags = flagsForStepInto(status, isFirstComponent);
    if (!flags) return std::unexpected(Error::unavailableDirectory);
    auto next = platform::FileDescriptor::openAt(current->get(), *component, *flags);
    if (!next) return std::unexpected(Error::unavailableDirectory);
    *current = std::move(*next);  // closes the previous directory
    isFirstComponent = false;
  }
  return {};
}

}  // namespace PathConfinement

}  // namespace galdrine::format
