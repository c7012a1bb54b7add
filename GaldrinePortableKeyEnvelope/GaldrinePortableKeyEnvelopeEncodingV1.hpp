#pragma once
// GaldrinePortableKeyEnvelopeEncodingV1 moves an envelope between its metadata and sealed frame
// and its twelve-entry map. It knows the field layout and nothing of keys or credentials.

#include <expected>
#include <optional>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeMetadataV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1Error.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyFactorV1.hpp"

namespace GaldrinePortableKeyEnvelopeEncodingV1 {

struct ReadEnvelope {
  GaldrinePortableKeyEnvelopeMetadataV1 metadata;
  std::optional<Bytes> sealedFrame;  // nothing when key 11 is not a byte string
};

// read reads an envelope with the checks of GaldrinePortableKeyEnvelopeV1::metadata, where an
// `expectedFactor` that differs from a known stored factor is unexpectedFactor, checked right
// after the factor is known. Key 11 is taken as it is, without any check of its content.
[[nodiscard]] std::expected<ReadEnvelope, GaldrinePortableKeyEnvelopeV1Error> read(
    ByteView envelope, std::optional<GaldrinePortableKeyFactorV1> expectedFactor);

// encode writes the twelve-entry map under the envelope's limits; a refusal of the codec is
// malformedEnvelope.
[[nodiscard]] std::expected<Bytes, GaldrinePortableKeyEnvelopeV1Error> encode(
    const GaldrinePortableKeyEnvelopeMetadataV1& metadata, ByteView sealedFrame);

}  // namespace GaldrinePortableKeyEnvelopeEncodingV1
