#pragma once
// Shared inputs of the payload tests: fixed identifiers and keys, plaintexts with a pattern,
// and a look at what a directory holds after a write.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

#include "format/payload/BackupPayloadV1.hpp"
#include "support/FileFixtures.hpp"

namespace galdrine::format {

inline void PrintTo(const BackupPayloadV1Error& error, std::ostream* out) {
  *out << "payload error " << static_cast<int>(error.code);
  if (error.faultPoint) *out << " at fault point " << static_cast<int>(*error.faultPoint);
}

inline void PrintTo(const BackupPayloadV1Failure& failure, std::ostream* out) {
  if (const auto* own = std::get_if<BackupPayloadV1Error>(&failure)) return PrintTo(*own, out);
  *out << "file error errno " << std::get<platform::FileError>(failure).errorNumber;
}

namespace BackupPayloadV1TestSupport {

namespace fs = std::filesystem;
using Error = BackupPayloadV1Error;
using Failure = BackupPayloadV1Failure;
using Input = BackupPackEntryInput;
namespace Payload = BackupPayloadV1;

[[nodiscard]] inline Bytes filled(std::size_t byteCount, std::uint8_t value) { return Bytes(byteCount, value); }

inline const Bytes kPackage = filled(16, 0x11);
inline const Bytes kLibrary = filled(16, 0x22);
inline const Bytes kKey = filled(32, 0x33);
inline const Bytes kOtherKey = filled(32, 0x34);

[[nodiscard]] inline Bytes identifier(std::uint8_t seed, std::size_t byteCount = 16) {
  Bytes bytes(byteCount);
  for (std::size_t index = 0; index < byteCount; ++index) bytes[index] = static_cast<std::uint8_t>(seed + 7 * index);
  return bytes;
}

[[nodiscard]] inline Bytes pattern(std::size_t byteCount, std::uint8_t seed) {
  Bytes bytes(byteCount);
  for (std::size_t index = 0; index < byteCount; ++index) bytes[index] = static_cast<std::uint8_t>(index * 31 + seed);
  return bytes;
}

// entries gives `count` entries with identifiers 1, 2, ... and plaintexts of `byteCount` bytes.
[[nodiscard]] inline std::vector<Input> entries(std::size_t count, std::size_t byteCount) {
  std::vector<Input> inputs;
  for (std::size_t index = 0; index < count; ++index) {
    const auto seed = static_cast<std::uint8_t>(index + 1);
    inputs.push_back({identifier(seed), pattern(byteCount, seed)});
  }
  return inputs;
}

[[nodiscard]] inline std::string segmentName(ByteView segmentIdentifier) {
  const auto name = Payload::packSegmentFileName(segmentIdentifier);
  return name ? *name : std::string("unnamed");
}

[[nodiscard]] inline std::string chunkName(ByteView chunkIdentifier) {
  const auto name = Payload::resourceChunkFileName(chunkIdentifier);
  return name ? *name : std::string("unnamed");
}

// namesIn lists a directory, sorted.
[[nodiscard]] inline std::vector<std::string> namesIn(const fs::path& directory) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory)) names.push_back(entry.path().filename().native());
  std::ranges::sort(names);
  return names;
}

// replaceFile removes the file before writing it anew: truncating a file in place makes some
// file systems flush it on close, which costs milliseconds in a loop of thousands.
inline void replaceFile(const fs::path& path, ByteView bytes) {
  fs::remove(path);
  testsupport::FileFixtures::writeFile(path, bytes);
}

[[nodiscard]] inline bool holdsStagingFile(const fs::path& directory) {
  return std::ranges::any_of(namesIn(directory), [](const std::string& name) { return name.ends_with(".partial"); });
}

}  // namespace BackupPayloadV1TestSupport

}  // namespace galdrine::format
