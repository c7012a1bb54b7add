#pragma once
// FixtureFiles are the rules for where a fixture may be read from and how: one file name in
// the index's own directory, read whole within a bound, never through a symbolic link.

#include <cstddef>
#include <expected>
#include <filesystem>
#include <optional>
#include <string_view>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerificationError.hpp"

namespace FixtureFiles {

// readBoundedRegularFile reads the file at `url` whole. A symbolic link, anything but a regular
// file, a file whose size is above `maximumByteCount` as the file system states it or as it is
// read (at most one byte more is ever read), and any failure to read are invalidFixture.
[[nodiscard]] std::expected<Bytes, GaldrineRecoveryFixtureVerificationError> readBoundedRegularFile(
    const std::filesystem::path& url, std::size_t maximumByteCount);

// validIdentifier: 1 to 128 bytes, each a-z, 0-9 or "-".
[[nodiscard]] bool validIdentifier(std::string_view identifier);

// validRelativeFilename: 1 to 255 UTF-8 bytes, neither "/" nor "\", not "." or "..", and its
// own last path component.
[[nodiscard]] bool validRelativeFilename(std::string_view name);

// fixtureURL joins `base` and `name` when `name` is a valid relative file name and the joined,
// standardised location has exactly `base` as its parent; otherwise nothing.
[[nodiscard]] std::optional<std::filesystem::path> fixtureURL(const std::filesystem::path& base, std::string_view name);

}  // namespace FixtureFiles
