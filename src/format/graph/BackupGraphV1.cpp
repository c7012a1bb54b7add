#include "format/graph/BackupGraphV1.hpp"

#include <algorithm>
#include <limits>
#include <string_view>
#include <unordered_set>

#include "format/cbor/DeterministicCBOR.hpp"
#include "format/graph/BackupGraphLimitsV1.hpp"
#include "format/header/BackupFormatV1.hpp"
#include "platform/SHA256.hpp"

namespace galdrine::format {

namespace Limits = BackupGraphLimitsV1;
using SectionReference = BackupManifestSectionReferenceV1;
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
    if (!seen.insert(ByteText::text(section.artifact().identifier())).second) return false;
  }
  return true;
}

// neighboursAreOrdered: kinds never decrease, and within a kind the sort key ranges of
// consecutive sections neither touch nor overlap.
bool neighboursAreOrdered(Sections sections) {
  return std::ranges::adjacent_find(sections, [](const SectionReference& earlier, const SectionReference& later) {
           if (later.kind() < earlier.kind()) return true;
           return later.kind() == earlier.kind() && !ByteOrder::precedes(earlier.lastSortKey(), later.firstSortKey());
         }) == sections.end();
}

std::expected<void, BackupGraphV1Error> recordCountsMatch(Sections sections, const BackupManifestCountsV1& counts) {
  for (const auto kind : allCases<BackupManifestSectionKindV1>) {
    std::uint64_t sum = 0;
    for (const auto& section : sections) {
      if (section.kind() != kind) continue;
      if (section.recordCount() > std::numeric_limits<std::uint64_t>::max() - sum) {
        return std::unexpected(BackupGraphV1Error::invalidCount);
      }
      sum += section.recordCount();
    }
    if (sum != counts.count(kind)) return std::unexpected(BackupGraphV1Error::invalidSectionSet);
  }
  return {};
}

std::expected<std::string, BackupGraphV1Error> fileName(ByteView identifier, std::string_view extension) {
  if (identifier.size() != Limits::identifierByteCount) return std::unexpected(BackupGraphV1Error::invalidIdentifier);
  std::string name = ByteText::lowerHex(identifier);
  name.push_back('.');
  name.append(extension);
  return name;
}

}  // namespace

namespace BackupGraphV1 {

std::expected<void, BackupGraphV1Error> validateSectionSet(Sections sections, const BackupManifestCountsV1& counts) {
  constexpr auto invalid = BackupGraphV1Error::invalidSectionSet;
  if (sections.size() > Limits::maximumSectionCount) return std::unexpected(invalid);
  if (!ordinalsCountFromZero(sections)) return std::unexpected(invalid);
  if (!identifiersArePairwiseDifferent(sections)) return std::unexpected(invalid);
  if (!neighboursAreOrdered(sections)) return std::unexpected(invalid);
  return recordCountsMatch(sections, counts);
}

std::expected<Bytes, BackupGraphV1Error> sectionSetDigest(Sections sections) {
  CBORValue::Array items;
  items.reserve(sections.size());
  for (const auto& section : sections) items.push_back(section.cborValue());
  const auto encoded = DeterministicCBOR::encode(CBORValue::array(std::move(items)), Limits::manifestRoot);
  if (!encoded) return std::unexpected(BackupGraphV1Error::invalidSectionSet);
  const auto digest = platform::SHA256::digest(*encoded);
  return Bytes(digest.begin(), digest.end());
}

bool manifestSectionFitsPlaintextLimit(const BackupManifestSectionV1& section) {
  // The other section limits (strings, items, depth) follow from the section's own rules.
  return section.encodedByteCount() <= static_cast<std::uint64_t>(Limits::manifestSection.maximumEncodedByteCount);
}

std::expected<std::string, BackupGraphV1Error> headFileName(ByteView identifier) {
  return fileName(identifier, BackupFormatV1::headFileExtension);
}

std::expected<std::string, BackupGraphV1Error> commitFileName(ByteView identifier) {
  return fileName(identifier, BackupFormatV1::commitFileExtension);
}

std::expected<std::string, BackupGraphV1Error> snapshotFileName(ByteView identifier) {
  return fileName(identifier, BackupFormatV1::snapshotFileExtension);
}

std::expected<std::string, BackupGraphV1Error> manifestFileName(ByteView identifier) {
  return fileName(identifier, BackupFormatV1::manifestFileExtension);
}

}  // namespace BackupGraphV1

}  // namespace galdrine::format
