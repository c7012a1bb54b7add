#pragma once
// GraphFixturePayloads recovers the media of a graph fixture as a real recovery would: every
// resource record's payload key is unwrapped under the fixture's master key, and each of its
// parts is opened from the fixture's pack segment or standalone chunk, written as package
// files into a scratch directory that is removed on every way out.

#include <expected>
#include <span>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerificationError.hpp"

// RecoveredPayload is one resource's identifier and its whole plaintext.
struct RecoveredPayload {
  GaldrineBackupIdentifierV1 identifier{};
  Bytes plaintext;
};

// GraphFixturePayloadFiles are the two payload files a graph fixture carries.
struct GraphFixturePayloadFiles {
  Bytes packIdentifier;
  Bytes segment;
  Bytes standaloneIdentifier;
  Bytes frame;
};

namespace GraphFixturePayloads {

// recoverPayloads gives each resource of `records`, in record order, with its plaintext joined
// from its parts. A resource whose key is missing or does not unwrap, a part that does not
// open or does not agree with the segment's index, or joined parts of another length or
// digest than the resource's, is invalidFixture. Payload keys are wiped on every way out.
[[nodiscard]] std::expected<std::vector<RecoveredPayload>, GaldrineRecoveryFixtureVerificationError> recoverPayloads(
    std::span<const GaldrineBackupManifestRecordV1> records, const GraphFixturePayloadFiles& files,
    ByteView packageIdentifier, ByteView libraryDomainIdentifier, ByteView bpmk);

// recoveredPayloadDigest is the SHA-256 of the transcript: "Galdrine V1 recovered payload
// fixture", a zero byte, the number of payloads as an unsigned 64-bit big-endian integer, and
// for each payload by ascending identifier its identifier, its plaintext's length as an
// unsigned 64-bit big-endian integer, and the plaintext.
[[nodiscard]] GaldrineSHA256Digest recoveredPayloadDigest(std::vector<RecoveredPayload> payloads);

}  // namespace GraphFixturePayloads
