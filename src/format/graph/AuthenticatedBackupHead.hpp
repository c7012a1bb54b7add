#pragma once
// AuthenticatedBackupHead is a head together with the reference computed from the
// very frame it was opened from.

#include <expected>
#include <utility>

#include "format/graph/BackupArtifactReferenceV1.hpp"
#include "format/graph/BackupCommitGraphError.hpp"
#include "format/graph/BackupHeadV1.hpp"

namespace galdrine::format {

class AuthenticatedBackupHead {
 public:
  // make fails with invalidAuthenticatedRecord unless the reference bears the head's own
  // identifier.
  [[nodiscard]] static std::expected<AuthenticatedBackupHead, BackupCommitGraphError> make(
      BackupArtifactReferenceV1 reference, BackupHeadV1 head);

  [[nodiscard]] const BackupArtifactReferenceV1& reference() const { return reference_; }
  [[nodiscard]] const BackupHeadV1& head() const { return head_; }

  friend bool operator==(const AuthenticatedBackupHead&, const AuthenticatedBackupHead&) = default;

 private:
  AuthenticatedBackupHead(BackupArtifactReferenceV1 reference, BackupHeadV1 head)
      : reference_(std::move(reference)), head_(std::move(head)) {}

  BackupArtifactReferenceV1 reference_;
  BackupHeadV1 head_;
};

inline std::expected<AuthenticatedBackupHead, BackupCommitGraphError> AuthenticatedBackupHead::make(
    BackupArtifactReferenceV1 reference, BackupHeadV1 head) {
  if (reference.identifier() != head.identifier()) {
    return std::unexpected(BackupCommitGraphError::invalidAuthenticatedRecord);
  }
  return AuthenticatedBackupHead(std::move(reference), std::move(head));
}

}  // namespace galdrine::format
