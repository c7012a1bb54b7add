#pragma once
// GaldrineBackupKeyEnvelopeFileReadV1 is a key envelope set as it stood on disk, with the
// SHA-256 of the file's bytes as read: the token a later replacement of the file must present.

#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrinePortableKeyEnvelope/GaldrineBackupKeyEnvelopeSetV1.hpp"

struct GaldrineBackupKeyEnvelopeFileReadV1 {
  GaldrineBackupKeyEnvelopeSetV1 envelopeSet;
  Bytes encodedSHA256;  // 32 bytes

  friend bool operator==(const GaldrineBackupKeyEnvelopeFileReadV1&, const GaldrineBackupKeyEnvelopeFileReadV1&) = default;
};
