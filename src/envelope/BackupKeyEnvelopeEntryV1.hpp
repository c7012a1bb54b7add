#pragma once
// BackupKeyEnvelopeEntryV1 is one envelope of a key envelope set, with its active mark.
// Its metadata is read out of the envelope when the entry is made and is never stored apart,
// so an entry cannot claim a factor, slot or generation its envelope does not carry.

#include <expected>
#include <utility>

#include "envelope/BackupKeyEnvelopeSetV1Error.hpp"
#include "envelope/PortableKeyEnvelopeMetadataV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::envelope {

class BackupKeyEnvelopeEntryV1 {
 public:
  // make refuses an empty envelope or one over 2048 bytes (envelopeTooLarge), then reads its
  // metadata expecting no particular factor; a failure of that reading is passed on unchanged.
  [[nodiscard]] static std::expected<BackupKeyEnvelopeEntryV1, BackupKeyEnvelopeSetV1Failure> make(ByteView envelope,
                                                                                                   bool isActive);

  [[nodiscard]] const Bytes& envelope() const { return envelope_; }
  [[nodiscard]] bool isActive() const { return isActive_; }
  [[nodiscard]] const PortableKeyEnvelopeMetadataV1& metadata() const { return metadata_; }

  friend bool operator==(const BackupKeyEnvelopeEntryV1&, const BackupKeyEnvelopeEntryV1&) = default;

 private:
  BackupKeyEnvelopeEntryV1(Bytes envelope, bool isActive, PortableKeyEnvelopeMetadataV1 metadata)
      : envelope_(std::move(envelope)), isActive_(isActive), metadata_(std::move(metadata)) {}

  Bytes envelope_;
  bool isActive_;
  PortableKeyEnvelopeMetadataV1 metadata_;
};

}  // namespace galdrine::envelope
