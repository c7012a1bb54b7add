#pragma once
// ResourceIssue is one reason why a resource was not recovered. It names the payload artifact
// that failed, or none when the failure belongs to the resource as a whole (a payload key that
// does not unwrap, or bytes whose final count or digest is wrong).

#include <optional>

#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineRecoveryCore/ResourceFailureReason.hpp"

namespace GaldrineRecoveryExporterV1 {

struct ResourceIssue {
  std::optional<GaldrineBackupIdentifierV1> payloadArtifactIdentifier;
  ResourceFailureReason reason = ResourceFailureReason::missingPayload;

  friend bool operator==(const ResourceIssue&, const ResourceIssue&) = default;
};

}  // namespace GaldrineRecoveryExporterV1
