#pragma once
// DirectorySynchronization makes a directory's changes (new, renamed or removed
// entries) durable with fsync, and tells when the volume leaves durability to a file provider.
// Neither operation changes the file system apart from the fsync, and neither leaves a
// descriptor of its own open.

#include <cstdint>
#include <expected>
#include <filesystem>

namespace galdrine::format {

// DirectorySynchronizationOutcome is how a directory synchronisation succeeded.
enum class DirectorySynchronizationOutcome : std::uint8_t {
  synchronized,             // the directory's entries reached stable storage
  delegatedToFileProvider,  // the volume refused in the way a provider-managed location does
};

// DirectorySynchronizationError is why a directory could not be made durable. Cases
// stand in the order of the synchronisation's contract.
struct DirectorySynchronizationError {
  enum class Code : std::uint8_t {
    systemCallFailed,  // payload: the errno of the failed open or fsync
    invalidDirectory,
  };

  Code code;
  std::int32_t errorNumber = 0;  // zero for invalidDirectory

  static constexpr DirectorySynchronizationError systemCallFailed(std::int32_t errorNumber) {
    return {Code::systemCallFailed, errorNumber};
  }
  static constexpr DirectorySynchronizationError invalidDirectory() { return {Code::invalidDirectory}; }

  friend constexpr bool operator==(const DirectorySynchronizationError&,
                                   const DirectorySynchronizationError&) = default;
};

namespace DirectorySynchronization {

// synchronizeAfterMutation(directory): the path must name a real directory, not a symbolic
// link (else invalidDirectory). It is opened without following links and synchronised by
// descriptor; an open refused with an errno of the provider set gives delegatedToFileProvider,
// any other failed open gives systemCallFailed with the errno.
[[nodiscard]] std::expected<DirectorySynchronizationOutcome, DirectorySynchronizationError> synchronizeAfterMutation(
    const std::filesystem::path& directory);

// synchronizeAfterMutation(descriptor): the descriptor must be open on a directory (else
// invalidDirectory); it stays open. A failed fsync is judged by outcomeOfFailedCall.
[[nodiscard]] std::expected<DirectorySynchronizationOutcome, DirectorySynchronizationError> synchronizeAfterMutation(
    int descriptor);

// providerOwnsDirectoryDurability tells whether an errno is one a provider-managed volume gives
// for a directory it will not synchronise: EACCES, EBADF, EINVAL, ENOSYS, ENOTSUP,
// EOPNOTSUPP and EPERM, with this system's values for those names.
[[nodiscard]] bool providerOwnsDirectoryDurability(std::int32_t errorNumber);

// outcomeOfFailedCall is the decision taken on a failed open or fsync of the directory: an
// errno of the provider set gives delegatedToFileProvider, any other systemCallFailed.
[[nodiscard]] std::expected<DirectorySynchronizationOutcome, DirectorySynchronizationError> outcomeOfFailedCall(
    std::int32_t errorNumber);

}  // namespace DirectorySynchronization

}  // namespace galdrine::format
