#include "GaldrineRecoveryTool/UnavailableBackend.hpp"

std::expected<RecoveryToolInspection, RecoveryToolError> UnavailableBackend::inspect(
    const std::filesystem::path&, GaldrineRecoveryToolCredentialFactorV1, ByteView) {
  return std::unexpected(RecoveryToolError::operationFailed);
}

std::expected<GaldrineRecoveryExportResultV1, RecoveryToolError> UnavailableBackend::exportSnapshot(
    const std::filesystem::path&, GaldrineRecoveryToolCredentialFactorV1, ByteView, ByteView,
    const std::filesystem::path&) {
  return std::unexpected(RecoveryToolError::operationFailed);
}
