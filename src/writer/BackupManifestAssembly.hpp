#pragma once
// BackupManifestAssembly turns a library snapshot and its payload plan into the
// records of a manifest, and cuts the records into sections: the seven kinds in their order,
// each kind's records ascending by sort key, a section closed when it reaches the layout's
// record count or when one more record could take its encoding past the 8 MiB a section may
// hold. Each section is proven to fit before it is given out.

#include <expected>
#include <functional>
#include <vector>

#include "format/graph/BackupManifestSectionV1.hpp"
#include "format/manifest/BackupManifestRecordV1.hpp"
#include "writer/BackupLibrarySnapshot.hpp"
#include "writer/BackupPayloadLayout.hpp"
#include "writer/BackupPayloadPlan.hpp"
#include "writer/BackupWriterFailure.hpp"

namespace galdrine::writer {

namespace BackupManifestAssembly {

// A section identifier source gives the identifier of the next section.
using SectionIdentifierSource = std::function<std::expected<format::BackupIdentifierV1, BackupWriterError>()>;

// records builds every record of `library` with the plan's payload facts: the key records the
// resources use (new ones and kept ones, each once), the items with their sorted resource
// identifiers, the resources with their parts, the folders, albums, memberships and
// tombstones. A description a record refuses gives the record's error. The result is ordered
// by kind and, within a kind, by sort key.
[[nodiscard]] std::expected<std::vector<format::BackupManifestRecordV1>, BackupWriterFailure> records(
    const BackupLibrarySnapshot& library, const BackupPayloadPlan& plan);

// sections cuts ordered `records` into sections of the manifest `manifestIdentifier`. Two
// records of one kind with one sort key are the section's invalidRecordSet; more than 4,096
// sections, or a section that does not fit, is manifestTooLarge.
[[nodiscard]] std::expected<std::vector<format::BackupManifestSectionV1>, BackupWriterFailure> sections(
    std::span<const format::BackupManifestRecordV1> records, const format::BackupIdentifierV1& manifestIdentifier,
    const format::BackupIdentifierV1& libraryDomainIdentifier, const BackupPayloadLayout& layout,
    const SectionIdentifierSource& nextIdentifier);

}  // namespace BackupManifestAssembly

}  // namespace galdrine::writer
