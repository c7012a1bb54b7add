#pragma once
// BackupSealedGraphArtifact is what sealing a head, commit, snapshot or manifest root
// gives: the frame, which is the file's content, and the reference that goes into the next
// record up. It is not stored as such.

#include "format/graph/BackupArtifactReferenceV1.hpp"
#include "platform/Bytes.hpp"

namespace galdrine::format {

struct BackupSealedGraphArtifact {
  BackupArtifactReferenceV1 reference;
  Bytes frame;

  friend bool operator==(const BackupSealedGraphArtifact&, const BackupSealedGraphArtifact&) = default;
};

}  // namespace galdrine::format
