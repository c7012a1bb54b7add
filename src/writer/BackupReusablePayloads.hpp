#pragma once
// BackupReusablePayloads indexes the resources that earlier commits already store, by
// resource identifier, with the payload key record that opens each. A new commit keeps such a
// payload for a resource whose identifier, length and SHA-256 are unchanged: its part records
// and key record are copied, and its files are shared, not written again. The index refers to
// records it does not own; they must outlive it.

#include <span>
#include <unordered_map>
#include <vector>

#include "format/graph/BackupIdentifierHasher.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"

namespace galdrine::writer {

struct BackupStoredResource {
  const format::BackupMediaResourceRecordV1* resource;
  const format::BackupPayloadKeyRecordV1* payloadKey;
};

class BackupReusablePayloads {
 public:
  // add indexes every resource of one manifest's records whose key record is among them.
  void add(std::span<const format::BackupManifestRecordV1> records);

  // candidates lists the stored resources of `identifier`, in the order their manifests were added.
  [[nodiscard]] std::span<const BackupStoredResource> candidates(const format::BackupIdentifierV1& identifier) const;

 private:
  std::unordered_map<format::BackupIdentifierV1, std::vector<BackupStoredResource>, format::BackupIdentifierHasher>
      resources_;
};

}  // namespace galdrine::writer
