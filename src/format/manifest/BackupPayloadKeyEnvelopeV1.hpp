#pragma once
// BackupPayloadKeyEnvelopeV1 is the plaintext inside a payload key record's frame: the
// map {0: schema, 1: key identifier, 2: scope, 3: bound identifier, 4: the 32 key bytes}, and
// the authenticated data under which it is sealed. The key is thus bound twice: to its
// identifier by the authenticated data, and to its scope and bound identifier inside.

#include <expected>
#include <optional>

#include "format/manifest/BackupManifestRecordV1Error.hpp"
#include "format/manifest/BackupPayloadKeyRecordV1.hpp"
#include "format/manifest/BackupPayloadKeyScopeV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

namespace BackupPayloadKeyEnvelopeV1 {

// authenticatedData gives the encoded authenticated data of the envelope of `keyIdentifier`,
// or nothing when an identifier is not 16 bytes.
[[nodiscard]] std::optional<Bytes> authenticatedData(ByteView packageIdentifier, ByteView libraryDomainIdentifier,
                                                     ByteView keyIdentifier);

// plaintext encodes the envelope of a 32-byte `key` whose identifiers were checked. The key is
// written once, straight into the result, which the caller must wipe; a failure of the codec
// is invalidValue.
[[nodiscard]] std::expected<Bytes, BackupManifestRecordV1Error> plaintext(ByteView key, ByteView keyIdentifier,
                                                                                BackupPayloadKeyScopeV1 scope,
                                                                                ByteView boundIdentifier);

// keyFor reads a decrypted envelope and gives its key, which the caller must wipe. A value that
// is not the envelope map with its schema and field types is malformedRecord; one that names
// another identifier, scope or bound identifier than `record`, or whose key is not 32 bytes,
// is verificationFailed.
[[nodiscard]] std::expected<Bytes, BackupManifestRecordV1Error> keyFor(ByteView plaintext,
                                                                             const BackupPayloadKeyRecordV1& record);

}  // namespace BackupPayloadKeyEnvelopeV1

}  // namespace galdrine::format
