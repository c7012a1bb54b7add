#include "backuptool/BackupToolSnapshot.hpp"

#include <algorithm>

#include "backuptool/BackupSourceIdentities.hpp"
#include "backuptool/BackupSourceLibrary.hpp"
#include "backuptool/BackupSourceScan.hpp"
#include "backuptool/BackupToolWriterFailure.hpp"

namespace galdrine::backuptool {

namespace BackupToolSnapshot {

std::expected<BackupSource, BackupToolError> scannedSource(const std::filesystem::path& sourcePath) {
  auto source = BackupSourceScan::scan(sourcePath);
  if (!source) {
    return std::unexpected(source.error() == BackupSourceScanError::tooLarge ? BackupToolError::sourceTooLarge
                                                                             : BackupToolError::sourceUnavailable);
  }
  if (source->fileCount() == 0) return std::unexpected(BackupToolError::sourceEmpty);
  return std::move(*source);
}

std::expected<BackupToolCounts, BackupToolError> write(writer::BackupPackageWriter& writer,
                                                       const BackupSource& source) {
  const auto identities = BackupSourceIdentities::make(writer.backupPackageMasterKey());
  if (!identities) return std::unexpected(BackupToolError::operationFailed);
  const auto library = BackupSourceLibrary::arrange(source, *identities);
  if (!library) return std::unexpected(BackupToolError::operationFailed);
  const auto written = writer.writeCommit(*library);
  if (!written) return std::unexpected(backupToolError(written.error(), BackupToolStage::committing));
  const auto unchanged =
      std::ranges::count_if(written->resources, [](const auto& resource) { return resource.payloadReused; });
  return BackupToolCounts{library->items.size(), library->albums.size(), library->folders.size(),
                          source.skippedEntryCount, static_cast<std::uint64_t>(unchanged)};
}

}  // namespace BackupToolSnapshot

}  // namespace galdrine::backuptool
