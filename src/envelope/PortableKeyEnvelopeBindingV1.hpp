#pragma once
// PortableKeyEnvelopeBindingV1 builds the bytes that tie an envelope's key to where
// it belongs: the digest of its derivation parameters, the authenticated data of its frame,
// and the HKDF info of the recovery key. Sealer and opener rebuild them from the metadata the
// envelope declares and the caller's context, so an altered field changes them and the frame
// no longer opens.
//
// Each gives nothing only if the codec or a record refuses its input, which a valid metadata
// and context never cause.

#include <optional>

#include "envelope/PortableKeyEnvelopeContextV1.hpp"
#include "envelope/PortableKeyEnvelopeMetadataV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::envelope {

namespace PortableKeyEnvelopeBindingV1 {

// kdfParameterDigest is the SHA-256 of the ten-item array: schema, version, factor,
// derivation, salt, operations limit, memory limit, artifact, key slot, generation.
[[nodiscard]] std::optional<Bytes> kdfParameterDigest(const PortableKeyEnvelopeMetadataV1& metadata);

// authenticatedData is the encoding of the frame's authenticated data: the factor's envelope
// domain, the header's package identifier, the context's library domain, the metadata's
// artifact with the generation as ordinal, and the binding of header digest, key slot and
// KDF parameter digest.
[[nodiscard]] std::optional<Bytes> authenticatedData(const PortableKeyEnvelopeMetadataV1& metadata,
                                                     const PortableKeyEnvelopeContextV1& context);

// recoveryKeyDerivationInfo is the HKDF info of the recovery key: the nine-item array of the
// recovery envelope domain, schema, version, package, library domain, artifact, key slot,
// generation and header digest.
[[nodiscard]] std::optional<Bytes> recoveryKeyDerivationInfo(const PortableKeyEnvelopeMetadataV1& metadata,
                                                             const PortableKeyEnvelopeContextV1& context);

}  // namespace PortableKeyEnvelopeBindingV1

}  // namespace galdrine::envelope
