#pragma once
// PortableKeyEnvelopeEncodingV1 moves an envelope between its metadata and sealed frame
// and its twelve-entry map. It knows the field layout and nothing of keys or credentials.

#include <expected>
#include <optional>

#include "envelope/PortableKeyEnvelopeMetadataV1.hpp"
#include "envelope/PortableKeyEnvelopeV1Error.hpp"
#include "envelope/PortableKeyFactorV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::envelope {

namespace PortableKeyEnvelopeEncodingV1 {

struct ReadEnvelope {
  PortableKeyEnvelopeMetadataV1 metadata;
  std::optional<Bytes> sealedFrame;  // nothing when key 11 is not a byte string
};

// read reads an envelope with the checks of PortableKeyEnvelopeV1::metadata, where an
// `expectedFactor` that differs from a known stored factor is unexpectedFactor, checked right
// after the factor is known. Key 11 is taken as it is, without any check of its content.
[[nodiscard]] std::expected<ReadEnvelope, PortableKeyEnvelopeV1Error> read(
    ByteView envelope, std::optional<PortableKeyFactorV1> expectedFactor);

// encode writes the twelve-entry map under the envelope's limits; a refusal of the codec is
// malformedEnvelope.
[[nodiscard]] std::expected<Bytes, PortableKeyEnvelopeV1Error> encode(const PortableKeyEnvelopeMetadataV1& metadata,
                                                                      ByteView sealedFrame);

}  // namespace PortableKeyEnvelopeEncodingV1

}  // namespace galdrine::envelope
