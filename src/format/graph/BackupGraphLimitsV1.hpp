#pragma once
// BackupGraphLimitsV1 holds the bounds of the backup graph records: field widths,
// counts, and the CBOR limits of each object, which apply to writing and reading alike.

#include <cstddef>
#include <cstdint>

#include "format/cbor/CBORLimits.hpp"
#include "format/header/BackupFormatV1.hpp"

namespace galdrine::format {

namespace BackupGraphLimitsV1 {

inline constexpr std::size_t identifierByteCount = BackupFormatV1::artifactIdentifierByteCount;
inline constexpr std::size_t digestByteCount = BackupFormatV1::digestByteCount;
inline constexpr std::size_t keyByteCount = 32;

// Each of the seven record counts of a manifest.
inline constexpr std::uint64_t maximumRecordCount = 2'000'000;
// A commit may acknowledge exactly this many alternate tips, not one more.
inline constexpr std::size_t maximumAcknowledgedTipCount = 256;

inline constexpr std::uint64_t maximumSectionCount = BackupFormatV1::maximumManifestSectionCount;
inline constexpr std::uint64_t maximumSectionRecordCount = BackupFormatV1::maximumManifestSectionRecordCount;
inline constexpr std::uint64_t maximumSectionOrdinal = maximumSectionCount - 1;

inline constexpr std::size_t minimumSortKeyByteCount = 1;
inline constexpr std::size_t maximumSortKeyByteCount = 32;
inline constexpr std::size_t minimumCanonicalRecordByteCount = 1;
inline constexpr std::size_t maximumCanonicalRecordByteCount = 1'048'576;

// Logical and encrypted byte totals of a snapshot or root.
inline constexpr std::uint64_t maximumByteTotal = std::uint64_t{1} << 40;

inline constexpr std::uint64_t graphDescriptorPlaintextLimit = BackupFormatV1::maximumGraphDescriptorPlaintextByteCount;
inline constexpr std::uint64_t manifestRootPlaintextLimit = BackupFormatV1::maximumManifestRootPlaintextByteCount;
inline constexpr std::uint64_t manifestSectionPlaintextLimit = BackupFormatV1::maximumManifestSectionPlaintextByteCount;

// Head, commit and snapshot.
inline constexpr CBORLimits graphDescriptor{65'536, 32, 256, 256, 4'096, 5};
// Manifest root, and the one array whose digest is a root's section-set digest.
inline constexpr CBORLimits manifestRoot{2'097'152, 32, 256, 4'096, 70'000, 5};
inline constexpr CBORLimits manifestSection{8'388'608, 1'048'576, 256, 4'096, 16'500, 4};

}  // namespace BackupGraphLimitsV1

}  // namespace galdrine::format
