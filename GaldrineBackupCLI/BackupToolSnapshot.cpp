#include "GaldrineBackupCLI/BackupToolSnapshot.hpp"

#include <algorithm>

#include "GaldrineBackupCLI/BackupSourceIdentities.hpp"
#include "GaldrineBackupCLI/BackupSourceLibrary.hpp"
#include "GaldrineBackupCLI/BackupSourceScan.hpp"
#include "GaldrineBackupCLI/BackupToolWriterFailure.hpp"

namespace BackupToolSnapshot {

std::expected<BackupSource, BackupToolError> scannedSource(const std::filesystem::path& sourceURL) {
  auto source = BackupSourceScan::scan(sourceURL);
  if (!source) {
    return std::unexpected(source.error() == BackupSourceScanError::tooLarge ? BackupToolError::sourceTooLarge
                                                                            : BackupToolError::sourceUnavailable);
  }
  if (source->fileCount() == 0) return std::unexpected(BackupToolError::sourceEmpty);
  return std::move(*source);
}

std::expected<BackupToolCounts, BackupToolError> write(GaldrineBackupPackageWriterV1& writer, const BackupSource& source) {
  const auto identities = BackupSourceIdentities::make(writer.backupPackageMasterKey());
  if (!identities) return std::unexpected(BackupToolError::operationFailed);
  const auto library = BackupSourceLibrary::arrange(source, *identities);
  if (!library) return std::unexpected(BackupToolError::operationFailed);
  const auto written = writer.writeCommit(*library);
  if (!written) return std::unexpected(backupToolError(written.error(), BackupToolStage::committing));
  const auto unchanged = std::ranges::count_if(written->resources, [](const auto& resource) { return resource.payloadReused; });
  return BackupToolCounts{library->items.size(), library->albums.size(), library->folders.size(),
                          source.skippedEntryCount, static_cast<std::uint64_t>(unchanged)};
}

}  // namespace BackupToolSnapshot
