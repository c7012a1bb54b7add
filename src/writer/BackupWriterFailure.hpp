#pragma once
// BackupWriterFailure is how the package writer fails: its own case (BackupWriterError), or
// the error of the layer that refused, passed on unchanged, so that a test or a command can
// tell a refused passphrase from a full disk. Every part of the writer shares it.

#include <cstdint>
#include <expected>
#include <utility>
#include <variant>

#include "envelope/BackupKeyEnvelopeFileV1.hpp"
#include "envelope/BackupKeyEnvelopeSetV1Error.hpp"
#include "envelope/PortableKeyEnvelopeV1Error.hpp"
#include "format/graph/BackupCommitGraphError.hpp"
#include "format/graph/BackupGraphV1Error.hpp"
#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "format/package/BackupPackageV1.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "keys/RecoveryKeyMnemonicV1.hpp"
#include "platform/FileError.hpp"

namespace galdrine::writer {

// BackupWriterError is why the writer refused or stopped where the cause is its own and not a
// layer below it. Cases stand in the order in which a write meets them: the request, the
// content, the package as found, and the result.
enum class BackupWriterError : std::uint8_t {
  missingCredential,            // a package is created with neither a passphrase nor a recovery key
  invalidLayout,                // a payload or section limit outside what the format allows
  randomSourceFailed,           // the random source gave a non-zero status
  credentialFactorUnavailable,  // the package has no active envelope of the credential's factor
  unreadablePackage,   // a graph directory cannot be listed, holds a foreign name, or a file in it cannot be read
  unknownCommit,       // a parent, an acknowledged tip or a shared snapshot names no commit of the package
  readOnlyFork,        // the canonical tip is asked for while the package's tips form an unsettled fork
  nothingToHeal,       // a fork is to be healed but the package has fewer than two tips
  invalidLineage,      // the commit would not stand in the package's graph
  contentUnavailable,  // a content file cannot be opened, is no regular file, or a read fails
  contentChanged,      // a content source gave another length than it had when planned
  resourceTooLarge,    // a resource needs more parts than a resource record may hold
  manifestTooLarge,    // the records need more sections than a manifest root may list
  summaryMismatch,     // the written manifest does not sum up to what was planned
};

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
