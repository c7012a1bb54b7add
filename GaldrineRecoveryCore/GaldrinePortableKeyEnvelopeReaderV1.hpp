#pragma once
// GaldrinePortableKeyEnvelopeReaderV1 opens one loose portable envelope that no set holds, with
// everything it must be bound to given by the caller: how fixtures open an envelope. It is the
// set reader's unlock without the set: the header bytes are decoded, the context is built from
// the arguments, and the envelope is opened under it.

#include <cstdint>
#include <expected>
#include <variant>

#include "GaldrineCore/GaldrineBackupFormatHeaderV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1Error.hpp"

// Opening fails in decoding `headerData` or in the envelope (its context included), as it came.
using GaldrinePortableKeyEnvelopeReaderV1Failure =
    std::variant<GaldrineBackupFormatHeaderV1Failure, GaldrinePortableKeyEnvelopeV1Error>;

namespace GaldrinePortableKeyEnvelopeReaderV1 {

// openWithBackupPassphrase and openWithRecoveryKey give the unwrapped 32-byte key, which the
// caller owns and must wipe. In this order: `headerData` decodes as a header; the context of
// `libraryDomainIdentifier`, `artifactIdentifier`, `keySlotIdentifier` and `generation` is
// valid; the envelope opens under it. A wrong credential is the envelope's authenticationFailed.
[[nodiscard]] std::expected<Bytes, GaldrinePortableKeyEnvelopeReaderV1Failure> openWithBackupPassphrase(
    ByteView envelope, ByteView passphrase, ByteView headerData, ByteView libraryDomainIdentifier,
    ByteView artifactIdentifier, ByteView keySlotIdentifier, std::uint64_t generation);
[[nodiscard]] std::expected<Bytes, GaldrinePortableKeyEnvelopeReaderV1Failure> openWithRecoveryKey(
    ByteView envelope, ByteView recoveryKey, ByteView headerData, ByteView libraryDomainIdentifier,
    ByteView artifactIdentifier, ByteView keySlotIdentifier, std::uint64_t generation);

}  // namespace GaldrinePortableKeyEnvelopeReaderV1
