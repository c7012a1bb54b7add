#pragma once
// ResourceIssue is one reason why a resource was not recovered. It names the payload artifact
// that failed, or none when the failure belongs to the resource as a whole (a payload key that
// does not unwrap, or bytes whose final count or digest is wrong).

#include <optional>

#include "format/graph/BackupIdentifierV1.hpp"
#include "recovery/export/ResourceFailureReason.hpp"

namespace galdrine::recovery {

namespace RecoveryExporter {

struct ResourceIssue {
  std::optional<format::BackupIdentifierV1> payloadArtifactIdentifier;
  ResourceFailureReason reason = ResourceFailureReason::missingPayload;

  friend bool operator==(const ResourceIssue&, const ResourceIssue&) = default;
};

}  // namespace RecoveryExporter

}  // namespace galdrine::recovery
