#pragma once
// BackupSealedManifestSection is what sealing a manifest section gives: the frame,
// which is the file's content, and the section reference that goes into the manifest root.

#include "format/graph/BackupManifestSectionReferenceV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

struct BackupSealedManifestSection {
  BackupManifestSectionReferenceV1 reference;
  Bytes frame;

  friend bool operator==(const BackupSealedManifestSection&,
                         const BackupSealedManifestSection&) = default;
};

}  // namespace galdrine::format
