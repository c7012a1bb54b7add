#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeContextV1.hpp"

#include <utility>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"

namespace {

using Error = GaldrinePortableKeyEnvelopeV1Error;

[[nodiscard]] bool isIdentifier(ByteView bytes) {
  return std::cmp_equal(bytes.size(), GaldrineBackupFormatV1::artifactIdentifierByteCount);
}

}  // namespace

std::expected<GaldrinePortableKeyEnvelopeContextV1, Error> GaldrinePortableKeyEnvelopeContextV1::make(
    GaldrineBackupFormatHeaderV1 header, ByteView libraryDomainIdentifier, ByteView artifactIdentifier,
    ByteView keySlotIdentifier, std::uint64_t generation) {
  if (!isIdentifier(libraryDomainIdentifier)) return std::unexpected(Error::invalidLibraryDomainIdentifier());
  if (!isIdentifier(artifactIdentifier)) return std::unexpected(Error::invalidArtifactIdentifier());
  if (!isIdentifier(keySlotIdentifier)) return std::unexpected(Error::invalidKeySlotIdentifier());
  return GaldrinePortableKeyEnvelopeContextV1(std::move(header), Bytes(libraryDomainIdentifier.begin(), libraryDomainIdentifier.end()),
                                              Bytes(artifactIdentifier.begin(), artifactIdentifier.end()),
                                              Bytes(keySlotIdentifier.begin(), keySlotIdentifier.end()), generation);
}
