#include "reader/BackupKeyEnvelopeSetReader.hpp"

#include <utility>

#include "envelope/PortableKeyEnvelopeContextV1.hpp"
#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "reader/BackupHeaderValidator.hpp"
#include "reader/BackupPackageReader.hpp"

namespace galdrine::reader {

namespace {

using Reader = BackupKeyEnvelopeSetReader;
using Error = BackupKeyEnvelopeSetReaderError;
using OpenFailure = BackupKeyEnvelopeSetReaderOpenFailure;
using UnlockFailure = BackupKeyEnvelopeSetReaderUnlockFailure;
using Factor = envelope::PortableKeyFactorV1;

}  // namespace

std::expected<Reader, OpenFailure> Reader::open(const std::filesystem::path& packagePath) {
  auto package = BackupPackageReader::open(packagePath);
  if (!package) return std::unexpected(OpenFailure(std::move(package.error())));
  auto fileRead = envelope::BackupKeyEnvelopeFileV1::read(*package);
  if (!fileRead) return std::unexpected(OpenFailure(std::move(fileRead.error())));
  auto reader = make(std::move(*package), std::move(fileRead->envelopeSet), std::move(fileRead->encodedSHA256));
  if (!reader) return std::unexpected(OpenFailure(reader.error()));
  return std::move(*reader);
}

std::expected<Reader, Error> Reader::make(format::BackupPackageV1 package, envelope::BackupKeyEnvelopeSetV1 envelopeSet,
                                          Bytes envelopeSetSHA256) {
  if (envelopeSet.packageIdentifier() != package.header().packageIdentifier()) {
    return std::unexpected(Error::packageBindingMismatch());
  }
  return Reader(std::move(package), std::move(envelopeSet), std::move(envelopeSetSHA256));
}

std::expected<Bytes, UnlockFailure> Reader::openWithBackupPassphrase(ByteView passphrase) const {
  return unlock(Factor::backupPassphrase, passphrase);
}

std::expected<Bytes, UnlockFailure> Reader::openWithRecoveryKey(ByteView recoveryKey) const {
  return unlock(Factor::recoveryKey, recoveryKey);
}

std::expected<Bytes, UnlockFailure> Reader::unlock(Factor factor, ByteView credential) const {
  const auto entry = envelopeSet_.activeEntry(factor);
  if (!entry) return std::unexpected(UnlockFailure(Error::factorUnavailable(factor)));
  const auto& metadata = entry->metadata();
  // The stored bytes, not the header held beside them, are what the envelope was bound to.
  auto header = BackupHeaderValidator::validate(package_.headerData());
  if (!header) return std::unexpected(UnlockFailure(header.error()));
  const auto context = envelope::PortableKeyEnvelopeContextV1::make(
      std::move(*header), envelopeSet_.libraryDomainIdentifier(), metadata.artifactIdentifier(),
      metadata.keySlotIdentifier(), metadata.generation());
  if (!context) return std::unexpected(UnlockFailure(context.error()));
  auto key = factor == Factor::backupPassphrase
                 ? envelope::PortableKeyEnvelopeV1::openWithBackupPassphrase(entry->envelope(), credential, *context)
                 : envelope::PortableKeyEnvelopeV1::openWithRecoveryKey(entry->envelope(), credential, *context);
  if (!key) return std::unexpected(UnlockFailure(key.error()));
  return std::move(*key);
}

}  // namespace galdrine::reader
