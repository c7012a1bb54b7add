#pragma once
// GaldrineBackupSealedGraphArtifactV1 is what sealing a head, commit, snapshot or manifest root
// gives: the frame, which is the file's content, and the reference that goes into the next
// record up. It is not stored as such.

#include "GaldrineCryptoPrimitives/GaldrineBackupArtifactReferenceV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

struct GaldrineBackupSealedGraphArtifactV1 {
  GaldrineBackupArtifactReferenceV1 reference;
  Bytes frame;

  friend bool operator==(const GaldrineBackupSealedGraphArtifactV1&, const GaldrineBackupSealedGraphArtifactV1&) = default;
};
