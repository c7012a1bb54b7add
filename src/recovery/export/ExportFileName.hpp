#pragma once
// ExportFileName gives each recovered resource one flat, safe file name for the "All Items"
// directory: built from the item's original name, cleaned of everything a file system could
// read as structure, capped in length, given an extension that fits the resource's type, and
// made unique among the names of one export, ignoring case and accents.
//
// Every preferred name, and every collision-safe name made from one, is a single path
// component: never empty, never "." or "..", free of "/", "\" and control characters, with a
// stem and an extension that are both non-empty.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "format/manifest/BackupMediaItemRecordV1.hpp"
#include "format/manifest/BackupMediaResourceRecordV1.hpp"
#include "recovery/export/RecoveryExporterError.hpp"

namespace galdrine::recovery {

// maximumStemUTF8ByteCount caps a stem, role word included, so that stem, a collision suffix
// and an extension of 16 characters stay within the 255 bytes of one name on common file
// systems.
inline constexpr std::size_t maximumStemUTF8ByteCount = 180;
inline constexpr std::size_t maximumExtensionScalarCount = 16;

// UsedNames holds the comparison keys of the names given so far; NextSuffixByName holds, for
// each name given, the collision suffix its next twin tries first.
using UsedNames = std::set<std::string, std::less<>>;
using NextSuffixByName = std::map<std::string, std::uint64_t, std::less<>>;

// preferredFilename builds the name of `resource` of `item`, in this order: the original name
// in Normalization Form C; control characters and < > : " / \ | ? * replaced by "_"; whitespace
// trimmed from both ends; trailing dots and spaces removed; split into stem and extension; an
// empty stem becomes "Video" for a video and "Photo" otherwise; a stem that is a reserved
// device name in any case gets a leading "_"; for an item of several resources, "-" and the
// resource's role word follow the stem; the stem is cut to 180 bytes of whole characters; the
// extension is the original one if it is one of the type's extension tags ignoring case, else
// the type's preferred one, else "bin", keeping only its first 16 letters and numbers. A text
// service failure, or a stem or extension left empty, is integrityFailure.
[[nodiscard]] std::expected<std::string, RecoveryExporterError> preferredFilename(
    const format::BackupMediaItemRecordV1& item, const format::BackupMediaResourceRecordV1& resource,
    bool hasMultipleResources);

// truncated gives the longest prefix of whole characters (extended grapheme clusters) of
// `text` that fits `maximumUTF8ByteCount` bytes; it may be shorter than the limit, or empty if
// the first character alone is longer. Text that is not UTF-8 is integrityFailure.
[[nodiscard]] std::expected<std::string, RecoveryExporterError> truncated(std::string_view text,
                                                                          std::size_t maximumUTF8ByteCount);

// comparisonKey is the form in which two names are the same name: Normalization Form C, then
// folded ignoring case and accents, so that "Résumé.JPG" and "resume.jpg" have one key.
[[nodiscard]] std::expected<std::string, RecoveryExporterError> comparisonKey(std::string_view name);

// collisionSafeName gives `name` itself if no name of the same comparison key was given
// before; otherwise the first free "stem-n.extension" (n from 2, continuing after the last
// suffix given for that key), within `maximumAttempts` tries, or resourceLimitExceeded. The
// key of the name returned is added to `usedNames` and never leaves it. A text service
// failure is integrityFailure. A suffix may take a stem past 180 bytes: it is not cut again.
[[nodiscard]] std::expected<std::string, RecoveryExporterError> collisionSafeName(const std::string& name,
                                                                                  std::uint64_t maximumAttempts,
                                                                                  UsedNames& usedNames,
                                                                                  NextSuffixByName& nextSuffixByName);

}  // namespace galdrine::recovery
