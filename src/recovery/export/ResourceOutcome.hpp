#pragma once
// ResourceOutcome is how the recovery of one resource ended: the digest of the file it left,
// or the issues that kept it from being written. A resource counts as recovered only when it
// has a digest and no issue.

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "format/graph/BackupIdentifierHasher.hpp"
#include "format/graph/BackupIdentifierV1.hpp"
#include "platform/RawValue.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::recovery {

// ResourceFailureReason is why one payload artifact of a resource could not give its bytes.
// Its texts are the ones the recovery report writes.
enum class ResourceFailureReason : std::uint8_t {
  missingPayload,           // the artifact file is not there
  unreadablePayload,        // it cannot be opened or read, is no regular file, or changed while read
  payloadIntegrityFailure,  // its size or digest is wrong, or its bytes do not open
};

// ResourceIssue is one reason why a resource was not recovered. It names the payload artifact
// that failed, or none when the failure belongs to the resource as a whole (a payload key that
// does not unwrap, or bytes whose final count or digest is wrong).
struct ResourceIssue {
  std::optional<format::BackupIdentifierV1> payloadArtifactIdentifier;
  ResourceFailureReason reason = ResourceFailureReason::missingPayload;

  friend bool operator==(const ResourceIssue&, const ResourceIssue&) = default;
};

struct ResourceOutcome {
  std::optional<platform::SHA256Digest> recoveredSHA256;
  std::vector<ResourceIssue> issues;

  [[nodiscard]] bool isRecovered() const { return recoveredSHA256.has_value() && issues.empty(); }

  friend bool operator==(const ResourceOutcome&, const ResourceOutcome&) = default;
};

// ResourceOutcomes holds the outcome of each resource of an export by resource identifier.
using ResourceOutcomes =
    std::unordered_map<format::BackupIdentifierV1, ResourceOutcome, format::BackupIdentifierHasher>;

}  // namespace galdrine::recovery

namespace galdrine {

template <>
struct RawValueTable<recovery::ResourceFailureReason> {
  static constexpr std::array<std::string_view, 3> rawValues{"missing-payload", "unreadable-payload",
                                                             "payload-integrity-failure"};
};

}  // namespace galdrine
