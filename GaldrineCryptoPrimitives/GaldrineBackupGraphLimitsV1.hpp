#pragma once
// GaldrineBackupGraphLimitsV1 holds the bounds of the backup graph records: field widths,
// counts, and the CBOR limits of each object, which apply to writing and reading alike.

#include <cstddef>
#include <cstdint>

#include "GaldrineCore/GaldrineBackupFormatV1.hpp"
#include "GaldrineCore/GaldrineCBORLimits.hpp"

namespace GaldrineBackupGraphLimitsV1 {

inline constexpr std::size_t identifierByteCount = GaldrineBackupFormatV1::artifactIdentifierByteCount;
inline constexpr std::size_t digestByteCount = GaldrineBackupFormatV1::digestByteCount;
inline constexpr std::size_t keyByteCount = 32;

// Each of the seven record counts of a manifest.
inline constexpr std::uint64_t maximumRecordCount = 2'000'000;
// A commit may acknowledge exactly this many alternate tips, not one more.
inline constexpr std::size_t maximumAcknowledgedTipCount = 256;

inline constexpr std::uint64_t maximumSectionCount = GaldrineBackupFormatV1::maximumManifestSectionCount;
inline constexpr std::uint64_t maximumSectionRecordCount = GaldrineBackupFormatV1::maximumManifestSectionRecordCount;
inline constexpr std::uint64_t maximumSectionOrdinal = maximumSectionCount - 1;

inline constexpr std::size_t minimumSortKeyByteCount = 1;
inline constexpr std::size_t maximumSortKeyByteCount = 32;
inline constexpr std::size_t minimumCanonicalRecordByteCount = 1;
inline constexpr std::size_t maximumCanonicalRecordByteCount = 1'048'576;

// Logical and encrypted byte totals of a snapshot or root.
inline constexpr std::uint64_t maximumByteTotal = std::uint64_t{1} << 40;

inline constexpr std::uint64_t graphDescriptorPlaintextLimit = GaldrineBackupFormatV1::maximumGraphDescriptorPlaintextByteCount;
inline constexpr std::uint64_t manifestRootPlaintextLimit = GaldrineBackupFormatV1::maximumManifestRootPlaintextByteCount;
inline constexpr std::uint64_t manifestSectionPlaintextLimit = GaldrineBackupFormatV1::maximumManifestSectionPlaintextByteCount;

// Head, commit and snapshot.
inline constexpr GaldrineCBORLimits graphDescriptor{65'536, 32, 256, 256, 4'096, 5};
// Manifest root, and the one array whose digest is a root's section-set digest.
inline constexpr GaldrineCBORLimits manifestRoot{2'097'152, 32, 256, 4'096, 70'000, 5};
inline constexpr GaldrineCBORLimits manifestSection{8'388'608, 1'048'576, 256, 4'096, 16'500, 4};

}  // namespace GaldrineBackupGraphLimitsV1
