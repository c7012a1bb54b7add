#pragma once
// PayloadObservation is what one payload file turned out to be against its expectation:
// matching, missing, mismatched (wrong kind, length or digest), or unreadable (a link, a failed
// read, or a file that changed while it was hashed). A damaged payload file is data for the
// evidence, never a failure of the inspection.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <map>
#include <span>

#include "GaldrineCore/GaldrineBackupPackageV1.hpp"
#include "GaldrinePlatform/GaldrineBytes.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPackageInspectorV1Error.hpp"
#include "GaldrineRecoveryCore/GaldrineRecoveryPayloadReadObserverV1.hpp"
#include "GaldrineRecoveryCore/PayloadExpectation.hpp"

enum class PayloadObservation : std::uint8_t {
  matching,
  missing,
  mismatched,
  unreadable,
};

using PayloadObservationMap = std::map<Bytes, PayloadObservation>;

namespace PayloadObservations {

// Payload files are streamed in pieces of this size and never held whole.
inline constexpr std::size_t readPieceByteCount = 1'048'576;

// observePayloadFile looks at the file at `path`, in this order: lstat (ENOENT missing, any
// other error unreadable); open read-only without following a link (unreadable, so a link,
// dangling or not, is unreadable); fstat (mismatched); a regular file (mismatched); a size of
// 1 and equal to the expectation (mismatched); reads of at most one piece into `buffer`, hashed
// as they arrive, until a read gives nothing (a failed read, or more bytes than the size,
// unreadable); fstat again, which must succeed and show the same device, inode, size and
// modification time to the nanosecond, with as many bytes read as the first size
// (unreadable); the digest equal to the expectation's (matching, else mismatched). `buffer`
// must hold one piece. Nothing stays open.
[[nodiscard]] PayloadObservation observePayloadFile(const std::filesystem::path& path, const PayloadExpectation& expectation,
                                                    std::span<std::uint8_t> buffer,
                                                    const GaldrineRecoveryPayloadReadObserverV1& observer);

// observePayloadFiles observes each file of `expectations` once, in identifier order: a chunk
// under "objects", a pack segment under "packs", by its canonical file name. A directory that
// the package refuses or a name that cannot be formed ends the operation (integrityFailure).
[[nodiscard]] std::expected<PayloadObservationMap, GaldrineRecoveryPackageInspectorV1Error> observePayloadFiles(
    const PayloadExpectationMap& expectations, const GaldrineBackupPackageV1& package,
    const GaldrineRecoveryPayloadReadObserverV1& observer);

}  // namespace PayloadObservations
