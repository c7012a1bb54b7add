#pragma once
// PathConfinement proves that a directory is reached through real directories only.
//
// requireExistingDirectoryWithoutUntrustedSymbolicLinks walks the standardised absolute path
// from "/" one component at a time, each relative to the descriptor of the one before and
// without following links, so no component can be swapped for a link between its check and
// the step into it. Only the first component may be a symbolic link, and only if user 0 owns
// it, as the system's own links at the root are; its target must be a directory.
//
// Failures: a path that is empty or not absolute, or a component that is empty, "." or ".."
// gives invalidPath; a component that is missing, unreadable, a link anywhere else, a link
// owned by another user, or anything but a directory gives unavailableDirectory. "/" passes.
// The check proves a state at one moment and holds no descriptor afterwards, whatever the
// result; callers that need it at two moments call it twice.

#include <cstdint>
#include <expected>
#include <filesystem>

namespace galdrine::format {

// PathConfinementError is why a path was not proven to reach a real directory. Cases
// stand in the order of the check's contract.
enum class PathConfinementError : std::uint8_t {
  invalidPath,
  unavailableDirectory,
};

namespace PathConfinement {

[[nodiscard]] std::expected<void, PathConfinementError> requireExistingDirectoryWithoutUntrustedSymbolicLinks(
    const std::filesystem::path& directory);

}  // namespace PathConfinement

}  // namespace galdrine::format
