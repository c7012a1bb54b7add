#pragma once
// AuthenticatedBackupCommit is a commit together with the reference computed from
// the very frame it was opened from, so that other records can be checked against the exact
// bytes that were seen.

#include <expected>
#include <utility>

#include "format/graph/BackupArtifactReferenceV1.hpp"
#include "format/graph/BackupCommitGraphError.hpp"
#include "format/graph/BackupCommitV1.hpp"

namespace galdrine::format {

class AuthenticatedBackupCommit {
 public:
  // make fails with invalidAuthenticatedRecord unless the reference bears the commit's own
  // identifier.
  [[nodiscard]] static std::expected<AuthenticatedBackupCommit, BackupCommitGraphError> make(
      BackupArtifactReferenceV1 reference, BackupCommitV1 commit);

  [[nodiscard]] const BackupArtifactReferenceV1& reference() const { return reference_; }
  [[nodiscard]] const BackupCommitV1& commit() const { return commit_; }

  friend bool operator==(const AuthenticatedBackupCommit&, const AuthenticatedBackupCommit&) = default;

 private:
  AuthenticatedBackupCommit(BackupArtifactReferenceV1 reference, BackupCommitV1 commit)
      : reference_(std::move(reference)), commit_(std::move(commit)) {}

  BackupArtifactReferenceV1 reference_;
  BackupCommitV1 commit_;
};

inline std::expected<AuthenticatedBackupCommit, BackupCommitGraphError> AuthenticatedBackupCommit::make(
    BackupArtifactReferenceV1 reference, BackupCommitV1 commit) {
  if (reference.identifier() != commit.identifier()) {
    return std::unexpected(BackupCommitGraphError::invalidAuthenticatedRecord);
  }
  return AuthenticatedBackupCommit(std::move(reference), std::move(commit));
}

}  // namespace galdrine::format
