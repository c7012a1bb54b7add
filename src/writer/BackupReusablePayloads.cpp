#include "writer/BackupReusablePayloads.hpp"

namespace galdrine::writer {

void BackupReusablePayloads::add(std::span<const format::BackupManifestRecordV1> records) {
  std::unordered_map<format::BackupIdentifierV1, const format::BackupPayloadKeyRecordV1*,
                     format::BackupIdentifierHasher>
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

std::span<const BackupStoredResource> BackupReusablePayloads::candidates(
    const format::BackupIdentifierV1& identifier) const {
  const auto found = resources_.find(identifier);
  if (found == resources_.end()) return {};
  return found->second;
}

}  // namespace galdrine::writer
