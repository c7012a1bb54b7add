#include "GaldrineBackupWriter/GaldrineBackupReusablePayloadsV1.hpp"

void GaldrineBackupReusablePayloadsV1::add(std::span<const GaldrineBackupManifestRecordV1> records) {
  std::unordered_map<GaldrineBackupIdentifierV1, const GaldrineBackupPayloadKeyRecordV1*, GaldrineBackupIdentifierHasherV1>
      keys;
  for (const auto& record : records) {
    if (const auto* key = record.payloadKey()) keys.emplace(key->identifier(), key);
  }
  for (const auto& record : records) {
    const auto* resource = record.resource();
    if (resource == nullptr) continue;
    const auto key = keys.find(resource->payloadKeyIdentifier());
    if (key == keys.end()) continue;  // a manifest that passed its checks has the key; nothing to keep otherwise
    resources_[resource->identifier()].push_back({resource, key->second});
  }
}

std::span<const GaldrineBackupStoredResourceV1> GaldrineBackupReusablePayloadsV1::candidates(
    const GaldrineBackupIdentifierV1& identifier) const {
  const auto found = resources_.find(identifier);
  if (found == resources_.end()) return {};
  return found->second;
}
