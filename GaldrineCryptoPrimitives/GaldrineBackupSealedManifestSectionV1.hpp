#pragma once
// GaldrineBackupSealedManifestSectionV1 is what sealing a manifest section gives: the frame,
// which is the file's content, and the section reference that goes into the manifest root.

#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSectionReferenceV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"

struct GaldrineBackupSealedManifestSectionV1 {
  GaldrineBackupManifestSectionReferenceV1 reference;
  Bytes frame;

  friend bool operator==(const GaldrineBackupSealedManifestSectionV1&,
                         const GaldrineBackupSealedManifestSectionV1&) = default;
};
