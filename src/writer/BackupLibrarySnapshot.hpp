#pragma once
// BackupLibrarySnapshot describes one state of a library as the writer is to store it:
// folders (nested through their parents), albums (in a folder or not), which items each album
// holds, the tombstones of deleted items, and the items with their resources and the content of
// each. It is plain data, filled in by the caller; the writer turns it into manifest records,
// whose own rules (and the manifest's rules across records) decide whether it can be written.
// Identifiers are the caller's: a library keeps them from one snapshot to the next, which is
// how an unchanged resource is recognised and keeps its payload.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "format/graph/BackupIdentifierV1.hpp"
#include "format/manifest/BackupAlbumRecordV1.hpp"
#include "format/manifest/BackupMediaItemRecordV1.hpp"
#include "format/manifest/BackupMediaResourceRecordV1.hpp"
#include "writer/BackupContentSource.hpp"

namespace galdrine::writer {

struct BackupPixelSize {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
};

// One file of an item: the photo, its paired video, an original or a rendering.
struct BackupResourceDescription {
  format::BackupIdentifierV1 identifier{};
  format::BackupMediaResourceRoleV1 role = format::BackupMediaResourceRoleV1::primary;
  std::string uniformTypeIdentifier;  // the original file's type, such as "public.jpeg"
  std::optional<BackupPixelSize> pixelSize;
  std::optional<double> durationSeconds;
  BackupContentSource content;
};

struct BackupItemDescription {
  format::BackupIdentifierV1 identifier{};
  format::BackupMediaKindV1 kind = format::BackupMediaKindV1::photo;
  std::int64_t displayDateUTCMilliseconds = 0;
  std::optional<std::int64_t> displayTimeZoneSeconds;
  format::BackupMediaDateSourceV1 dateSource = format::BackupMediaDateSourceV1::embedded;
  std::int64_t importDateUTCMilliseconds = 0;
  std::string originalFilename;
  bool favorite = false;
  format::BackupMediaLifecycleV1 lifecycle = format::BackupMediaLifecycleV1::active;
  std::optional<std::int64_t> trashDateUTCMilliseconds;
  format::BackupMediaSourceTypeV1 sourceType = format::BackupMediaSourceTypeV1::files;
  bool entitlementCounted = false;
  std::vector<BackupResourceDescription> resources;  // in any order
};

struct BackupFolderDescription {
  format::BackupIdentifierV1 identifier{};
  std::optional<format::BackupIdentifierV1> parentFolderIdentifier;
  std::string name;
  std::int64_t manualPosition = 0;
};

struct BackupAlbumDescription {
  format::BackupIdentifierV1 identifier{};
  std::optional<format::BackupIdentifierV1> parentFolderIdentifier;
  std::string name;
  std::optional<format::BackupIdentifierV1> coverItemIdentifier;
  format::BackupAlbumSortModeV1 sortMode = format::BackupAlbumSortModeV1::manual;
  bool manualOrderEnabled = false;
  std::int64_t manualPosition = 0;
};

struct BackupMembershipDescription {
  format::BackupIdentifierV1 albumIdentifier{};
  format::BackupIdentifierV1 itemIdentifier{};
  std::int64_t manualPosition = 0;
  std::int64_t addedAtUTCMilliseconds = 0;
};

struct BackupTombstoneDescription {
  format::BackupIdentifierV1 itemIdentifier{};
  std::int64_t deletedAtUTCMilliseconds = 0;
  std::vector<format::BackupIdentifierV1> resourceIdentifiers;  // in any order, at most 8
};

struct BackupLibrarySnapshot {
  std::vector<BackupFolderDescription> folders;
  std::vector<BackupAlbumDescription> albums;
  std::vector<BackupItemDescription> items;
  std::vector<BackupMembershipDescription> memberships;
  std::vector<BackupTombstoneDescription> tombstones;
};

}  // namespace galdrine::writer
