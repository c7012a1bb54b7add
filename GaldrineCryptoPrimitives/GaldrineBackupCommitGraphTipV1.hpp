#pragma once
// GaldrineBackupCommitGraphTipV1 is a commit that a head reaches and that no other reached
// commit descends from, with the reference it was authenticated by.

#include "GaldrineCryptoPrimitives/GaldrineAuthenticatedBackupCommitV1.hpp"

class GaldrineBackupCommitGraphTipV1 {
 public:
  explicit GaldrineBackupCommitGraphTipV1(const GaldrineAuthenticatedBackupCommitV1& authenticated)
      : reference_(authenticated.reference()), commit_(authenticated.commit()) {}

  [[nodiscard]] const GaldrineBackupArtifactReferenceV1& reference() const { return reference_; }
  [[nodiscard]] const GaldrineBackupCommitV1& commit() const { return commit_; }

  friend bool operator==(const GaldrineBackupCommitGraphTipV1&, const GaldrineBackupCommitGraphTipV1&) = default;

 private:
  GaldrineBackupArtifactReferenceV1 reference_;
  GaldrineBackupCommitV1 commit_;
};
