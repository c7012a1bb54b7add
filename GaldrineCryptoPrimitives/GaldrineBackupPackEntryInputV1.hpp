#pragma once
// GaldrineBackupPackEntryInputV1 is one resource to be packed: the identifier its entry will
// carry (the resource's own identifier) and its plaintext. The writer only reads it; wiping
// the plaintext afterwards is the holder's business.

#include "GaldrinePlatform/GaldrineBytes.hpp"

struct GaldrineBackupPackEntryInputV1 {
  Bytes identifier;
  Bytes plaintext;

  friend bool operator==(const GaldrineBackupPackEntryInputV1&, const GaldrineBackupPackEntryInputV1&) = default;
};
