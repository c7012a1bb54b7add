#include "recovery/export/ResourcePlan.hpp"

#include <algorithm>
#include <cstdint>

#include "recovery/export/ExportFileName.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryExporterError;

// resourceWithIdentifier finds a resource by binary search: the model's resources are sorted by
// identifier, so they serve as their own index.
[[nodiscard]] const format::BackupMediaResourceRecordV1* resourceWithIdentifier(
    const ExportModel& model, const format::BackupIdentifierV1& identifier) {
  const auto found =
      std::ranges::lower_bound(model.resources, identifier, {}, &format::BackupMediaResourceRecordV1::identifier);
  if (found == model.resources.end() || found->identifier() != identifier) return nullptr;
  return &*found;
}

}  // namespace

std::expected<std::vector<PlannedResource>, Error> resourcePlan(const ExportModel& model) {
  const std::uint64_t maximumAttempts = static_cast<std::uint64_t>(model.resources.size()) + 1;
  UsedNames usedNames;
  NextSuffixByName nextSuffixByName;
  std::vector<PlannedResource> plan;
  plan.reserve(model.resources.size());
  for (const format::BackupMediaItemRecordV1& item : model.items) {
    const bool hasMultipleResources = item.resourceIdentifiers().size() >= 2;
    for (const format::BackupIdentifierV1& identifier : item.resourceIdentifiers()) {
      const format::BackupMediaResourceRecordV1* resource = resourceWithIdentifier(model, identifier);
      if (resource == nullptr || resource->itemIdentifier() != item.identifier()) {
        return std::unexpected(Error::integrityFailure);
      }
      const auto preferred = preferredFilename(item, *resource, hasMultipleResources);
      if (!preferred) return std::unexpected(preferred.error());
      const auto name = collisionSafeName(*preferred, maximumAttempts, usedNames, nextSuffixByName);
      if (!name) return std::unexpected(name.error());
      plan.push_back({&item, resource, std::string(allItemsDirectoryName) + "/" + *name});
    }
  }
  if (plan.size() != model.resources.size()) return std::unexpected(Error::integrityFailure);
  return plan;
}

}  // namespace galdrine::recovery
