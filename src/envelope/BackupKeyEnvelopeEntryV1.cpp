#include "envelope/BackupKeyEnvelopeEntryV1.hpp"

#include <utility>

#include "envelope/BackupKeyEnvelopeSetV1.hpp"
#include "envelope/PortableKeyEnvelopeV1.hpp"

namespace galdrine::envelope {

std::expected<BackupKeyEnvelopeEntryV1, BackupKeyEnvelopeSetV1Failure> BackupKeyEnvelopeEntryV1::make(ByteView envelope,
                                                                                                      bool isActive) {
  if (envelope.empty() || std::cmp_greater(envelope.size(), BackupKeyEnvelopeSetV1::maximumEnvelopeByteCount))
    return std::unexpected(BackupKeyEnvelopeSetV1Error::envelopeTooLarge());
  auto metadata = PortableKeyEnvelopeV1::metadata(envelope);
  if (!metadata) return std::unexpected(metadata.error());
  return BackupKeyEnvelopeEntryV1(Bytes(envelope.begin(), envelope.end()), isActive, std::move(*metadata));
}

}  // namespace galdrine::envelope
