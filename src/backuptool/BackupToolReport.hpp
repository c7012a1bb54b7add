#pragma once
// BackupToolReport holds the words of a successful galdrine-backup run on standard output: one
// line of counts, and for a new recovery key its 24 words between two fixed lines.

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Bytes.hpp"

namespace galdrine::backuptool {

struct BackupToolCounts {
  std::uint64_t itemCount = 0;
  std::uint64_t albumCount = 0;
  std::uint64_t folderCount = 0;
  std::uint64_t skippedEntryCount = 0;
  std::uint64_t unchangedFileCount = 0;  // files whose stored payload a new snapshot kept

  friend bool operator==(const BackupToolCounts&, const BackupToolCounts&) = default;
};

namespace BackupToolReport {

inline constexpr std::string_view recoveryKeyOpening =
    "Recovery key, shown only this once. Write these 24 words down and keep them safe:\n";
inline constexpr std::string_view recoveryKeyClosing = "Anyone who has these words can open the backup.\n";

// createdLine: "Created the backup package with 7 items, 3 albums and 1 folder; 2 entries skipped.\n"
[[nodiscard]] std::string createdLine(const BackupToolCounts& counts);

// addedLine: "Added a snapshot with 8 items, 3 albums and 1 folder; 6 files unchanged, 2 entries skipped.\n"
[[nodiscard]] std::string addedLine(const BackupToolCounts& counts);

// withRecoveryKey is the opening line, the phrase and a line feed, the closing line, then
// `summary`. It holds a secret: the buffer is sized once, so no copy is left behind by growth,
// and the caller wipes it.
[[nodiscard]] Bytes withRecoveryKey(std::string_view phrase, std::string_view summary);

}  // namespace BackupToolReport

}  // namespace galdrine::backuptool
