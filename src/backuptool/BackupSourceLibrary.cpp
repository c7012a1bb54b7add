#include "backuptool/BackupSourceLibrary.hpp"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/FileNameParts.hpp"

namespace galdrine::backuptool {

namespace BackupSourceLibrary {
namespace {

using Error = BackupSourceIdentitiesError;
using Kind = BackupSourceIdentities::Kind;
using Identifier = format::BackupIdentifierV1;

// A planned item: its primary file and, for a live photo, the paired movie.
struct Pairing {
  const BackupSourceFile* primary;
  const BackupSourceFile* pairedVideo;
};

// pairings gives the directory's items in the order of their primary file's name.
[[nodiscard]] std::vector<Pairing> pairings(const BackupSourceDirectory& directory) {
  struct Stem {
    std::vector<const BackupSourceFile*> images;
    std::vector<const BackupSourceFile*> movies;
  };
  std::map<std::string_view, Stem> stems;
  for (const BackupSourceFile& file : directory.files) {
    Stem& stem = stems[platform::FileNameParts::split(file.name).stem];
    (file.isMovie ? stem.movies : stem.images).push_back(&file);
  }
  std::vector<Pairing> planned;
  for (const BackupSourceFile& file : directory.files) {
    const Stem& stem = stems[platform::FileNameParts::split(file.name).stem];
    const bool paired = stem.images.size() == 1 && stem.movies.size() == 1;
    if (!paired) {
      planned.push_back({&file, nullptr});
    } else if (!file.isMovie) {
      planned.push_back({&file, stem.movies.front()});
    }
  }
  return planned;
}

// yielding tells for each directory whether it, or any directory below it, holds media.
// Directories stand after their parent, so one pass from the end settles every one.
[[nodiscard]] std::vector<bool> yielding(const BackupSource& source) {
  std::vector<bool> yields(source.directories.size(), false);
  for (std::size_t index = source.directories.size(); index-- > 0;) {
    const BackupSourceDirectory& directory = source.directories[index];
    yields[index] = !directory.files.empty() ||
                    std::ranges::any_of(directory.subdirectories, [&](std::size_t child) { return yields[child]; });
  }
  return yields;
}

class Arrangement {
 public:
  Arrangement(const BackupSource& source, const BackupSourceIdentities& identities)
      : source_(source), identities_(identities), yields_(yielding(source)) {}

  [[nodiscard]] std::expected<writer::BackupLibrarySnapshot, Error> run() {
    const BackupSourceDirectory& root = source_.directories.front();
    for (const Pairing& pairing : pairings(root)) {
      if (auto made = item(pairing); !made) return std::unexpected(made.error());
    }
    if (auto done = children(root, std::nullopt, 0); !done) return std::unexpected(done.error());
    return std::move(library_);
  }

 private:
  [[nodiscard]] std::expected<void, Error> children(const BackupSourceDirectory& directory,
                                                    const std::optional<Identifier>& folder,
                                                    std::int64_t firstPosition) {
    std::int64_t position = firstPosition;
    for (const std::size_t child : directory.subdirectories) {
      if (!yields_[child]) continue;
      if (auto done = arrange(source_.directories[child], folder, position++); !done) return done;
    }
    return {};
  }

  // arrange places one directory below `parentFolder` at `position` among its siblings.
  [[nodiscard]] std::expected<void, Error> arrange(const BackupSourceDirectory& directory,
                                                   const std::optional<Identifier>& parentFolder,
                                                   std::int64_t position) {
    const bool holdsDirectories =
        std::ranges::any_of(directory.subdirectories, [&](std::size_t child) { return yields_[child]; });
    if (!holdsDirectories) return album(directory, parentFolder, position);
    const auto folder = identities_.identifier(Kind::folder, directory.relativePath);
    if (!folder) return std::unexpected(folder.error());
    library_.folders.push_back({*folder, parentFolder, directory.name, position});
    const bool ownAlbum = !directory.files.empty();
    if (ownAlbum) {
      if (auto done = album(directory, *folder, 0); !done) return done;
    }
    return children(directory, *folder, ownAlbum ? 1 : 0);
  }

  [[nodiscard]] std::expected<void, Error> album(const BackupSourceDirectory& directory,
                                                 const std::optional<Identifier>& parentFolder, std::int64_t position) {
    const auto identifier = identities_.identifier(Kind::album, directory.relativePath);
    if (!identifier) return std::unexpected(identifier.error());
    writer::BackupAlbumDescription album;
    album.identifier = *identifier;
    album.parentFolderIdentifier = parentFolder;
    album.name = directory.name;
    album.sortMode = format::BackupAlbumSortModeV1::displayDateAscending;
    album.manualPosition = position;
    library_.albums.push_back(std::move(album));
    std::int64_t member = 0;
    for (const Pairing& pairing : pairings(directory)) {
      const auto made = item(pairing);
      if (!made) return std::unexpected(made.error());
      library_.memberships.push_back({*identifier, (*made)->identifier, member++, (*made)->importDateUTCMilliseconds});
    }
    return {};
  }

  [[nodiscard]] std::expected<writer::BackupResourceDescription, Error> resource(
      const BackupSourceFile& file, format::BackupMediaResourceRoleV1 role) {
    const auto identifier = identities_.identifier(Kind::resource, file.relativePath);
    if (!identifier) return std::unexpected(identifier.error());
    writer::BackupResourceDescription resource;
    resource.identifier = *identifier;
    resource.role = role;
    resource.uniformTypeIdentifier = file.uniformTypeIdentifier;
    resource.content = writer::BackupContentSource::file(file.path);
    return resource;
  }

  // item adds the item of `pairing` and gives it back for its album's membership.
  [[nodiscard]] std::expected<const writer::BackupItemDescription*, Error> item(const Pairing& pairing) {
    const BackupSourceFile& primary = *pairing.primary;
    const auto identifier = identities_.identifier(Kind::item, primary.relativePath);
    if (!identifier) return std::unexpected(identifier.error());
    writer::BackupItemDescription item;
    item.identifier = *identifier;
    item.kind = pairing.pairedVideo != nullptr ? format::BackupMediaKindV1::livePhoto
                : primary.isMovie              ? format::BackupMediaKindV1::video
                                               : format::BackupMediaKindV1::photo;
    item.displayDateUTCMilliseconds = primary.modifiedAtUTCMilliseconds;
    item.dateSource = format::BackupMediaDateSourceV1::file;
    item.importDateUTCMilliseconds = primary.modifiedAtUTCMilliseconds;
    item.originalFilename = primary.name;
    item.sourceType = format::BackupMediaSourceTypeV1::files;
    auto primaryResource = resource(primary, format::BackupMediaResourceRoleV1::primary);
    if (!primaryResource) return std::unexpected(primaryResource.error());
    item.resources.push_back(std::move(*primaryResource));
    if (pairing.pairedVideo != nullptr) {
      auto paired = resource(*pairing.pairedVideo, format::BackupMediaResourceRoleV1::pairedVideo);
      if (!paired) return std::unexpected(paired.error());
      item.resources.push_back(std::move(*paired));
    }
    library_.items.push_back(std::move(item));
    return &library_.items.back();
  }

  const BackupSource& source_;
  const BackupSourceIdentities& identities_;
  std::vector<bool> yields_;
  writer::BackupLibrarySnapshot library_;
};

}  // namespace

std::expected<writer::BackupLibrarySnapshot, BackupSourceIdentitiesError> arrange(
    const BackupSource& source, const BackupSourceIdentities& identities) {
  return Arrangement(source, identities).run();
}

}  // namespace BackupSourceLibrary

}  // namespace galdrine::backuptool
