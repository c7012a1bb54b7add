#include "GaldrineCryptoPrimitives/GaldrineBackupGraphV1.hpp"

#include <algorithm>
#include <limits>
#include <string_view>
#include <unordered_set>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCore/GaldrineDeterministicCBOR.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupGraphLimitsV1.hpp"
#include "GaldrinePlatform/GaldrinePlatformSHA256.hpp"

namespace Limits = GaldrineBackupGraphLimitsV1;
using SectionReference = GaldrineBackupManifestSectionReferenceV1;
using Sections = std::span<const SectionReference>;

namespace {

bool ordinalsCountFromZero(Sections sections) {
  for (std::size_t position = 0; position < sections.size(); ++position) {
    if (sections[position].ordinal() != position) return false;
  }
  return true;
}

bool identifiersArePairwiseDifferent(Sections sections) {
  std::unordered_set<std::string_view> seen;
  seen.reserve(sections.size());
  for (const auto& section : sections) {
    if (!seen.insert(GaldrineByteText::text(section.artifact().identifier())).second) return false;
  }
  return true;
}

// neighboursAreOrdered: kinds never decrease, and within a kind the sort key ranges of
// consecutive sections neither touch nor overlap.
bool neighboursAreOrdered(Sections sections) {
  return std::ranges::adjacent_find(sections, [](const SectionReference& earlier, const SectionReference& later) {
           if (later.kind() < earlier.kind()) return true;
           return later.kind() == earlier.kind() &&
                  !GaldrineByteOrder::precedes(earlier.lastSortKey(), later.firstSortKey());
         }) == sections.end();
}

std::expected<void, GaldrineBackupGraphV1Error> recordCountsMatch(Sections sections,
                                                                  const GaldrineBackupManifestCountsV1& counts) {
  for (const auto kind : allCases<GaldrineBackupManifestSectionKindV1>) {
    std::uint64_t sum = 0;
    for (const auto& section : sections) {
      if (section.kind() != kind) continue;
      if (section.recordCount() > std::numeric_limits<std::uint64_t>::max() - sum) {
        return std::unexpected(GaldrineBackupGraphV1Error::invalidCount);
      }
      sum += section.recordCount();
    }
    if (sum != counts.count(kind)) return std::unexpected(GaldrineBackupGraphV1Error::invalidSectionSet);
  }
  return {};
}

std::expected<std::string, GaldrineBackupGraphV1Error> fileName(ByteView identifier, std::string_view extension) {
  if (identifier.size() != Limits::identifierByteCount) return std::unexpected(GaldrineBackupGraphV1Error::invalidIdentifier);
  std::string name = GaldrineByteText::lowerHex(identifier);
  name.push_back('.');
  name.append(extension);
  return name;
}

}  // namespace

namespace GaldrineBackupGraphV1 {

std::expected<void, GaldrineBackupGraphV1Error> validateSectionSet(Sections sections,
                                                                   const GaldrineBackupManifestCountsV1& counts) {
  constexpr auto invalid = GaldrineBackupGraphV1Error::invalidSectionSet;
  if (sections.size() > Limits::maximumSectionCount) return std::unexpected(invalid);
  if (!ordinalsCountFromZero(sections)) return std::unexpected(invalid);
  if (!identifiersArePairwiseDifferent(sections)) return std::unexpected(invalid);
  if (!neighboursAreOrdered(sections)) return std::unexpected(invalid);
  return recordCountsMatch(sections, counts);
}

std::expected<Bytes, GaldrineBackupGraphV1Error> sectionSetDigest(Sections sections) {
  GaldrineCBORValue::Array items;
  items.reserve(sections.size());
  for (const auto& section : sections) items.push_back(section.cborValue());
  const auto encoded = GaldrineDeterministicCBOR::encode(GaldrineCBORValue::array(std::move(items)), Limits::manifestRoot);
  if (!encoded) return std::unexpected(GaldrineBackupGraphV1Error::invalidSectionSet);
  const auto digest = GaldrinePlatformSHA256::digest(*encoded);
  return Bytes(digest.begin(), digest.end());
}

bool manifestSectionFitsPlaintextLimit(const GaldrineBackupManifestSectionV1& section) {
  // The other section limits (strings, items, depth) follow from the section's own rules.
  return section.encodedByteCount() <= static_cast<std::uint64_t>(Limits::manifestSection.maximumEncodedByteCount);
}

std::expected<std::string, GaldrineBackupGraphV1Error> headFileName(ByteView identifier) {
  return fileName(identifier, GaldrineBackupFormatV1::headFileExtension);
}

std::expected<std::string, GaldrineBackupGraphV1Error> commitFileName(ByteView identifier) {
  return fileName(identifier, GaldrineBackupFormatV1::commitFileExtension);
}

std::expected<std::string, GaldrineBackupGraphV1Error> snapshotFileName(ByteView identifier) {
  return fileName(identifier, GaldrineBackupFormatV1::snapshotFileExtension);
}

std::expected<std::string, GaldrineBackupGraphV1Error> manifestFileName(ByteView identifier) {
  return fileName(identifier, GaldrineBackupFormatV1::manifestFileExtension);
}

}  // namespace GaldrineBackupGraphV1
