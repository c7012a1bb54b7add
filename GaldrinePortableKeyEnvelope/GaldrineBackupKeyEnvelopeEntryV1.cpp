#include "GaldrinePortableKeyEnvelope/GaldrineBackupKeyEnvelopeEntryV1.hpp"

#include <utility>

#include "GaldrinePortableKeyEnvelope/GaldrineBackupKeyEnvelopeSetV1.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrinePortableKeyEnvelopeV1.hpp"

std::expected<GaldrineBackupKeyEnvelopeEntryV1, GaldrineBackupKeyEnvelopeSetV1Failure> GaldrineBackupKeyEnvelopeEntryV1::make(
    ByteView envelope, bool isActive) {
  if (envelope.empty() || std::cmp_greater(envelope.size(), GaldrineBackupKeyEnvelopeSetV1::maximumEnvelopeByteCount))
    return std::unexpected(GaldrineBackupKeyEnvelopeSetV1Error::envelopeTooLarge());
  auto metadata = GaldrinePortableKeyEnvelopeV1::metadata(envelope);
  if (!metadata) return std::unexpected(metadata.error());
  return GaldrineBackupKeyEnvelopeEntryV1(Bytes(envelope.begin(), envelope.end()), isActive, std::move(*metadata));
}
