#include "support/BackupSampleLibrary.hpp"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <string>

#include "writer/BackupPseudoRandom.hpp"
#include "platform/FileDescriptor.hpp"
#include "platform/Files.hpp"

namespace galdrine::testsupport {

namespace {

using Kind = format::BackupMediaKindV1;
using Role = format::BackupMediaResourceRoleV1;

constexpr std::uint64_t identifierStream = 0x6964656e74696669ULL;
constexpr std::uint64_t sizeStream = 0x73697a6573697a65ULL;
constexpr std::size_t materializePieceByteCount = 16 * 1024 * 1024;
constexpr std::int64_t minuteMilliseconds = 60000;

// Draws is the shape's stream of identifiers and sizes, consumed in a fixed order.
class Draws {
 public:
  explicit Draws(std::uint64_t seed) : seed_(seed) {}

  [[nodiscard]] format::BackupIdentifierV1 identifier() {
    format::BackupIdentifierV1 identifier{};
    writer::BackupPseudoRandom::fill(seed_ ^ identifierStream, 16 * identifiers_++, identifier);
    return identifier;
  }
  [[nodiscard]] std::uint64_t size(const BackupSampleByteRange& range) {
    const std::uint64_t span = range.maximum - range.minimum + 1;
    return range.minimum + writer::BackupPseudoRandom::word(seed_ ^ sizeStream, sizes_++) % span;
  }
  [[nodiscard]] std::uint64_t contentSeed() { return writer::BackupPseudoRandom::word(seed_, contents_++); }

 private:
  std::uint64_t seed_;
  std::uint64_t identifiers_ = 0;
  std::uint64_t sizes_ = 0;
  std::uint64_t contents_ = 0;
};

[[nodiscard]] writer::BackupResourceDescription resource(Draws& draws, Role role, std::string_view type,
                                                           std::uint64_t byteCount, bool moving) {
  writer::BackupResourceDescription resource;
  resource.identifier = draws.identifier();
  resource.role = role;
  resource.uniformTypeIdentifier = type;
  resource.pixelSize = writer::BackupPixelSize{4032, 3024};
  if (moving) resource.durationSeconds = 2.5;
  resource.content = BackupSampleLibrary::content(draws.contentSeed(), byteCount);
  return resource;
}

[[nodiscard]] writer::BackupItemDescription item(Draws& draws, Kind kind, std::size_t position,
                                                   const BackupSampleLibraryShape& shape) {
  writer::BackupItemDescription item;
  item.identifier = draws.identifier();
  item.kind = kind;
  item.displayDateUTCMilliseconds = shape.startUTCMilliseconds + static_cast<std::int64_t>(position) * minuteMilliseconds;
  item.displayTimeZoneSeconds = 3600;
  item.importDateUTCMilliseconds = item.displayDateUTCMilliseconds + minuteMilliseconds / 2;
  item.favorite = position % 3 == 0;
  std::string number = std::to_string(1000 + position);
  switch (kind) {
    case Kind::photo:
      item.originalFilename = "IMG_" + number + ".JPG";
      item.resources.push_back(resource(draws, Role::primary, "public.jpeg", draws.size(shape.photoByteRange), false));
      break;
    case Kind::livePhoto:
      item.originalFilename = "IMG_" + number + ".HEIC";
      item.resources.push_back(resource(draws, Role::primary, "public.heic", draws.size(shape.photoByteRange), false));
      item.resources.push_back(
          resource(draws, Role::pairedVideo, "com.apple.quicktime-movie", draws.size(shape.photoByteRange), true));
      break;
    case Kind::video:
      item.originalFilename = "MOV_" + number + ".MOV";
      item.resources.push_back(
          resource(draws, Role::primary, "com.apple.quicktime-movie", draws.size(shape.videoByteRange), true));
      break;
  }
  return item;
}

void arrange(writer::BackupLibrarySnapshot& library, Draws& draws, const BackupSampleLibraryShape& shape) {
  for (std::size_t position = 0; position < shape.folderCount; ++position) {
    writer::BackupFolderDescription folder{draws.identifier(), std::nullopt, "Folder " + std::to_string(position + 1),
                                             static_cast<std::int64_t>(position)};
    if (position > 0) folder.parentFolderIdentifier = library.folders.back().identifier;
    library.folders.push_back(std::move(folder));
  }
  for (std::size_t position = 0; position < shape.albumCount; ++position) {
    writer::BackupAlbumDescription album;
    album.identifier = draws.identifier();
    album.name = "Album " + std::to_string(position + 1);
    if (position % 2 == 0 && !library.folders.empty()) album.parentFolderIdentifier = library.folders.back().identifier;
    album.sortMode = static_cast<format::BackupAlbumSortModeV1>(position % 5);
    album.manualOrderEnabled = album.sortMode == format::BackupAlbumSortModeV1::manual;
    album.manualPosition = static_cast<std::int64_t>(position);
    for (std::size_t member = position; member < library.items.size(); member += shape.albumCount) {
      if (!album.coverItemIdentifier) album.coverItemIdentifier = library.items[member].identifier;
      library.memberships.push_back({album.identifier, library.items[member].identifier,
                                     static_cast<std::int64_t>(member), shape.startUTCMilliseconds});
    }
    library.albums.push_back(std::move(album));
  }
  for (std::size_t position = 0; position < shape.tombstoneCount; ++position) {
    writer::BackupTombstoneDescription tombstone{draws.identifier(), shape.startUTCMilliseconds, {}};
    for (std::size_t resource = 0; resource < position % 3; ++resource)
      tombstone.resourceIdentifiers.push_back(draws.identifier());
    library.tombstones.push_back(std::move(tombstone));
  }
}

[[nodiscard]] std::expected<void, platform::FileError> writeContent(const std::filesystem::path& file,
                                                                         const writer::BackupContentSource& source) {
  auto reader = writer::BackupContentReader::open(source);
  if (!reader) return std::unexpected(platform::FileError{EIO});
  auto output = platform::FileDescriptor::open(file, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0644);
  if (!output) return std::unexpected(output.error());
  Bytes piece(static_cast<std::size_t>(std::min<std::uint64_t>(materializePieceByteCount, reader->byteCount())));
  while (reader->position() < reader->byteCount()) {
    const auto count =
        static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), reader->byteCount() - reader->position()));
    if (!reader->read(std::span(piece.data(), count))) return std::unexpected(platform::FileError{EIO});
    if (auto done = platform::Files::writeAll(output->get(), ByteView(piece.data(), count)); !done) return done;
  }
  return output->close();
}

}  // namespace

namespace BackupSampleLibrary {

writer::BackupContentSource content(std::uint64_t seed, std::uint64_t byteCount) {
  return writer::BackupContentSource::generated(byteCount, [seed](std::uint64_t offset, std::span<std::uint8_t> into) {
    writer::BackupPseudoRandom::fill(seed, offset, into);
  });
}

Bytes bytes(std::uint64_t seed, std::uint64_t byteCount) {
  Bytes bytes(static_cast<std::size_t>(byteCount));
  writer::BackupPseudoRandom::fill(seed, 0, bytes);
  return bytes;
}

writer::BackupLibrarySnapshot make(const BackupSampleLibraryShape& shape) {
  Draws draws(shape.seed);
  writer::BackupLibrarySnapshot library;
  std::size_t position = 0;
  for (std::size_t count = 0; count < shape.photoCount; ++count) library.items.push_back(item(draws, Kind::photo, position++, shape));
  for (std::size_t count = 0; count < shape.livePhotoCount; ++count)
    library.items.push_back(item(draws, Kind::livePhoto, position++, shape));
  for (std::size_t count = 0; count < shape.videoCount; ++count) library.items.push_back(item(draws, Kind::video, position++, shape));
  arrange(library, draws, shape);
  return library;
}

std::expected<writer::BackupLibrarySnapshot, platform::FileError> materialize(
    const writer::BackupLibrarySnapshot& library, const std::filesystem::path& directory) {
  writer::BackupLibrarySnapshot onDisk = library;
  for (auto& item : onDisk.items) {
    for (auto& resource : item.resources) {
      const std::filesystem::path file = directory / (ByteText::lowerHex(resource.identifier) + ".bin");
      if (auto done = writeContent(file, resource.content); !done) return std::unexpected(done.error());
      resource.content = writer::BackupContentSource::file(file);
    }
  }
  return onDisk;
}

}  // namespace BackupSampleLibrary

}  // namespace galdrine::testsupport
