#pragma once
// BackupFolderHierarchy judges the folders of a manifest together: every parent is a
// folder, no chain of parents comes back to itself, and no chain holds more than 16 folders.

#include <cstddef>
#include <expected>

#include "format/graph/BackupIdentifierV1.hpp"
#include "format/manifest/BackupAlbumFolderRecordV1.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "format/manifest/BackupRecordSet.hpp"

namespace galdrine::format {

using BackupFolderSet = BackupRecordSet<BackupIdentifierV1, BackupAlbumFolderRecordV1>;

namespace BackupFolderHierarchy {

inline constexpr std::size_t maximumChainFolderCount = 16;

// validateFolders walks each folder's chain of parents, in the set's order: a parent that is
// not a folder is missingReference; meeting a folder twice in one walk (a cycle), or a chain of
// more than 16 folders, is invalidRelationship. The depth of every folder found sound is
// remembered, so each folder is walked once and a walk that reaches a known folder adds that
// folder's depth: the verdict is the same in whatever order the folders are visited.
[[nodiscard]] std::expected<void, BackupManifestRecordV1Error> validateFolders(const BackupFolderSet& folders);

}  // namespace BackupFolderHierarchy

}  // namespace galdrine::format
