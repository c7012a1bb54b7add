#pragma once
// BackupKeyEnvelopeSetV1 is the public record a package keeps in key-envelopes.cbor:
// one or two portable envelopes, at most one per factor, each marked active or not. It proves
// nothing by itself; an envelope still has to be opened with a credential. Its entries stand
// in one canonical order, so two writers of the same content write the same bytes and a file
// altered by hand is told apart from an honest one.

#include <cstdint>
#include <expected>
#include <optional>
#include <string_view>
#include <vector>

#include "envelope/BackupKeyEnvelopeEntryV1.hpp"
#include "envelope/BackupKeyEnvelopeSetV1Error.hpp"
#include "envelope/PortableKeyFactorV1.hpp"
#include "format/cbor/CBORError.hpp"
#include "format/cbor/CBORLimits.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::envelope {

class BackupKeyEnvelopeSetV1 {
 public:
  static constexpr std::string_view schemaIdentifier = "com.galdrine.backup.key-envelope-set.v1";
  static constexpr std::uint64_t schemaVersion = 1;
  static constexpr std::int64_t maximumEntryCount = 2;
  static constexpr std::int64_t maximumEntriesPerFactor = 1;
  static constexpr std::int64_t maximumEnvelopeByteCount = 2048;
  static constexpr std::int64_t maximumEncodedByteCount = 8192;

  // The limits under which a set is written and read.
  static constexpr format::CBORLimits encodingLimits{
      .maximumEncodedByteCount = maximumEncodedByteCount,
      .maximumByteStringByteCount = maximumEnvelopeByteCount,
      .maximumTextStringByteCount = 128,
      .maximumContainerItemCount = 8,
      .maximumTotalItemCount = 256,
      .maximumDepth = 4,
  };

  // make takes the entries in any order and stores them in canonical order. In this order: a
  // 16-byte package identifier (invalidPackageIdentifier), a 16-byte library domain identifier
  // (invalidLibraryDomainIdentifier), 1 or 2 entries (invalidEntryCount); then, sorted, for
  // backupPassphrase and then recoveryKey: at most one entry of the factor (invalidEntryCount),
  // exactly one of them active (missingActiveEnvelope or multipleActiveEnvelopes of the
  // factor), one key slot (mixedKeySlots) not used by the other factor (sharedKeySlot),
  // distinct generations (duplicateGeneration); then, in stored order, envelopes of at most
  // 2048 bytes (envelopeTooLarge) with artifact identifiers not seen before
  // (duplicateArtifactIdentifier).
  [[nodiscard]] static std::expected<BackupKeyEnvelopeSetV1, BackupKeyEnvelopeSetV1Error> make(
      ByteView packageIdentifier, ByteView libraryDomainIdentifier, std::vector<BackupKeyEnvelopeEntryV1> entries);

  // decode reads the bytes of encoded back. In this order: one canonical CBOR map within the
  // limits (malformedSet); the keys exactly 0 to 5 (invalidFieldSet); the schema text
  // (invalidFieldType(0), unsupportedSchema), version 1 (invalidFieldType(1),
  // unsupportedVersion), the format identifier (invalidFieldType(2), unsupportedFormat); the
  // entries array (invalidFieldType(5)), each entry a map (malformedSet) of the keys 0 and 1
  // (invalidFieldSet) holding bytes (invalidFieldType(0)) and a boolean (invalidFieldType(1)),
  // made as by the entry's make (its failure unchanged); the two identifiers as bytes
  // (invalidFieldType(3), invalidFieldType(4)); make; and last, the re-encoding must equal the
  // input byte for byte (nonCanonicalEncoding), which refuses entries out of canonical order.
  // Nothing of a refused input is kept.
  [[nodiscard]] static std::expected<BackupKeyEnvelopeSetV1, BackupKeyEnvelopeSetV1Failure> decode(ByteView bytes);

  // encoded gives the map {0: schema, 1: 1, 2: format identifier, 3: package, 4: library
  // domain, 5: [{0: envelope, 1: isActive}, ...]}; a codec failure is passed on.
  [[nodiscard]] std::expected<Bytes, format::CBORError> encoded() const;

  // entryPrecedes is the canonical order: factor text, then generation, then artifact
  // identifier in the system's byte order.
  [[nodiscard]] static bool entryPrecedes(const BackupKeyEnvelopeEntryV1& left, const BackupKeyEnvelopeEntryV1& right);

  [[nodiscard]] const Bytes& packageIdentifier() const { return packageIdentifier_; }
  [[nodiscard]] const Bytes& libraryDomainIdentifier() const { return libraryDomainIdentifier_; }
  [[nodiscard]] const std::vector<BackupKeyEnvelopeEntryV1>& entries() const { return entries_; }

  // activeEntries lists the active entries in stored order.
  [[nodiscard]] std::vector<BackupKeyEnvelopeEntryV1> activeEntries() const;
  // activeEntry gives the first stored active entry of `factor`, or nothing.
  [[nodiscard]] std::optional<BackupKeyEnvelopeEntryV1> activeEntry(PortableKeyFactorV1 factor) const;

  friend bool operator==(const BackupKeyEnvelopeSetV1&, const BackupKeyEnvelopeSetV1&) = default;

 private:
  BackupKeyEnvelopeSetV1(Bytes packageIdentifier, Bytes libraryDomainIdentifier,
                         std::vector<BackupKeyEnvelopeEntryV1> entries)
      : packageIdentifier_(std::move(packageIdentifier)),
        libraryDomainIdentifier_(std::move(libraryDomainIdentifier)),
        entries_(std::move(entries)) {}

  Bytes packageIdentifier_;
  Bytes libraryDomainIdentifier_;
  std::vector<BackupKeyEnvelopeEntryV1> entries_;
};

}  // namespace galdrine::envelope
