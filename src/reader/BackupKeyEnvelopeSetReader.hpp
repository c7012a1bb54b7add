#pragma once
// BackupKeyEnvelopeSetReader is a package bound to its key envelope set: where every
// recovery road starts. It holds the opened package, the decoded set and the SHA-256 of the
// envelope file's bytes as they were read, and no key: an unlocked bpmk goes to the caller,
// who owns it and wipes it. No reader exists whose set names another package than its header.
//
// The reader does not translate what fails beneath it; each failure is passed on as the layer
// under it gave it, and translation belongs to the reader's callers.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <variant>

#include "envelope/BackupKeyEnvelopeFileV1.hpp"
#include "envelope/BackupKeyEnvelopeSetV1.hpp"
#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "envelope/PortableKeyFactorV1.hpp"
#include "format/header/BackupFormatHeaderV1.hpp"
#include "format/package/BackupPackageV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::reader {

// BackupKeyEnvelopeSetReaderError is the reader's own refusal, apart from what the layers under
// it report. Cases stand in contract order; only factorUnavailable carries a payload, the
// factor that has no active envelope.
struct BackupKeyEnvelopeSetReaderError {
  enum class Code : std::uint8_t {
    factorUnavailable,  // payload: the factor asked for
    packageBindingMismatch,
  };

  Code code;
  std::optional<envelope::PortableKeyFactorV1> factor = std::nullopt;  // only for factorUnavailable

  static constexpr BackupKeyEnvelopeSetReaderError factorUnavailable(envelope::PortableKeyFactorV1 factor) {
    return {Code::factorUnavailable, factor};
  }
  static constexpr BackupKeyEnvelopeSetReaderError packageBindingMismatch() { return {Code::packageBindingMismatch}; }

  friend constexpr bool operator==(const BackupKeyEnvelopeSetReaderError&,
                                   const BackupKeyEnvelopeSetReaderError&) = default;
};

// Opening fails in the reader's own binding check, in the package's open, or in the envelope
// file's read, each as it came.
using BackupKeyEnvelopeSetReaderOpenFailure =
    std::variant<BackupKeyEnvelopeSetReaderError, format::BackupPackageV1Failure,
                 envelope::BackupKeyEnvelopeFileV1Failure>;

// Unlocking fails in the reader's own factor check, in decoding the stored header again, or in
// the envelope (a wrong credential reads as its authenticationFailed), each as it came.
using BackupKeyEnvelopeSetReaderUnlockFailure =
    std::variant<BackupKeyEnvelopeSetReaderError, format::BackupFormatHeaderV1Failure,
                 envelope::PortableKeyEnvelopeV1Error>;

class BackupKeyEnvelopeSetReader {
 public:
  // open opens the package at `packagePath`, reads its key envelope file, and binds the two, in
  // this order: the package's open; the file's read; the set's package identifier equal to the
  // header's (packageBindingMismatch). No key is derived, so a foreign file costs nothing.
  [[nodiscard]] static std::expected<BackupKeyEnvelopeSetReader, BackupKeyEnvelopeSetReaderOpenFailure> open(
      const std::filesystem::path& packagePath);

  // make builds a reader from parts the caller has already read: the package, its decoded set
  // and the SHA-256 of the file bytes the set was decoded from. A set that names another
  // package than the header is packageBindingMismatch.
  [[nodiscard]] static std::expected<BackupKeyEnvelopeSetReader, BackupKeyEnvelopeSetReaderError> make(
      format::BackupPackageV1 package, envelope::BackupKeyEnvelopeSetV1 envelopeSet, Bytes envelopeSetSHA256);

  // openWithBackupPassphrase and openWithRecoveryKey give the 32-byte bpmk, which the caller
  // owns and must wipe. In this order: the set's active entry for the factor
  // (factorUnavailable of it); the stored header bytes decoded again (the header's failure);
  // the envelope's context from that header, the set's library domain and the entry's
  // artifact, key slot and generation; the envelope opened under it (its failure). The costly
  // derivation runs last, after every structural check passed.
  [[nodiscard]] std::expected<Bytes, BackupKeyEnvelopeSetReaderUnlockFailure> openWithBackupPassphrase(
      ByteView passphrase) const;
  [[nodiscard]] std::expected<Bytes, BackupKeyEnvelopeSetReaderUnlockFailure> openWithRecoveryKey(
      ByteView recoveryKey) const;

  [[nodiscard]] const format::BackupPackageV1& package() const { return package_; }
  [[nodiscard]] const envelope::BackupKeyEnvelopeSetV1& envelopeSet() const { return envelopeSet_; }
  // envelopeSetSHA256 describes the bytes the set was decoded from; the file is never read again.
  [[nodiscard]] const Bytes& envelopeSetSHA256() const { return envelopeSetSHA256_; }

  friend bool operator==(const BackupKeyEnvelopeSetReader&, const BackupKeyEnvelopeSetReader&) = default;

 private:
  BackupKeyEnvelopeSetReader(format::BackupPackageV1 package, envelope::BackupKeyEnvelopeSetV1 envelopeSet,
                             Bytes envelopeSetSHA256)
      : package_(std::move(package)),
        envelopeSet_(std::move(envelopeSet)),
        envelopeSetSHA256_(std::move(envelopeSetSHA256)) {}

  [[nodiscard]] std::expected<Bytes, BackupKeyEnvelopeSetReaderUnlockFailure> unlock(
      envelope::PortableKeyFactorV1 factor, ByteView credential) const;

  format::BackupPackageV1 package_;
  envelope::BackupKeyEnvelopeSetV1 envelopeSet_;
  Bytes envelopeSetSHA256_;
};

}  // namespace galdrine::reader
