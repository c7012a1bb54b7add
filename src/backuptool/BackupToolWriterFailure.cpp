#include "backuptool/BackupToolWriterFailure.hpp"

#include <type_traits>
#include <utility>

namespace galdrine::backuptool {

namespace {

using Stage = BackupToolStage;
using WriterError = writer::BackupWriterError;
using EnvelopeCode = envelope::PortableKeyEnvelopeV1Error::Code;

BackupToolError writerError(WriterError error) {
  switch (error) {
    case WriterError::missingCredential:
    case WriterError::invalidLayout:
    case WriterError::randomSourceFailed:
    case WriterError::nothingToHeal:
    case WriterError::summaryMismatch:
      return BackupToolError::operationFailed;
    case WriterError::credentialFactorUnavailable:
      return BackupToolError::unlockFailed;
    case WriterError::unreadablePackage:
    case WriterError::unknownCommit:
    case WriterError::invalidLineage:
      return BackupToolError::invalidPackage;
    case WriterError::readOnlyFork:
      return BackupToolError::packageForked;
    case WriterError::contentUnavailable:
    case WriterError::contentChanged:
      return BackupToolError::sourceChanged;
    case WriterError::resourceTooLarge:
    case WriterError::manifestTooLarge:
      return BackupToolError::sourceTooLarge;
  }
  std::unreachable();
}

// A wrong credential and a tampered envelope read alike, as the recovery tool reads them.
BackupToolError envelopeError(const envelope::PortableKeyEnvelopeV1Error& error, Stage stage) {
  if (error.code == EnvelopeCode::authenticationFailed) return BackupToolError::unlockFailed;
  if (error.code == EnvelopeCode::invalidCredential) return BackupToolError::passphraseTooWeak;
  return stage == Stage::opening ? BackupToolError::invalidPackage : BackupToolError::operationFailed;
}

// What the package holds decides when it is opened; while writing, the same kinds of failure
// come from writing files.
BackupToolError storedStateError(Stage stage) {
  return stage == Stage::opening ? BackupToolError::invalidPackage : BackupToolError::outputWriteFailed;
}

}  // namespace

BackupToolError backupToolError(const writer::BackupWriterFailure& failure, BackupToolStage stage) {
  return std::visit(
      [&](const auto& lower) {
        using Lower = std::decay_t<decltype(lower)>;
        if constexpr (std::is_same_v<Lower, WriterError>) {
          return writerError(lower);
        } else if constexpr (std::is_same_v<Lower, envelope::PortableKeyEnvelopeV1Error>) {
          return envelopeError(lower, stage);
        } else if constexpr (std::is_same_v<Lower, format::BackupGraphV1Error> ||
                             std::is_same_v<Lower, format::BackupCommitGraphError>) {
          return BackupToolError::invalidPackage;  // the graph the package holds does not stand
        } else if constexpr (std::is_same_v<Lower, format::BackupManifestRecordV1Error> ||
                             std::is_same_v<Lower, keys::RecoveryKeyMnemonicV1Error>) {
          return BackupToolError::operationFailed;  // a library the format refused, or no word list
        } else {
          return storedStateError(stage);  // the package, its envelope file, payload files, file calls
        }
      },
      failure);
}

}  // namespace galdrine::backuptool
