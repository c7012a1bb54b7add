#pragma once
// PortableKeyEnvelopeReader opens one loose portable envelope that no set holds, with
// everything it must be bound to given by the caller: how fixtures open an envelope. It is the
// set reader's unlock without the set: the header bytes are decoded, the context is built from
// the arguments, and the envelope is opened under it.

#include <cstdint>
#include <expected>
#include <variant>

#include "envelope/PortableKeyEnvelopeV1.hpp"
#include "format/header/BackupFormatHeaderV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::reader {

// Opening fails in decoding `headerData` or in the envelope (its context included), as it came.
using PortableKeyEnvelopeReaderFailure =
    std::variant<format::BackupFormatHeaderV1Failure, envelope::PortableKeyEnvelopeV1Error>;

namespace PortableKeyEnvelopeReader {

// openWithBackupPassphrase and openWithRecoveryKey give the unwrapped 32-byte key, which the
// caller owns and must wipe. In this order: `headerData` decodes as a header; the context of
// `libraryDomainIdentifier`, `artifactIdentifier`, `keySlotIdentifier` and `generation` is
// valid; the envelope opens under it. A wrong credential is the envelope's authenticationFailed.
[[nodiscard]] std::expected<Bytes, PortableKeyEnvelopeReaderFailure> openWithBackupPassphrase(
    ByteView envelope, ByteView passphrase, ByteView headerData, ByteView libraryDomainIdentifier,
    ByteView artifactIdentifier, ByteView keySlotIdentifier, std::uint64_t generation);
[[nodiscard]] std::expected<Bytes, PortableKeyEnvelopeReaderFailure> openWithRecoveryKey(
    ByteView envelope, ByteView recoveryKey, ByteView headerData, ByteView libraryDomainIdentifier,
    ByteView artifactIdentifier, ByteView keySlotIdentifier, std::uint64_t generation);

}  // namespace PortableKeyEnvelopeReader

}  // namespace galdrine::reader
