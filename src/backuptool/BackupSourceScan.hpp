#pragma once
// BackupSourceScan walks a source directory and tells what galdrine-backup would store of it.
//
// The source itself may be reached through a symbolic link, since the user named it; inside
// it no link is followed. Entries whose name begins with "." are ignored and not counted.
// Every other entry counts against maximumEntryCount, and one of these is skipped and counted:
//   - a symbolic link, or anything that is neither a regular file nor a directory;
//   - an entry that vanished or could not be opened while the scan ran;
//   - a directory whose name cannot be an album or folder name (not UTF-8, longer than 512
//     bytes, or only blanks), with everything in it;
//   - a file whose name is not UTF-8, whose extension the uniform type registry does not know
//     as an image or a movie type, that is empty, or that is larger than a resource can be.
// Failures: the source no directory or not openable, or a listing that fails (unavailable);
// more than maximumEntryCount entries, a directory deeper than maximumDirectoryDepth, or media
// of more than maximumTotalByteCount bytes (tooLarge). Nothing is written, and no descriptor is
// left open on any way out.

#include <cstdint>
#include <expected>
#include <filesystem>

#include "backuptool/BackupSource.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "format/manifest/BackupManifestSemanticValidator.hpp"

namespace galdrine::backuptool {

// BackupSourceScanError is why a source directory could not be scanned.
enum class BackupSourceScanError : std::uint8_t {
  unavailable,  // the source is no directory, cannot be opened, or a directory listing failed
  tooLarge,     // more entries, deeper nesting or more bytes than one snapshot can hold
};

namespace BackupSourceScan {

inline constexpr std::uint64_t maximumEntryCount = 1000000;
// The format's deepest chain of folders, and albums inside the last of them.
inline constexpr std::size_t maximumDirectoryDepth = format::BackupFormatV1::maximumManifestFolderDepth + 1;
inline constexpr std::uint64_t maximumTotalByteCount = format::BackupManifestSemanticValidator::maximumTotalByteCount;

[[nodiscard]] std::expected<BackupSource, BackupSourceScanError> scan(const std::filesystem::path& sourcePath);

}  // namespace BackupSourceScan

}  // namespace galdrine::backuptool
