#include "envelope/PortableKeyEnvelopeContextV1.hpp"

#include <utility>

#include "format/header/BackupFormatV1.hpp"

namespace galdrine::envelope {

namespace {

using Error = PortableKeyEnvelopeV1Error;

[[nodiscard]] bool isIdentifier(ByteView bytes) {
  return std::cmp_equal(bytes.size(), format::BackupFormatV1::artifactIdentifierByteCount);
}

}  // namespace

std::expected<PortableKeyEnvelopeContextV1, Error> PortableKeyEnvelopeContextV1::make(
    format::BackupFormatHeaderV1 header, ByteView libraryDomainIdentifier, ByteView artifactIdentifier,
    ByteView keySlotIdentifier, std::uint64_t generation) {
  if (!isIdentifier(libraryDomainIdentifier)) return std::unexpected(Error::invalidLibraryDomainIdentifier());
  if (!isIdentifier(artifactIdentifier)) return std::unexpected(Error::invalidArtifactIdentifier());
  if (!isIdentifier(keySlotIdentifier)) return std::unexpected(Error::invalidKeySlotIdentifier());
  return PortableKeyEnvelopeContextV1(std::move(header),
                                      Bytes(libraryDomainIdentifier.begin(), libraryDomainIdentifier.end()),
                                      Bytes(artifactIdentifier.begin(), artifactIdentifier.end()),
                                      Bytes(keySlotIdentifier.begin(), keySlotIdentifier.end()), generation);
}

}  // namespace galdrine::envelope
