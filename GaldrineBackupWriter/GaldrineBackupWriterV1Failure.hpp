#pragma once
// GaldrineBackupWriterV1Failure is how the package writer fails: its own case, or the error of
// the layer that refused, passed on unchanged, so that a test or a command can tell a refused
// passphrase from a full disk.

#include <expected>
#include <utility>
#include <variant>

#include "GaldrineBackupWriter/GaldrineBackupWriterV1Error.hpp"
#include "GaldrineCore/GaldrineBackupPackageV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupCommitGraphV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadV1.hpp"
#include "GaldrineKeyManagement/GaldrineRecoveryKeyMnemonicV1Error.hpp"
#include "GaldrinePlatform/GaldrinePlatformFileError.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupKeyEnvelopeFileV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupKeyEnvelopeSetV1Error.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1Error.hpp"

using GaldrineBackupWriterV1Failure =
    std::variant<GaldrineBackupWriterV1Error, GaldrineBackupPackageV1Failure, GaldrinePortableKeyEnvelopeV1Error,
                 GaldrineBackupKeyEnvelopeSetV1Error, GaldrineBackupKeyEnvelopeSetV1Failure,
                 GaldrineBackupKeyEnvelopeFileV1Error, GaldrineBackupKeyEnvelopeFileV1Failure,
                 GaldrineBackupGraphV1Error, GaldrineBackupManifestRecordV1Error, GaldrineBackupPayloadV1Failure,
                 GaldrineBackupCommitGraphV1Error, GaldrineRecoveryKeyMnemonicV1Error, GaldrinePlatformFileError>;

// galdrineBackupWriterFailure wraps any of the alternatives as the unexpected value of a result.
template <typename Error>
[[nodiscard]] std::unexpected<GaldrineBackupWriterV1Failure> galdrineBackupWriterFailure(Error error) {
  return std::unexpected(GaldrineBackupWriterV1Failure(std::move(error)));
}
