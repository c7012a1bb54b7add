#pragma once
// GaldrineAuthenticatedBackupHeadV1 is a head together with the reference computed from the
// very frame it was opened from.

#include <expected>
#include <utility>

#include "GaldrineCryptoPrimitives/GaldrineBackupArtifactReferenceV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupCommitGraphV1Error.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupHeadV1.hpp"

class GaldrineAuthenticatedBackupHeadV1 {
 public:
  // make fails with invalidAuthenticatedRecord unless the reference bears the head's own
  // identifier.
  [[nodiscard]] static std::expected<GaldrineAuthenticatedBackupHeadV1, GaldrineBackupCommitGraphV1Error> make(
      GaldrineBackupArtifactReferenceV1 reference, GaldrineBackupHeadV1 head);

  [[nodiscard]] const GaldrineBackupArtifactReferenceV1& reference() const { return reference_; }
  [[nodiscard]] const GaldrineBackupHeadV1& head() const { return head_; }

  friend bool operator==(const GaldrineAuthenticatedBackupHeadV1&, const GaldrineAuthenticatedBackupHeadV1&) = default;

 private:
  GaldrineAuthenticatedBackupHeadV1(GaldrineBackupArtifactReferenceV1 reference, GaldrineBackupHeadV1 head)
      : reference_(std::move(reference)), head_(std::move(head)) {}

  GaldrineBackupArtifactReferenceV1 reference_;
  GaldrineBackupHeadV1 head_;
};

inline std::expected<GaldrineAuthenticatedBackupHeadV1, GaldrineBackupCommitGraphV1Error>
GaldrineAuthenticatedBackupHeadV1::make(GaldrineBackupArtifactReferenceV1 reference, GaldrineBackupHeadV1 head) {
  if (reference.identifier() != head.identifier()) {
    return std::unexpected(GaldrineBackupCommitGraphV1Error::invalidAuthenticatedRecord);
  }
  return GaldrineAuthenticatedBackupHeadV1(std::move(reference), std::move(head));
}
