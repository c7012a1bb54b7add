#pragma once
// DirectorySynchronization makes a directory's changes (new, renamed or removed
// entries) durable with fsync, and tells when the volume leaves durability to a file provider.
// Neither operation changes the file system apart from the fsync, and neither leaves a
// descriptor of its own open.

#include <cstdint>
#include <expected>
#include <filesystem>

#include "format/package/DirectorySynchronizationError.hpp"
#include "format/package/DirectorySynchronizationOutcome.hpp"

namespace galdrine::format {

namespace DirectorySynchronization {

// synchronizeAfterMutation(directory): the path must name a real directory, not a symbolic
// link (else invalidDirectory). It is opened without following links and synchronised by
// descriptor; an open refused with an errno of the provider set gives delegatedToFileProvider,
// any other failed open gives systemCallFailed with the errno.
[[nodiscard]] std::expected<DirectorySynchronizationOutcome, DirectorySynchronizationError>
synchronizeAfterMutation(const std::filesystem::path& directory);

// synchronizeAfterMutation(descriptor): the descriptor must be open on a directory (else
// invalidDirectory); it stays open. A failed fsync is judged by outcomeOfFailedCall.
[[nodiscard]] std::expected<DirectorySynchronizationOutcome, DirectorySynchronizationError>
synchronizeAfterMutation(int descriptor);

// providerOwnsDirectoryDurability tells whether an errno is one a provider-managed volume gives
// for a directory it will not synchronise: EACCES, EBADF, EINVAL, ENOSYS, ENOTSUP,
// EOPNOTSUPP and EPERM, with this system's values for those names.
[[nodiscard]] bool providerOwnsDirectoryDurability(std::int32_t errorNumber);

// outcomeOfFailedCall is the decision taken on a failed open or fsync of the directory: an
// errno of the provider set gives delegatedToFileProvider, any other systemCallFailed.
[[nodiscard]] std::expected<DirectorySynchronizationOutcome, DirectorySynchronizationError>
outcomeOfFailedCall(std::int32_t errorNumber);

}  // namespace DirectorySynchronization

}  // namespace galdrine::format
