#include "GaldrineRecoveryCore/GaldrineBackupKeyEnvelopeSetReaderV1.hpp"

#include <utility>

#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeContextV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1.hpp"
#include "GaldrineRecoveryCore/GaldrineBackupHeaderValidator.hpp"
#include "GaldrineRecoveryCore/GaldrineBackupPackageReaderV1.hpp"

namespace {

using Reader = GaldrineBackupKeyEnvelopeSetReaderV1;
using Error = GaldrineBackupKeyEnvelopeSetReaderV1Error;
using OpenFailure = GaldrineBackupKeyEnvelopeSetReaderV1OpenFailure;
using UnlockFailure = GaldrineBackupKeyEnvelopeSetReaderV1UnlockFailure;
using Factor = GaldrinePortableKeyFactorV1;

}  // namespace

std::expected<Reader, OpenFailure> Reader::open(const std::filesystem::path& packageURL) {
  auto package = GaldrineBackupPackageReaderV1::open(packageURL);
  if (!package) return std::unexpected(OpenFailure(std::move(package.error())));
  auto fileRead = GaldrineBackupKeyEnvelopeFileV1::read(*package);
  if (!fileRead) return std::unexpected(OpenFailure(std::move(fileRead.error())));
  auto reader = make(std::move(*package), std::move(fileRead->envelopeSet), std::move(fileRead->encodedSHA256));
  if (!reader) return std::unexpected(OpenFailure(reader.error()));
  return std::move(*reader);
}

std::expected<Reader, Error> Reader::make(GaldrineBackupPackageV1 package, GaldrineBackupKeyEnvelopeSetV1 envelopeSet,
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
  auto header = GaldrineBackupHeaderValidator::validate(package_.headerData());
  if (!header) return std::unexpected(UnlockFailure(header.error()));
  const auto context =
      GaldrinePortableKeyEnvelopeContextV1::make(std::move(*header), envelopeSet_.libraryDomainIdentifier(),
                                                 metadata.artifactIdentifier(), metadata.keySlotIdentifier(),
                                                 metadata.generation());
  if (!context) return std::unexpected(UnlockFailure(context.error()));
  auto key = factor == Factor::backupPassphrase
                 ? GaldrinePortableKeyEnvelopeV1::openWithBackupPassphrase(entry->envelope(), credential, *context)
                 : GaldrinePortableKeyEnvelopeV1::openWithRecoveryKey(entry->envelope(), credential, *context);
  if (!key) return std::unexpected(UnlockFailure(key.error()));
  return std::move(*key);
}
