#pragma once
// GaldrineBackupKeyEnvelopeEntryV1 is one envelope of a key envelope set, with its active mark.
// Its metadata is read out of the envelope when the entry is made and is never stored apart,
// so an entry cannot claim a factor, slot or generation its envelope does not carry.

#include <expected>
#include <variant>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupKeyEnvelopeSetV1Error.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeMetadataV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1Error.hpp"

// Making an entry or decoding a set fails with the set's own case, or with the envelope's
// error as reading the envelope gave it.
using GaldrineBackupKeyEnvelopeSetV1Failure = std::variant<GaldrineBackupKeyEnvelopeSetV1Error, GaldrinePortableKeyEnvelopeV1Error>;

class GaldrineBackupKeyEnvelopeEntryV1 {
 public:
  // make refuses an empty envelope or one over 2048 bytes (envelopeTooLarge), then reads its
  // metadata expecting no particular factor; a failure of that reading is passed on unchanged.
  [[nodiscard]] static std::expected<GaldrineBackupKeyEnvelopeEntryV1, GaldrineBackupKeyEnvelopeSetV1Failure> make(
      ByteView envelope, bool isActive);

  [[nodiscard]] const Bytes& envelope() const { return envelope_; }
  [[nodiscard]] bool isActive() const { return isActive_; }
  [[nodiscard]] const GaldrinePortableKeyEnvelopeMetadataV1& metadata() const { return metadata_; }

  friend bool operator==(const GaldrineBackupKeyEnvelopeEntryV1&, const GaldrineBackupKeyEnvelopeEntryV1&) = default;

 private:
  GaldrineBackupKeyEnvelopeEntryV1(Bytes envelope, bool isActive, GaldrinePortableKeyEnvelopeMetadataV1 metadata)
      : envelope_(std::move(envelope)), isActive_(isActive), metadata_(std::move(metadata)) {}

  Bytes envelope_;
  bool isActive_;
  GaldrinePortableKeyEnvelopeMetadataV1 metadata_;
};
