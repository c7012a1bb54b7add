#pragma once
// BackupFormatV1 holds every constant of version 1 of the backup package format:
// identifiers, schema names, domain labels, file extensions, byte counts and ceilings. Nothing
// else in the code base spells one of these literals; it names the constant here.

#include <array>
#include <cstdint>
#include <limits>
#include <string_view>

#include "format/header/BackupAlgorithmV1.hpp"
#include "format/sealing/BackupAADDomainV1.hpp"

namespace galdrine::format {

namespace BackupFormatV1 {

// Identifiers and labels.
inline constexpr std::string_view canonicalFormatIdentifier = "com.galdrine.backup.v1";
inline constexpr std::string_view headerSchemaIdentifier = "com.galdrine.backup.header.v1";
inline constexpr std::string_view algorithmSuiteIdentifier = "com.galdrine.backup.algorithm-suite.v1";
inline constexpr std::string_view uniformTypeIdentifier = "com.galdrine.backup-package";
inline constexpr std::string_view layoutIdentifier = "hybrid";
inline constexpr std::string_view sealedFrameSchemaIdentifier = "com.galdrine.backup.sealed-frame.v1";
inline constexpr std::string_view packIndexSchemaIdentifier = "com.galdrine.backup.pack-index.v1";
inline constexpr std::string_view manifestSectionSchemaIdentifier = "com.galdrine.backup.manifest-section.v1";
inline constexpr std::string_view manifestRootSchemaIdentifier = "com.galdrine.backup.manifest-root.v1";
inline constexpr std::string_view snapshotSchemaIdentifier = "com.galdrine.backup.snapshot.v1";
inline constexpr std::string_view commitSchemaIdentifier = "com.galdrine.backup.commit.v1";
inline constexpr std::string_view headSchemaIdentifier = "com.galdrine.backup.head.v1";
inline constexpr std::string_view payloadKeyEnvelopeSchemaIdentifier = "com.galdrine.backup.payload-key-envelope.v1";
inline constexpr std::string_view manifestPayloadKeyRecordSchemaIdentifier =
    "com.galdrine.backup.manifest.payload-key.v1";
inline constexpr std::string_view manifestItemRecordSchemaIdentifier = "com.galdrine.backup.manifest.item.v1";
inline constexpr std::string_view manifestResourceRecordSchemaIdentifier = "com.galdrine.backup.manifest.resource.v1";
inline constexpr std::string_view manifestFolderRecordSchemaIdentifier = "com.galdrine.backup.manifest.folder.v1";
inline constexpr std::string_view manifestAlbumRecordSchemaIdentifier = "com.galdrine.backup.manifest.album.v1";
inline constexpr std::string_view manifestMembershipRecordSchemaIdentifier =
    "com.galdrine.backup.manifest.membership.v1";
inline constexpr std::string_view manifestTombstoneRecordSchemaIdentifier = "com.galdrine.backup.manifest.tombstone.v1";
inline constexpr std::string_view requiredPayloadSetDigestDomain = "galdrine/backup/required-payload-set/v1";

// File names and magics.
inline constexpr std::string_view packageExtension = "galdrine";
inline constexpr std::string_view dottedPackageExtension = ".galdrine";
inline constexpr std::string_view packSegmentFileExtension = "pack";
inline constexpr std::string_view resourceChunkFileExtension = "chunk";
inline constexpr std::string_view manifestFileExtension = "manifest";
inline constexpr std::string_view snapshotFileExtension = "snapshot";
inline constexpr std::string_view commitFileExtension = "commit";
inline constexpr std::string_view headFileExtension = "head";
inline constexpr std::array<std::uint8_t, 8> magic{'G', 'A', 'L', 'D', 'R', 'I', 'N', 'E'};
inline constexpr std::array<std::uint8_t, 8> packSegmentMagic{'G', 'A', 'L', 'D', 'P', 'K', '0', '1'};

// Numbers.
inline constexpr std::uint64_t formatVersion = 1;
inline constexpr std::uint64_t minimumReaderVersion = 1;
inline constexpr std::uint16_t packSegmentVersion = 1;
inline constexpr std::int64_t packageIdentifierByteCount = 16;
inline constexpr std::int64_t artifactIdentifierByteCount = 16;
inline constexpr std::int64_t digestByteCount = 32;
inline constexpr std::uint64_t packIndexOrdinal = std::numeric_limits<std::uint64_t>::max();
inline constexpr std::uint64_t maximumPackedResourcePlaintextByteCount = 16777216;
inline constexpr std::uint64_t maximumSegmentPlaintextByteCount = 67108864;
inline constexpr std::uint64_t maximumSegmentResourceCount = 32;
inline constexpr std::uint64_t maximumStandaloneChunkPlaintextByteCount = 16777216;
inline constexpr std::uint64_t maximumPackIndexPlaintextByteCount = 65536;
inline constexpr std::uint64_t maximumManifestSectionPlaintextByteCount = 8388608;
inline constexpr std::uint64_t maximumManifestRootPlaintextByteCount = 2097152;
inline constexpr std::uint64_t maximumGraphDescriptorPlaintextByteCount = 65536;
inline constexpr std::uint64_t maximumManifestSectionCount = 4096;
inline constexpr std::uint64_t maximumManifestSectionRecordCount = 4096;
inline constexpr std::uint64_t maximumManifestFolderDepth = 16;
inline constexpr std::uint64_t maximumBackupResourcePlaintextByteCount = 68719476736;  // 2^36
inline constexpr std::uint64_t maximumPayloadKeyEnvelopePlaintextByteCount = 256;

// isValidPackageRootName is true for a name fit to be the last path component of a package:
// it ends with ".galdrine" (exactly, case included), has 10 to 128 UTF-8 bytes, a stem that is
// not blank once whitespace and line breaks are trimmed from both ends, and no control
// character, "/" or "\". Text that is not valid UTF-8 is never a valid name.
[[nodiscard]] bool isValidPackageRootName(std::string_view name);

}  // namespace BackupFormatV1

}  // namespace galdrine::format
