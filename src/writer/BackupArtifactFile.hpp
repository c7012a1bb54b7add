#pragma once
// BackupArtifactFile puts the writer's metadata files into a package: the frames of
// manifest sections and roots, snapshots, commits and heads, which are written once and never
// replaced.
//
// Every file is staged in the package's tmp directory under "<name>.<lower-case UUID>.partial"
// (created exclusively, so nothing that stands there is ever taken over), synchronised, read
// back and compared, then moved into place and both directories synchronised. Staging outside
// the graph directories means an interrupted write never leaves a foreign name among the
// artifacts a reader lists. On every failure before the move the staged file is removed.

#include <expected>
#include <filesystem>
#include <string>
#include <string_view>

#include "format/package/BackupPackageV1.hpp"
#include "platform/Bytes.hpp"
#include "writer/BackupWriterFailure.hpp"

namespace galdrine::writer {

namespace BackupArtifactFile {

// writeOnce publishes `bytes` as `fileName` in the package directory `directoryName` and gives
// its path. A name that is already taken, by anything, is EEXIST and stays as it was. A failed
// file call gives its errno; a staged file that reads back otherwise is EIO.
[[nodiscard]] std::expected<std::filesystem::path, BackupWriterFailure> writeOnce(
    const format::BackupPackageV1& package, std::string_view directoryName, const std::string& fileName,
    ByteView bytes);

}  // namespace BackupArtifactFile

}  // namespace galdrine::writer
