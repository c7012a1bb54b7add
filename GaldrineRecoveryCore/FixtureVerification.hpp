#pragma once
// FixtureVerification verifies one fixture of each kind from the bytes of its file, already
// read within the kind's bound. The public operations of GaldrineRecoveryFixtureVerifier read
// a file and come here; the index pass comes here with the bytes whose digest it just checked,
// so a fixture is read once and verified as it was hashed.

#include <cstdint>
#include <expected>

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerificationError.hpp"

namespace FixtureVerification {

using Count = std::expected<std::int64_t, GaldrineRecoveryFixtureVerificationError>;

[[nodiscard]] Count verifyGolden(ByteView document);
[[nodiscard]] Count verifyKeyEnvelopeSet(ByteView document);
[[nodiscard]] Count verifyPayload(ByteView document);
[[nodiscard]] Count verifyGraph(ByteView document);
// verifyPrototypeHeader gives 0: a draft header proves no production vector.
[[nodiscard]] Count verifyPrototypeHeader(ByteView document);

}  // namespace FixtureVerification
