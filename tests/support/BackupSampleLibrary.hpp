#pragma once
// BackupSampleLibrary makes libraries for tests and benchmarks: photos, live photos
// (a photo with its paired video) and videos, with folders nested in a chain, albums in and out
// of folders with covers and members, and tombstones of deleted items. Everything follows from
// the shape's seed: identifiers, sizes, dates and content, whose bytes are computed piece by
// piece on demand, so a library of gigabytes costs no memory until it is written.
//
// The bytes are a reproducible stream: the SplitMix64 finaliser applied to a seeded counter,
// so any 8-byte word of a stream is computed on its own, at any offset, without state. They
// are not secret and must never serve as keys of a real backup.

#include <span>

#include "writer/BackupContentSource.hpp"
#include "writer/BackupLibrarySnapshot.hpp"

namespace galdrine::testsupport {

struct BackupSampleByteRange {
  std::uint64_t minimum = 1;
  std::uint64_t maximum = 1;  // inclusive; not below minimum
};

struct BackupSampleLibraryShape {
  std::uint64_t seed = 1;
  std::size_t photoCount = 4;
  std::size_t livePhotoCount = 2;
  std::size_t videoCount = 1;
  BackupSampleByteRange photoByteRange{1000, 4000};  // photos and both halves of live photos
  BackupSampleByteRange videoByteRange{5000, 9000};
  std::size_t folderCount = 2;  // a chain: each folder inside the one before
  std::size_t albumCount = 2;   // even albums in the deepest folder, odd ones at the top
  std::size_t tombstoneCount = 1;
  std::int64_t startUTCMilliseconds = 1700000000000;
};

namespace BackupSampleLibrary {

// fill writes the bytes of the stream of `seed` that start at byte `offset` over all of `into`.
void fill(std::uint64_t seed, std::uint64_t offset, std::span<std::uint8_t> into);

// content is `byteCount` reproducible bytes of the stream `seed`, produced when read.
[[nodiscard]] writer::BackupContentSource content(std::uint64_t seed, std::uint64_t byteCount);
// make builds the library of `shape`. Items come in the order photos, live photos, videos;
// album j holds every item whose position leaves remainder j when divided by the album count.
[[nodiscard]] writer::BackupLibrarySnapshot make(const BackupSampleLibraryShape& shape);

}  // namespace BackupSampleLibrary

}  // namespace galdrine::testsupport
