#pragma once
// BackupSource is what a scan found in a source directory: every directory that can be stored,
// with the media files directly in it, and how many entries were left out. It holds names,
// sizes and times, never content; the files are read only when a package is written.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace galdrine::backuptool {

struct BackupSourceFile {
  std::string name;          // the file's own name, valid UTF-8
  std::string relativePath;  // from the source directory, components joined by "/"
  std::filesystem::path path;
  std::string uniformTypeIdentifier;  // the registered type of its extension
  bool isMovie = false;               // otherwise an image
  std::uint64_t byteCount = 0;        // 1 to the largest resource the format stores
  std::int64_t modifiedAtUTCMilliseconds = 0;

  friend bool operator==(const BackupSourceFile&, const BackupSourceFile&) = default;
};

struct BackupSourceDirectory {
  std::string name;                         // empty for the source directory itself
  std::string relativePath;                 // empty for the source directory itself
  std::size_t depth = 0;                    // 0 for the source directory, 1 for its subdirectories
  std::vector<BackupSourceFile> files;      // ascending by name bytes
  std::vector<std::size_t> subdirectories;  // indexes into BackupSource::directories, ascending by name bytes

  friend bool operator==(const BackupSourceDirectory&, const BackupSourceDirectory&) = default;
};

struct BackupSource {
  std::vector<BackupSourceDirectory> directories;  // the source directory first
  std::uint64_t skippedEntryCount = 0;

  [[nodiscard]] std::uint64_t fileCount() const {
    std::uint64_t count = 0;
    for (const BackupSourceDirectory& directory : directories) count += directory.files.size();
    return count;
  }

  friend bool operator==(const BackupSource&, const BackupSource&) = default;
};

}  // namespace galdrine::backuptool
