// Prototype header fixtures: the header of the earlier draft format, which must still decode
// and be recognised as the draft's one version.

#include "GaldrineCore/GaldrinePrototypeFormatHeader.hpp"
#include "GaldrineRecoveryCore/FixtureVerification.hpp"
#include "GaldrineRecoveryCore/GaldrinePrototypeHeaderValidator.hpp"

namespace FixtureVerification {

Count verifyPrototypeHeader(ByteView document) {
  const auto header = GaldrinePrototypeFormatHeader::decodeJSON(GaldrineByteText::text(document));
  if (!header || !GaldrinePrototypeHeaderValidator::validate(*header))
    return std::unexpected(GaldrineRecoveryFixtureVerificationError::invalidFixture);
  return 0;
}

}  // namespace FixtureVerification
