#pragma once
// GaldrineBackupManifestAssemblyV1 turns a library snapshot and its payload plan into the
// records of a manifest, and cuts the records into sections: the seven kinds in their order,
// each kind's records ascending by sort key, a section closed when it reaches the layout's
// record count or when one more record could take its encoding past the 8 MiB a section may
// hold. Each section is proven to fit before it is given out.

#include <expected>
#include <functional>
#include <vector>

#include "GaldrineBackupWriter/GaldrineBackupLibrarySnapshotV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupPayloadLayoutV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupPayloadPlanV1.hpp"
#include "GaldrineBackupWriter/GaldrineBackupWriterV1Failure.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestRecordV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupManifestSectionV1.hpp"

namespace GaldrineBackupManifestAssemblyV1 {

// A section identifier source gives the identifier of the next section.
using SectionIdentifierSource = std::function<std::expected<GaldrineBackupIdentifierV1, GaldrineBackupWriterV1Error>()>;

// records builds every record of `library` with the plan's payload facts: the key records the
// resources use (new ones and kept ones, each once), the items with their sorted resource
// identifiers, the resources with their parts, the folders, albums, memberships and
// tombstones. A description a record refuses gives the record's error. The result is ordered
// by kind and, within a kind, by sort key.
[[nodiscard]] std::expected<std::vector<GaldrineBackupManifestRecordV1>, GaldrineBackupWriterV1Failure> records(
    const GaldrineBackupLibrarySnapshotV1& library, const GaldrineBackupPayloadPlanV1& plan);

// sections cuts ordered `records` into sections of the manifest `manifestIdentifier`. Two
// records of one kind with one sort key are the section's invalidRecordSet; more than 4,096
// sections, or a section that does not fit, is manifestTooLarge.
[[nodiscard]] std::expected<std::vector<GaldrineBackupManifestSectionV1>, GaldrineBackupWriterV1Failure> sections(
    std::span<const GaldrineBackupManifestRecordV1> records, const GaldrineBackupIdentifierV1& manifestIdentifier,
    const GaldrineBackupIdentifierV1& libraryDomainIdentifier, const GaldrineBackupPayloadLayoutV1& layout,
    const SectionIdentifierSource& nextIdentifier);

}  // namespace GaldrineBackupManifestAssemblyV1
