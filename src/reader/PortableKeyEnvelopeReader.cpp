#include "reader/PortableKeyEnvelopeReader.hpp"

#include <utility>

#include "envelope/PortableKeyEnvelopeContextV1.hpp"
#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "reader/BackupHeaderValidator.hpp"

namespace galdrine::reader {

namespace {

using Failure = PortableKeyEnvelopeReaderFailure;
using Context = envelope::PortableKeyEnvelopeContextV1;

[[nodiscard]] std::expected<Context, Failure> contextOf(ByteView headerData, ByteView libraryDomainIdentifier,
                                                        ByteView artifactIdentifier, ByteView keySlotIdentifier,
                                                        std::uint64_t generation) {
  auto header = BackupHeaderValidator::validate(headerData);
  if (!header) return std::unexpected(Failure(header.error()));
  auto context =
      Context::make(std::move(*header), libraryDomainIdentifier, artifactIdentifier, keySlotIdentifier, generation);
  if (!context) return std::unexpected(Failure(context.error()));
  return std::move(*context);
}

[[nodiscard]] std::expected<Bytes, Failure> passedOn(std::expected<Bytes, envelope::PortableKeyEnvelopeV1Error>&& key) {
  if (!key) return std::unexpected(Failure(key.error()));
  return std::move(*key);
}

}  // namespace

namespace PortableKeyEnvelopeReader {

std::expected<Bytes, Failure> openWithBackupPassphrase(ByteView envelope, ByteView passphrase, ByteView headerData,
                                                       ByteView libraryDomainIdentifier, ByteView artifactIdentifier,
                                                       ByteView keySlotIdentifier, std::uint64_t generation) {
  const auto context =
      contextOf(headerData, libraryDomainIdentifier, artifactIdentifier, keySlotIdentifier, generation);
  if (!context) return std::unexpected(context.error());
  return passedOn(envelope::PortableKeyEnvelopeV1::openWithBackupPassphrase(envelope, passphrase, *context));
}

std::expected<Bytes, Failure> openWithRecoveryKey(ByteView envelope, ByteView recoveryKey, ByteView headerData,
                                                  ByteView libraryDomainIdentifier, ByteView artifactIdentifier,
                                                  ByteView keySlotIdentifier, std::uint64_t generation) {
  const auto context =
      contextOf(headerData, libraryDomainIdentifier, artifactIdentifier, keySlotIdentifier, generation);
  if (!context) return std::unexpected(context.error());
  return passedOn(envelope::PortableKeyEnvelopeV1::openWithRecoveryKey(envelope, recoveryKey, *context));
}

}  // namespace PortableKeyEnvelopeReader

}  // namespace galdrine::reader
