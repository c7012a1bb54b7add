#pragma once
// GaldrineBackupLibrarySnapshotV1 describes one state of a library as the writer is to store it:
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

#include "GaldrineBackupWriter/GaldrineBackupContentSourceV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupAlbumSortModeV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupIdentifierV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupMediaDateSourceV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupMediaKindV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupMediaLifecycleV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupMediaResourceRoleV1.hpp"
#include "GaldrineCryptoPrimitives/GaldrineBackupMediaSourceTypeV1.hpp"

struct GaldrineBackupPixelSizeV1 {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
};

// One file of an item: the photo, its paired video, an original or a rendering.
struct GaldrineBackupResourceDescriptionV1 {
  GaldrineBackupIdentifierV1 identifier{};
  GaldrineBackupMediaResourceRoleV1 role = GaldrineBackupMediaResourceRoleV1::primary;
  std::string uniformTypeIdentifier;  // the original file's type, such as "public.jpeg"
  std::optional<GaldrineBackupPixelSizeV1> pixelSize;
  std::optional<double> durationSeconds;
  GaldrineBackupContentSourceV1 content;
};

struct GaldrineBackupItemDescriptionV1 {
  GaldrineBackupIdentifierV1 identifier{};
  GaldrineBackupMediaKindV1 kind = GaldrineBackupMediaKindV1::photo;
  std::int64_t displayDateUTCMilliseconds = 0;
  std::optional<std::int64_t> displayTimeZoneSeconds;
  GaldrineBackupMediaDateSourceV1 dateSource = GaldrineBackupMediaDateSourceV1::embedded;
  std::int64_t importDateUTCMilliseconds = 0;
  std::string originalFilename;
  bool favorite = false;
  GaldrineBackupMediaLifecycleV1 lifecycle = GaldrineBackupMediaLifecycleV1::active;
  std::optional<std::int64_t> trashDateUTCMilliseconds;
  GaldrineBackupMediaSourceTypeV1 sourceType = GaldrineBackupMediaSourceTypeV1::files;
  bool entitlementCounted = false;
  std::vector<GaldrineBackupResourceDescriptionV1> resources;  // in any order
};

struct GaldrineBackupFolderDescriptionV1 {
  GaldrineBackupIdentifierV1 identifier{};
  std::optional<GaldrineBackupIdentifierV1> parentFolderIdentifier;
  std::string name;
  std::int64_t manualPosition = 0;
};

struct GaldrineBackupAlbumDescriptionV1 {
  GaldrineBackupIdentifierV1 identifier{};
  std::optional<GaldrineBackupIdentifierV1> parentFolderIdentifier;
  std::string name;
  std::optional<GaldrineBackupIdentifierV1> coverItemIdentifier;
  GaldrineBackupAlbumSortModeV1 sortMode = GaldrineBackupAlbumSortModeV1::manual;
  bool manualOrderEnabled = false;
  std::int64_t manualPosition = 0;
};

struct GaldrineBackupMembershipDescriptionV1 {
  GaldrineBackupIdentifierV1 albumIdentifier{};
  GaldrineBackupIdentifierV1 itemIdentifier{};
  std::int64_t manualPosition = 0;
  std::int64_t addedAtUTCMilliseconds = 0;
};

struct GaldrineBackupTombstoneDescriptionV1 {
  GaldrineBackupIdentifierV1 itemIdentifier{};
  std::int64_t deletedAtUTCMilliseconds = 0;
  std::vector<GaldrineBackupIdentifierV1> resourceIdentifiers;  // in any order, at most 8
};

struct GaldrineBackupLibrarySnapshotV1 {
  std::vector<GaldrineBackupFolderDescriptionV1> folders;
  std::vector<GaldrineBackupAlbumDescriptionV1> albums;
  std::vector<GaldrineBackupItemDescriptionV1> items;
  std::vector<GaldrineBackupMembershipDescriptionV1> memberships;
  std::vector<GaldrineBackupTombstoneDescriptionV1> tombstones;
};
