#include "GaldrineRecoveryCore/GaldrinePortableKeyEnvelopeReaderV1.hpp"

#include <utility>

#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeContextV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1.hpp"
#include "GaldrineRecoveryCore/GaldrineBackupHeaderValidator.hpp"

namespace {

using Failure = GaldrinePortableKeyEnvelopeReaderV1Failure;
using Context = GaldrinePortableKeyEnvelopeContextV1;

[[nodiscard]] std::expected<Context, Failure> contextOf(ByteView headerData, ByteView libraryDomainIdentifier,
                                                        ByteView artifactIdentifier, ByteView keySlotIdentifier,
                                                        std::uint64_t generation) {
  auto header = GaldrineBackupHeaderValidator::validate(headerData);
  if (!header) return std::unexpected(Failure(header.error()));
  auto context = Context::make(std::move(*header), libraryDomainIdentifier, artifactIdentifier, keySlotIdentifier, generation);
  if (!context) return std::unexpected(Failure(context.error()));
  return std::move(*context);
}

[[nodiscard]] std::expected<Bytes, Failure> passedOn(std::expected<Bytes, GaldrinePortableKeyEnvelopeV1Error>&& key) {
  if (!key) return std::unexpected(Failure(key.error()));
  return std::move(*key);
}

}  // namespace

namespace GaldrinePortableKeyEnvelopeReaderV1 {

std::expected<Bytes, Failure> openWithBackupPassphrase(ByteView envelope, ByteView passphrase, ByteView headerData,
                                                       ByteView libraryDomainIdentifier, ByteView artifactIdentifier,
                                                       ByteView keySlotIdentifier, std::uint64_t generation) {
  const auto context = contextOf(headerData, libraryDomainIdentifier, artifactIdentifier, keySlotIdentifier, generation);
  if (!context) return std::unexpected(context.error());
  return passedOn(GaldrinePortableKeyEnvelopeV1::openWithBackupPassphrase(envelope, passphrase, *context));
}

std::expected<Bytes, Failure> openWithRecoveryKey(ByteView envelope, ByteView recoveryKey, ByteView headerData,
                                                  ByteView libraryDomainIdentifier, ByteView artifactIdentifier,
                                                  ByteView keySlotIdentifier, std::uint64_t generation) {
  const auto context = contextOf(headerData, libraryDomainIdentifier, artifactIdentifier, keySlotIdentifier, generation);
  if (!context) return std::unexpected(context.error());
  return passedOn(GaldrinePortableKeyEnvelopeV1::openWithRecoveryKey(envelope, recoveryKey, *context));
}

}  // namespace GaldrinePortableKeyEnvelopeReaderV1
