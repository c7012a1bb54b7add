#include "format/payload/BackupPackContainerHeaderV1.hpp"

#include <algorithm>

#include "format/header/BackupFormatV1.hpp"
#include "format/payload/BackupPayloadV1.hpp"
#include "platform/ByteCursor.hpp"

namespace galdrine::format {

namespace {

using Header = BackupPackContainerHeaderV1;
using Error = BackupPayloadV1Error;

constexpr std::size_t versionByteCount = 2;
constexpr std::size_t reservedByteCount = 2;
constexpr std::size_t entryCountByteCount = 4;
constexpr std::size_t byteCountByteCount = 8;

template <std::size_t ByteCount>
std::uint8_t* appendBigEndian(std::uint8_t* output, std::uint64_t value) {
  for (std::size_t index = 0; index < ByteCount; ++index) {
    output[index] = static_cast<std::uint8_t>(value >> (8 * (ByteCount - 1 - index)));
  }
  return output + ByteCount;
}

}  // namespace

std::array<std::uint8_t, Header::encodedByteCount> Header::encoded() const {
  std::array<std::uint8_t, encodedByteCount> bytes{};
  std::uint8_t* output = std::ranges::copy(BackupFormatV1::packSegmentMagic, bytes.begin()).out;
  output = appendBigEndian<versionByteCount>(output, BackupFormatV1::packSegmentVersion);
  output = appendBigEndian<reservedByteCount>(output, 0);
  output = std::ranges::copy(segmentIdentifier, output).out;
  output = appendBigEndian<entryCountByteCount>(output, entryCount);
  output = appendBigEndian<byteCountByteCount>(output, entryAreaByteCount);
  appendBigEndian<byteCountByteCount>(output, indexFrameByteCount);
  return bytes;
}

std::expected<Header, Error> Header::decode(ByteView bytes) {
  if (bytes.size() != encodedByteCount) return std::unexpected(Error::invalidArtifact());
  // The size was checked, so every take below succeeds; the cursor keeps each read in bounds.
  platform::ByteCursor cursor(bytes);
  const auto magic = cursor.take(BackupFormatV1::packSegmentMagic.size());
  const auto version = cursor.takeBigEndian(versionByteCount);
  const auto reserved = cursor.takeBigEndian(reservedByteCount);
  if (!magic || !ByteOrder::equal(*magic, BackupFormatV1::packSegmentMagic) || !version ||
      *version != BackupFormatV1::packSegmentVersion || !reserved || *reserved != 0)
    return std::unexpected(Error::unsupportedContainer());

  Header header;
  const auto identifier = cursor.take(header.segmentIdentifier.size());
  const auto entryCount = cursor.takeBigEndian(entryCountByteCount);
  const auto entryAreaByteCount = cursor.takeBigEndian(byteCountByteCount);
  const auto indexFrameByteCount = cursor.takeBigEndian(byteCountByteCount);
  if (!identifier || !entryCount || !entryAreaByteCount || !indexFrameByteCount || !cursor.atEnd())
    return std::unexpected(Error::invalidArtifact());
  std::ranges::copy(*identifier, header.segmentIdentifier.begin());
  header.entryCount = static_cast<std::uint32_t>(*entryCount);  // four bytes always fit
  header.entryAreaByteCount = *entryAreaByteCount;
  header.indexFrameByteCount = *indexFrameByteCount;
  return header;
}

std::expected<void, Error> Header::validate(std::uint64_t fileByteCount) const {
  using BackupPayloadV1::maximumIndexFrameByteCount;
  const bool countsInRange = entryCount >= 1 && entryCount <= BackupFormatV1::maximumSegmentResourceCount &&
                             entryAreaByteCount != 0 && indexFrameByteCount >= 1 &&
                             indexFrameByteCount <= maximumIndexFrameByteCount;
  if (!countsInRange) return std::unexpected(Error::invalidArtifact());
  // The index frame is bounded above, so only the entry area can make the sum overflow.
  const std::uint64_t trailerByteCount = encodedByteCount + indexFrameByteCount;
  if (entryAreaByteCount > fileByteCount || fileByteCount - entryAreaByteCount != trailerByteCount)
    return std::unexpected(Error::invalidArtifact());
  return {};
}

}  // namespace galdrine::format
