#pragma once
// GaldrineAuthenticatedBackupCommitV1 is a commit together with the reference computed from
// the very frame it was opened from, so that other records can be checked against the exact
// bytes that were seen.

#include <expected>
#include <utility>

#include "GaldrineCryptoPrimitives/GaldrineBackupArtifactReferenceV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupCommitGraphV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupCommitV1.hpp"

class GaldrineAuthenticatedBackupCommitV1 {
 public:
  // make fails with invalidAuthenticatedRecord unless the reference bears the commit's own
  // identifier.
  [[nodiscard]] static std::expected<GaldrineAuthenticatedBackupCommitV1, GaldrineBackupCommitGraphV1Error> make(
      GaldrineBackupArtifactReferenceV1 reference, GaldrineBackupCommitV1 commit);

  [[nodiscard]] const GaldrineBackupArtifactReferenceV1& reference() const { return reference_; }
  [[nodiscard]] const GaldrineBackupCommitV1& commit() const { return commit_; }

  friend bool operator==(const GaldrineAuthenticatedBackupCommitV1&, const GaldrineAuthenticatedBackupCommitV1&) = default;

 private:
  GaldrineAuthenticatedBackupCommitV1(GaldrineBackupArtifactReferenceV1 reference, GaldrineBackupCommitV1 commit)
      : reference_(std::move(reference)), commit_(std::move(commit)) {}

  GaldrineBackupArtifactReferenceV1 reference_;
  GaldrineBackupCommitV1 commit_;
};

inline std::expected<GaldrineAuthenticatedBackupCommitV1, GaldrineBackupCommitGraphV1Error>
GaldrineAuthenticatedBackupCommitV1::make(GaldrineBackupArtifactReferenceV1 reference, GaldrineBackupCommitV1 commit) {
  if (reference.identifier() != commit.identifier()) {
    return std::unexpected(GaldrineBackupCommitGraphV1Error::invalidAuthenticatedRecord);
  }
  return GaldrineAuthenticatedBackupCommitV1(std::move(reference), std::move(commit));
}
