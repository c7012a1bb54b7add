#pragma once
// GaldrinePortableKeyEnvelopeContextV1 is what the caller knows about an envelope independently
// of the envelope's bytes: the package header, the library domain, and the artifact, key slot
// and generation the envelope must carry. Opening compares the envelope against it, and the
// authenticated data is built from it, so an envelope moved to another package, domain or slot
// does not open.

#include <cstdint>
#include <expected>

#include "GaldrineCore/GaldrineBackupFormatHeaderV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1Error.hpp"

class GaldrinePortableKeyEnvelopeContextV1 {
 public:
  // make checks, in this order: a 16-byte library domain identifier
  // (invalidLibraryDomainIdentifier), a 16-byte artifact identifier (invalidArtifactIdentifier),
  // a 16-byte key slot identifier (invalidKeySlotIdentifier). Any generation is accepted.
  [[nodiscard]] static std::expected<GaldrinePortableKeyEnvelopeContextV1, GaldrinePortableKeyEnvelopeV1Error> make(
      GaldrineBackupFormatHeaderV1 header, ByteView libraryDomainIdentifier, ByteView artifactIdentifier,
      ByteView keySlotIdentifier, std::uint64_t generation);

  [[nodiscard]] const GaldrineBackupFormatHeaderV1& header() const { return header_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] const Bytes& artifactIdentifier() const { return artifactIdentifier_; }
  [[nodiscard]] const Bytes& keySlotIdentifier() const { return keySlotIdentifier_; }
  [[nodiscard]] std::uint64_t generation() const { return generation_; }

  friend bool operator==(const GaldrinePortableKeyEnvelopeContextV1&, const GaldrinePortableKeyEnvelopeContextV1&) = default;

 private:
  GaldrinePortableKeyEnvelopeContextV1(GaldrineBackupFormatHeaderV1 header, Bytes libraryDomainIdentifier,
                                       Bytes artifactIdentifier, Bytes keySlotIdentifier, std::uint64_t generation)
      : header_(std::move(header)),
        libraryDomainIdentifier_(std::move(libraryDomainIdentifier)),
        artifactIdentifier_(std::move(artifactIdentifier)),
        keySlotIdentifier_(std::move(keySlotIdentifier)),
        generation_(generation) {}

  GaldrineBackupFormatHeaderV1 header_;
  Bytes libraryDomainIdentifier_;
  Bytes artifactIdentifier_;
  Bytes keySlotIdentifier_;
  std::uint64_t generation_;
};
