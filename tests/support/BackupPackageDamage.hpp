#pragma once
// BackupPackageDamage spoils a written package on purpose, so that tests can show what a
// reader makes of damage: a payload file of a given resource, or one metadata file of a given
// commit, removed, cut short, lengthened, altered in one byte, or replaced by a symbolic link,
// a directory or an empty file; or a stray file added. Each helper changes exactly what it
// says and nothing else, and finds its file through what the writer reported.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <string_view>

#include "platform/Bytes.hpp"
#include "platform/FileError.hpp"
#include "writer/BackupWrittenCommit.hpp"

namespace galdrine::testsupport {

enum class BackupFileDamage : std::uint8_t {
  remove,                 // the file is gone
  truncate,               // the last byte is cut off
  extend,                 // one zero byte is appended
  alterByte,              // every bit of the middle byte is flipped
  replaceBySymbolicLink,  // the file moves into the package's tmp and a link to it takes its place
  replaceByDirectory,     // an empty directory stands in the file's place
  replaceByEmptyFile,     // the file keeps its name and loses every byte
};

enum class BackupMetadataFile : std::uint8_t { commit, head, snapshot, manifestRoot, manifestSection };

namespace BackupPackageDamage {

// damageFile applies `damage` to the regular file `file` of the package rooted at
// `packagePath`. A failed file call gives its errno; what was done before it stays done.
[[nodiscard]] std::expected<void, platform::FileError> damageFile(const std::filesystem::path& packagePath,
                                                                  const std::filesystem::path& file,
                                                                  BackupFileDamage damage);

// damagePayload damages the file that holds part `partIndex` of the resource `resourceIdentifier`
// of `commit`, and gives its path. A resource or part the commit does not describe is ENOENT.
// A pack segment is shared by all of its resources: damaging it touches them all.
[[nodiscard]] std::expected<std::filesystem::path, platform::FileError> damagePayload(
    const writer::BackupWrittenCommit& commit, ByteView resourceIdentifier, BackupFileDamage damage,
    std::size_t partIndex = 0);

// metadataFile gives the path of one metadata file of `commit`: `sectionIndex` picks a
// manifest section; a head or section it does not have is ENOENT.
[[nodiscard]] std::expected<std::filesystem::path, platform::FileError> metadataFile(
    const writer::BackupWrittenCommit& commit, BackupMetadataFile which, std::size_t sectionIndex = 0);

// addStrayFile creates `name` holding `bytes` in `directory`, refusing to replace anything.
[[nodiscard]] std::expected<std::filesystem::path, platform::FileError> addStrayFile(
    const std::filesystem::path& directory, std::string_view name, ByteView bytes);

}  // namespace BackupPackageDamage

}  // namespace galdrine::testsupport
