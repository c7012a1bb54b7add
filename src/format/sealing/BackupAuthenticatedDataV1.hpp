#pragma once
// BackupAuthenticatedDataV1 is the additional authenticated data of every sealed
// object of a package. It says what the object is (its domain) and where it belongs (package,
// library domain, artifact, ordinal, and for the master key envelopes the header, slot and KDF
// parameters), so a ciphertext moved to any other place or role fails authentication instead
// of opening. Writer and reader must produce these bytes identically.
//
// A record exists only in a valid state: make is the only way in, and its fields are read-only.

#include <cstdint>
#include <expected>
#include <optional>

#include "format/cbor/CBORError.hpp"
#include "format/sealing/BackupAADDomainV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

// BackupAuthenticatedDataV1Error is why authenticated data or its envelope binding
// could not be built. Cases stand in the order the checks run.
enum class BackupAuthenticatedDataV1Error : std::uint8_t {
  invalidPackageIdentifier,
  invalidLibraryDomainIdentifier,
  invalidArtifactIdentifier,
  invalidHeaderDigest,
  invalidKeySlotIdentifier,
  invalidKDFParameterDigest,
  envelopeBindingRequired,
  envelopeBindingNotAllowed,
};

class BackupAuthenticatedDataV1 {
 public:
  // EnvelopeBinding ties a master key envelope to the package header, its key slot and its
  // KDF parameters.
  class EnvelopeBinding {
   public:
    // make checks, in this order: a 32-byte header digest, a 16-byte key slot identifier, a
    // 32-byte KDF parameter digest.
    [[nodiscard]] static std::expected<EnvelopeBinding, BackupAuthenticatedDataV1Error> make(
        ByteView headerDigest, ByteView keySlotIdentifier, ByteView kdfParameterDigest);

    [[nodiscard]] const Bytes& headerDigest() const { return headerDigest_; }
    [[nodiscard]] const Bytes& keySlotIdentifier() const { return keySlotIdentifier_; }
    [[nodiscard]] const Bytes& kdfParameterDigest() const { return kdfParameterDigest_; }

    friend bool operator==(const EnvelopeBinding&, const EnvelopeBinding&) = default;

   private:
    EnvelopeBinding(Bytes headerDigest, Bytes keySlotIdentifier, Bytes kdfParameterDigest);

    Bytes headerDigest_;
    Bytes keySlotIdentifier_;
    Bytes kdfParameterDigest_;
  };

  // make checks, in this order: the three identifiers are 16 bytes each (package, library
  // domain, artifact); the two master key envelope domains carry a binding; no other domain
  // does.
  [[nodiscard]] static std::expected<BackupAuthenticatedDataV1, BackupAuthenticatedDataV1Error> make(
      BackupAADDomainV1 domain, ByteView packageIdentifier, ByteView libraryDomainIdentifier,
      ByteView artifactIdentifier, std::uint64_t ordinal, std::optional<EnvelopeBinding> envelopeBinding);

  [[nodiscard]] BackupAADDomainV1 domain() const { return domain_; }
  [[nodiscard]] const Bytes& packageIdentifier() const { return packageIdentifier_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] const Bytes& artifactIdentifier() const { return artifactIdentifier_; }
  [[nodiscard]] std::uint64_t ordinal() const { return ordinal_; }
  [[nodiscard]] const std::optional<EnvelopeBinding>& envelopeBinding() const { return envelopeBinding_; }

  // encoded gives the deterministic CBOR array of 8 items, or 11 with a binding: domain,
  // format identifier, format version, AEAD name, the three identifiers, the ordinal, then the
  // binding's three fields. A codec failure (which valid fields cannot cause) is passed on.
  [[nodiscard]] std::expected<Bytes, CBORError> encoded() const;

  friend bool operator==(const BackupAuthenticatedDataV1&, const BackupAuthenticatedDataV1&) = default;

 private:
  BackupAuthenticatedDataV1(BackupAADDomainV1 domain, Bytes packageIdentifier, Bytes libraryDomainIdentifier,
                            Bytes artifactIdentifier, std::uint64_t ordinal,
                            std::optional<EnvelopeBinding> envelopeBinding);

  BackupAADDomainV1 domain_;
  Bytes packageIdentifier_;
  Bytes libraryDomainIdentifier_;
  Bytes artifactIdentifier_;
  std::uint64_t ordinal_;
  std::optional<EnvelopeBinding> envelopeBinding_;
};

}  // namespace galdrine::format
