#include "support/BackupSampleLibrary.hpp"

#include <utility>

namespace galdrine::testsupport {

namespace {

using Kind = format::BackupMediaKindV1;
using Role = format::BackupMediaResourceRoleV1;

constexpr std::uint64_t identifierStream = 0x6964656e74696669ULL;
constexpr std::uint64_t sizeStream = 0x73697a6573697a65ULL;
constexpr std::int64_t minuteMilliseconds = 60000;

// word gives the 64-bit word at position `index` of the stream of `seed`.
[[nodiscard]] constexpr std::uint64_t word(std::uint64_t seed, std::uint64_t index) {
  std::uint64_t value = seed + (index + 1) * 0x9E3779B97F4A7C15ULL;
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
  return value ^ (value >> 31);
}

// Draws is the shape's streams of identifiers, sizes and content seeds, each consumed in order.
struct Draws {
  std::uint64_t seed;
  std::uint64_t identifiers = 0;
  std::uint64_t sizes = 0;
  std::uint64_t contents = 0;

  [[nodiscard]] format::BackupIdentifierV1 identifier() {
    format::BackupIdentifierV1 identifier{};
    BackupSampleLibrary::fill(seed ^ identifierStream, 16 * identifiers++, identifier);
    return identifier;
  }

  // resource adds to `item` one file whose size is drawn from `range`.
  void resource(writer::BackupItemDescription& item, Role role, std::string_view type,
                const BackupSampleByteRange& range, bool moving) {
    writer::BackupResourceDescription resource{
        identifier(), role, std::string(type), writer::BackupPixelSize{4032, 3024}, std::nullopt, {}};
    if (moving) resource.durationSeconds = 2.5;
    const std::uint64_t byteCount =
        range.minimum + word(seed ^ sizeStream, sizes++) % (range.maximum - range.minimum + 1);
    resource.content = BackupSampleLibrary::content(word(seed, contents++), byteCount);
    item.resources.push_back(std::move(resource));
  }
};

[[nodiscard]] writer::BackupItemDescription item(Draws& draws, Kind kind, std::size_t position,
                                                 const BackupSampleLibraryShape& shape) {
  writer::BackupItemDescription item;
  item.identifier = draws.identifier();
  item.kind = kind;
  item.displayDateUTCMilliseconds =
      shape.startUTCMilliseconds + static_cast<std::int64_t>(position) * minuteMilliseconds;
  item.displayTimeZoneSeconds = 3600;
  item.importDateUTCMilliseconds = item.displayDateUTCMilliseconds + minuteMilliseconds / 2;
  item.favorite = position % 3 == 0;
  const std::string number = std::to_string(1000 + position);
  constexpr std::string_view movie = "com.apple.quicktime-movie";
  if (kind == Kind::photo) {
    item.originalFilename = "IMG_" + number + ".JPG";
    draws.resource(item, Role::primary, "public.jpeg", shape.photoByteRange, false);
  } else if (kind == Kind::livePhoto) {
    item.originalFilename = "IMG_" + number + ".HEIC";
    draws.resource(item, Role::primary, "public.heic", shape.photoByteRange, false);
    draws.resource(item, Role::pairedVideo, movie, shape.photoByteRange, true);
  } else {
    item.originalFilename = "MOV_" + number + ".MOV";
    draws.resource(item, Role::primary, movie, shape.videoByteRange, true);
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
    writer::BackupAlbumDescription album{draws.identifier(),
                                         std::nullopt,
                                         "Album " + std::to_string(position + 1),
                                         std::nullopt,
                                         static_cast<format::BackupAlbumSortModeV1>(position % 5),
                                         false,
                                         static_cast<std::int64_t>(position)};
    if (position % 2 == 0 && !library.folders.empty()) album.parentFolderIdentifier = library.folders.back().identifier;
    album.manualOrderEnabled = album.sortMode == format::BackupAlbumSortModeV1::manual;
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

}  // namespace

namespace BackupSampleLibrary {

void fill(std::uint64_t seed, std::uint64_t offset, std::span<std::uint8_t> into) {
  // Each byte is taken from its word little-endian, whatever the machine's order: a piece
  // starting anywhere equals the same bytes of the whole stream.
  for (std::size_t written = 0; written < into.size();) {
    const std::uint64_t position = offset + written;
    const std::uint64_t value = word(seed, position / 8);
    for (std::uint64_t byte = position % 8; byte < 8 && written < into.size(); ++byte)
      into[written++] = static_cast<std::uint8_t>(value >> (8 * byte));
  }
}

writer::BackupContentSource content(std::uint64_t seed, std::uint64_t byteCount) {
  return writer::BackupContentSource::generated(
      byteCount, [seed](std::uint64_t offset, std::span<std::uint8_t> into) { fill(seed, offset, into); });
}

writer::BackupLibrarySnapshot make(const BackupSampleLibraryShape& shape) {
  Draws draws{shape.seed};
  writer::BackupLibrarySnapshot library;
  const std::pair<Kind, std::size_t> counts[] = {
      {Kind::photo, shape.photoCount}, {Kind::livePhoto, shape.livePhotoCount}, {Kind::video, shape.videoCount}};
  for (const auto& [kind, count] : counts) {
    for (std::size_t made = 0; made < count; ++made)
      library.items.push_back(item(draws, kind, library.items.size(), shape));
  }
  arrange(library, draws, shape);
  return library;
}

}  // namespace BackupSampleLibrary

}  // namespace galdrine::testsupport
