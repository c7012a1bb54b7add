#pragma once
// BackupCommitGraphTip is a commit that a head reaches and that no other reached
// commit descends from, with the reference it was authenticated by.

#include "format/graph/AuthenticatedBackupCommit.hpp"

namespace galdrine::format {

class BackupCommitGraphTip {
 public:
  explicit BackupCommitGraphTip(const AuthenticatedBackupCommit& authenticated)
      : reference_(authenticated.reference()), commit_(authenticated.commit()) {}

  [[nodiscard]] const BackupArtifactReferenceV1& reference() const { return reference_; }
  [[nodiscard]] const BackupCommitV1& commit() const { return commit_; }

  friend bool operator==(const BackupCommitGraphTip&, const BackupCommitGraphTip&) = default;

 private:
  BackupArtifactReferenceV1 reference_;
  BackupCommitV1 commit_;
};

}  // namespace galdrine::format
