#pragma once
// BackupWriterFailure is how the package writer fails: its own case, or the error of
// the layer that refused, passed on unchanged, so that a test or a command can tell a refused
// passphrase from a full disk.

#include <expected>
#include <utility>
#include <variant>

#include "writer/BackupWriterError.hpp"
#include "format/package/BackupPackageV1.hpp"
#include "format/graph/BackupCommitGraphError.hpp"
#include "format/graph/BackupGraphV1Error.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "keys/RecoveryKeyMnemonicV1.hpp"
#include "platform/FileError.hpp"
#include "envelope/BackupKeyEnvelopeFileV1.hpp"
#include "envelope/BackupKeyEnvelopeSetV1Error.hpp"
#include "envelope/PortableKeyEnvelopeV1Error.hpp"

namespace galdrine::writer {

using BackupWriterFailure =
    std::variant<BackupWriterError, format::BackupPackageV1Failure, envelope::PortableKeyEnvelopeV1Error,
                 envelope::BackupKeyEnvelopeSetV1Error, envelope::BackupKeyEnvelopeSetV1Failure,
                 envelope::BackupKeyEnvelopeFileV1Error, envelope::BackupKeyEnvelopeFileV1Failure,
                 format::BackupGraphV1Error, format::BackupManifestRecordV1Error, format::BackupPayloadV1Failure,
                 format::BackupCommitGraphError, keys::RecoveryKeyMnemonicV1Error, platform::FileError>;

// backupWriterFailure wraps any of the alternatives as the unexpected value of a result.
template <typename Error>
[[nodiscard]] std::unexpected<BackupWriterFailure> backupWriterFailure(Error error) {
  return std::unexpected(BackupWriterFailure(std::move(error)));
}

}  // namespace galdrine::writer
