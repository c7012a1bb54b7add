#pragma once
// GaldrineBackupReusablePayloadsV1 indexes the resources that earlier commits already store, by
// resource identifier, with the payload key record that opens each. A new commit keeps such a
// payload for a resource whose identifier, length and SHA-256 are unchanged: its part records
// and key record are copied, and its files are shared, not written again. The index refers to
// records it does not own; they must outlive it.

#include <span>
#include <unordered_map>
#include <vector>

#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierHasherV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1.hpp"

struct GaldrineBackupStoredResourceV1 {
  const GaldrineBackupMediaResourceRecordV1* resource;
  const GaldrineBackupPayloadKeyRecordV1* payloadKey;
};

class GaldrineBackupReusablePayloadsV1 {
 public:
  // add indexes every resource of one manifest's records whose key record is among them.
  void add(std::span<const GaldrineBackupManifestRecordV1> records);

  // candidates lists the stored resources of `identifier`, in the order their manifests were added.
  [[nodiscard]] std::span<const GaldrineBackupStoredResourceV1> candidates(const GaldrineBackupIdentifierV1& identifier) const;

 private:
  std::unordered_map<GaldrineBackupIdentifierV1, std::vector<GaldrineBackupStoredResourceV1>, GaldrineBackupIdentifierHasherV1>
      resources_;
};
