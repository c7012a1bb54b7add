#pragma once
// MappingV1 is "library-mapping.json": the whole library of the exported snapshot (folders,
// albums, memberships, items with their resources, tombstones) with the path each resource was
// planned at and whether it was recovered. Media lie flat in "All Items", so this document is
// the only place that keeps albums and their order; a later import can rebuild the library
// from it.
//
// Identifiers and digests are lower-case hexadecimal text, enumerations are their document
// texts, and lists keep the model's order. An absent optional has no key in the JSON text.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace galdrine::recovery {

struct MappingV1 {
  static constexpr std::string_view currentSchemaIdentifier = "com.galdrine.recovery.export-mapping.v1";
  static constexpr std::string_view allItemsFolderStrategy = "all-items-once-album-mapping";

  struct Folder {
    std::string identifier;
    std::optional<std::string> parentIdentifier;
    std::string name;
    std::int64_t manualPosition = 0;

    friend bool operator==(const Folder&, const Folder&) = default;
  };

  struct Album {
    std::string identifier;
    std::optional<std::string> parentFolderIdentifier;
    std::string name;
    std::optional<std::string> coverItemIdentifier;
    std::string sortMode;
    bool manualOrderEnabled = false;
    std::int64_t manualPosition = 0;

    friend bool operator==(const Album&, const Album&) = default;
  };

  struct Membership {
    std::string albumIdentifier;
    std::string itemIdentifier;
    std::int64_t manualPosition = 0;
    std::int64_t addedAtUTCMilliseconds = 0;

    friend bool operator==(const Membership&, const Membership&) = default;
  };

  struct Resource {
    std::string identifier;
    std::string role;
    std::string originalUTI;
    std::uint64_t plaintextByteCount = 0;
    std::optional<std::uint64_t> pixelWidth;
    std::optional<std::uint64_t> pixelHeight;
    std::optional<double> durationSeconds;
    std::string expectedPlaintextSHA256;
    std::string plannedRelativePath;
    bool recovered = false;
    std::optional<std::string> recoveredSHA256;  // present only for a recovered resource

    friend bool operator==(const Resource&, const Resource&) = default;
  };

  struct Item {
    std::string identifier;
    std::string kind;
    std::int64_t displayDateUTCMilliseconds = 0;
    std::optional<std::int64_t> displayTimeZoneSeconds;
    std::string dateSource;
    std::int64_t importDateUTCMilliseconds = 0;
    std::string originalFilename;  // the record's name, not the planned one
    bool favorite = false;
    std::string lifecycle;
    std::optional<std::int64_t> trashDateUTCMilliseconds;
    std::string sourceType;
    bool entitlementCounted = false;
    std::string status;  // "recovered", "partially-recovered" or "unavailable"
    std::vector<Resource> resources;

    friend bool operator==(const Item&, const Item&) = default;
  };

  struct Tombstone {
    std::string itemIdentifier;
    std::int64_t deletedAtUTCMilliseconds = 0;
    std::vector<std::string> resourceIdentifiers;

    friend bool operator==(const Tombstone&, const Tombstone&) = default;
  };

  std::string schemaIdentifier;
  std::string backupFormatIdentifier;
  std::uint64_t backupFormatVersion = 0;
  std::string selectedCommitIdentifier;
  std::string selectedSnapshotIdentifier;
  std::int64_t snapshotCreatedAtUTCMilliseconds = 0;
  std::string folderStrategy;
  std::vector<Folder> folders;
  std::vector<Album> albums;
  std::vector<Membership> memberships;
  std::vector<Item> items;
  std::vector<Tombstone> tombstones;

  friend bool operator==(const MappingV1&, const MappingV1&) = default;
};

}  // namespace galdrine::recovery
