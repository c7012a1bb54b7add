#pragma once
// GaldrineBackupPayloadKeyEnvelopeV1 is the plaintext inside a payload key record's frame: the
// map {0: schema, 1: key identifier, 2: scope, 3: bound identifier, 4: the 32 key bytes}, and
// the authenticated data under which it is sealed. The key is thus bound twice: to its
// identifier by the authenticated data, and to its scope and bound identifier inside.

#include <expected>
#include <optional>

#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadKeyRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupPayloadKeyScopeV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

namespace GaldrineBackupPayloadKeyEnvelopeV1 {

// authenticatedData gives the encoded authenticated data of the envelope of `keyIdentifier`,
// or nothing when an identifier is not 16 bytes.
[[nodiscard]] std::optional<Bytes> authenticatedData(ByteView packageIdentifier, ByteView libraryDomainIdentifier,
                                                     ByteView keyIdentifier);

// plaintext encodes the envelope of a 32-byte `key` whose identifiers were checked. The key is
// written once, straight into the result, which the caller must wipe; a failure of the codec
// is invalidValue.
[[nodiscard]] std::expected<Bytes, GaldrineBackupManifestRecordV1Error> plaintext(ByteView key, ByteView keyIdentifier,
                                                                                GaldrineBackupPayloadKeyScopeV1 scope,
                                                                                ByteView boundIdentifier);

// keyFor reads a decrypted envelope and gives its key, which the caller must wipe. A value that
// is not the envelope map with its schema and field types is malformedRecord; one that names
// another identifier, scope or bound identifier than `record`, or whose key is not 32 bytes,
// is verificationFailed.
[[nodiscard]] std::expected<Bytes, GaldrineBackupManifestRecordV1Error> keyFor(ByteView plaintext,
                                                                             const GaldrineBackupPayloadKeyRecordV1& record);

}  // namespace GaldrineBackupPayloadKeyEnvelopeV1
