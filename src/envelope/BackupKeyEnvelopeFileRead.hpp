#pragma once
// BackupKeyEnvelopeFileRead is a key envelope set as it stood on disk, with the
// SHA-256 of the file's bytes as read: the token a later replacement of the file must present.

#include "platform/Bytes.hpp"
#include "envelope/BackupKeyEnvelopeSetV1.hpp"

namespace galdrine::envelope {

struct BackupKeyEnvelopeFileRead {
  BackupKeyEnvelopeSetV1 envelopeSet;
  Bytes encodedSHA256;  // 32 bytes

  friend bool operator==(const BackupKeyEnvelopeFileRead&, const BackupKeyEnvelopeFileRead&) = default;
};

}  // namespace galdrine::envelope
