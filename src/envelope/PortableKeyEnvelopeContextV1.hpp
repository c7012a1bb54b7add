#pragma once
// PortableKeyEnvelopeContextV1 is what the caller knows about an envelope independently
// of the envelope's bytes: the package header, the library domain, and the artifact, key slot
// and generation the envelope must carry. Opening compares the envelope against it, and the
// authenticated data is built from it, so an envelope moved to another package, domain or slot
// does not open.

#include <cstdint>
#include <expected>

#include "envelope/PortableKeyEnvelopeV1Error.hpp"
#include "format/header/BackupFormatHeaderV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::envelope {

class PortableKeyEnvelopeContextV1 {
 public:
  // make checks, in this order: a 16-byte library domain identifier
  // (invalidLibraryDomainIdentifier), a 16-byte artifact identifier (invalidArtifactIdentifier),
  // a 16-byte key slot identifier (invalidKeySlotIdentifier). Any generation is accepted.
  [[nodiscard]] static std::expected<PortableKeyEnvelopeContextV1, PortableKeyEnvelopeV1Error> make(
      format::BackupFormatHeaderV1 header, ByteView libraryDomainIdentifier, ByteView artifactIdentifier,
      ByteView keySlotIdentifier, std::uint64_t generation);

  [[nodiscard]] const format::BackupFormatHeaderV1& header() const { return header_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] const Bytes& artifactIdentifier() const { return artifactIdentifier_; }
  [[nodiscard]] const Bytes& keySlotIdentifier() const { return keySlotIdentifier_; }
  [[nodiscard]] std::uint64_t generation() const { return generation_; }

  friend bool operator==(const PortableKeyEnvelopeContextV1&, const PortableKeyEnvelopeContextV1&) = default;

 private:
  PortableKeyEnvelopeContextV1(format::BackupFormatHeaderV1 header, Bytes libraryDomainIdentifier,
                               Bytes artifactIdentifier, Bytes keySlotIdentifier, std::uint64_t generation)
      : header_(std::move(header)),
        libraryDomainIdentifier_(std::move(libraryDomainIdentifier)),
        artifactIdentifier_(std::move(artifactIdentifier)),
        keySlotIdentifier_(std::move(keySlotIdentifier)),
        generation_(generation) {}

  format::BackupFormatHeaderV1 header_;
  Bytes libraryDomainIdentifier_;
  Bytes artifactIdentifier_;
  Bytes keySlotIdentifier_;
  std::uint64_t generation_;
};

}  // namespace galdrine::envelope
