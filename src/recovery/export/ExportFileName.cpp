#include "recovery/export/ExportFileName.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "platform/FileNameParts.hpp"
#include "platform/GraphemeClusters.hpp"
#include "platform/UnicodeScalars.hpp"
#include "platform/UnicodeText.hpp"
#include "platform/UniformType.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryExporterError;

[[nodiscard]] std::unexpected<Error> integrityFailure() { return std::unexpected(Error::integrityFailure); }

// Scalars that some file system reads as structure, besides the control characters.
constexpr std::u32string_view replacedScalars = U"<>:\"/\\|?*";
constexpr char32_t replacement = U'_';

// Names that Windows gives to devices whatever extension follows them.
constexpr std::array<std::string_view, 22> reservedDeviceNames{
    "CON",  "PRN",  "AUX",  "NUL",  "COM1", "COM2", "COM3", "COM4", "COM5", "COM6", "COM7",
    "COM8", "COM9", "LPT1", "LPT2", "LPT3", "LPT4", "LPT5", "LPT6", "LPT7", "LPT8", "LPT9"};

constexpr std::string_view fallbackExtension = "bin";

[[nodiscard]] std::string_view roleWord(format::BackupMediaResourceRoleV1 role) {
  switch (role) {
    case format::BackupMediaResourceRoleV1::primary:
      return "current";
    case format::BackupMediaResourceRoleV1::pairedVideo:
      return "motion";
    case format::BackupMediaResourceRoleV1::original:
      return "original";
    case format::BackupMediaResourceRoleV1::rendered:
      return "rendered";
  }
  std::unreachable();
}

// cleanedName is the original name in Form C with every scalar a file system could read as
// structure replaced, whitespace trimmed, and trailing dots and spaces removed.
[[nodiscard]] std::expected<std::string, Error> cleanedName(std::string_view originalFilename) {
  const auto normalized = platform::UnicodeText::normalizedNFC(originalFilename);
  if (!normalized) return integrityFailure();
  auto scalars = platform::UnicodeScalars::scalars(*normalized);
  if (!scalars) return integrityFailure();
  for (char32_t& scalar : *scalars) {
    if (platform::UnicodeScalars::isControl(scalar) || replacedScalars.find(scalar) != std::u32string_view::npos) {
      scalar = replacement;
    }
  }
  const std::string replaced = platform::UnicodeScalars::utf8(*scalars);
  std::string_view cleaned = platform::UnicodeScalars::trimmingWhiteSpace(replaced);
  while (!cleaned.empty() && (cleaned.back() == '.' || cleaned.back() == ' ')) cleaned.remove_suffix(1);
  return std::string(cleaned);
}

// Only ASCII letters are upper-cased here. That equals a full Unicode upper-casing for this
// test: the reserved names are ASCII, and the only other letters whose upper case is ASCII
// (dotless i and long s) upper-case to letters no reserved name holds.
[[nodiscard]] bool isReservedDeviceName(std::string_view stem) {
  std::string upper(stem);
  for (char& character : upper) {
    if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
  }
  return std::ranges::find(reservedDeviceNames, upper) != reservedDeviceNames.end();
}

// chosenExtension keeps the original extension, with its case, when it is one of the type's
// tags ignoring case (compared in full case folding); otherwise it is the type's preferred
// extension, or "bin" when the type does not resolve or has none.
[[nodiscard]] std::expected<std::string, Error> chosenExtension(std::string_view originalExtension,
                                                                std::string_view uniformTypeIdentifier) {
  const auto type = platform::UniformType::fromIdentifier(uniformTypeIdentifier);
  if (!type) return std::string(fallbackExtension);
  if (!originalExtension.empty()) {
    const auto foldedOriginal = platform::UnicodeText::caseFolded(originalExtension);
    if (!foldedOriginal) return integrityFailure();
    for (const std::string_view tag : type->fileNameExtensionTags()) {
      const auto foldedTag = platform::UnicodeText::caseFolded(tag);
      if (!foldedTag) return integrityFailure();
      if (*foldedTag == *foldedOriginal) return std::string(originalExtension);
    }
  }
  return std::string(type->preferredFileNameExtension().value_or(fallbackExtension));
}

// preferredStem is the stem with its substitute for emptiness, its guard against device names
// and its role word, before it is cut to length.
[[nodiscard]] std::string preferredStem(std::string_view cleanedStem, const format::BackupMediaItemRecordV1& item,
                                        const format::BackupMediaResourceRecordV1& resource,
                                        bool hasMultipleResources) {
  std::string stem(cleanedStem);
  if (stem.empty()) stem = item.kind() == format::BackupMediaKindV1::video ? "Video" : "Photo";
  if (isReservedDeviceName(stem)) stem.insert(stem.begin(), '_');
  if (hasMultipleResources) {
    stem += '-';
    stem += roleWord(resource.role());
  }
  return stem;
}

}  // namespace

std::expected<std::string, Error> preferredFilename(const format::BackupMediaItemRecordV1& item,
                                                    const format::BackupMediaResourceRecordV1& resource,
                                                    bool hasMultipleResources) {
  const auto cleaned = cleanedName(item.originalFilename());
  if (!cleaned) return std::unexpected(cleaned.error());
  const platform::FileNameParts parts = platform::FileNameParts::split(*cleaned);
  const auto stem =
      truncated(preferredStem(parts.stem, item, resource, hasMultipleResources), maximumStemUTF8ByteCount);
  if (!stem) return std::unexpected(stem.error());
  const auto extension = chosenExtension(parts.extension, resource.originalUTI());
  if (!extension) return std::unexpected(extension.error());
  const auto keptExtension =
      platform::UnicodeScalars::keepingLettersAndNumbers(*extension, maximumExtensionScalarCount);
  if (!keptExtension) return integrityFailure();
  if (stem->empty() || keptExtension->empty()) return integrityFailure();
  return *stem + "." + *keptExtension;
}

std::expected<std::string, Error> truncated(std::string_view text, std::size_t maximumUTF8ByteCount) {
  const auto prefix = platform::GraphemeClusters::truncatedToUTF8ByteCount(text, maximumUTF8ByteCount);
  if (!prefix) return integrityFailure();
  return std::string(*prefix);
}

std::expected<std::string, Error> comparisonKey(std::string_view name) {
  // Most names are ASCII, where Form C changes nothing, there are no marks to drop, and full
  // case folding is lower-casing A to Z: the same key, without the text services' cost.
  if (std::ranges::all_of(name, [](char character) { return static_cast<unsigned char>(character) < 0x80; })) {
    std::string key(name);
    for (char& character : key) {
      if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
    }
    return key;
  }
  const auto normalized = platform::UnicodeText::normalizedNFC(name);
  if (!normalized) return integrityFailure();
  auto folded = platform::UnicodeText::caseAndDiacriticFolded(*normalized);
  if (!folded) return integrityFailure();
  return std::move(*folded);
}

std::expected<std::string, Error> collisionSafeName(const std::string& name, std::uint64_t maximumAttempts,
                                                    UsedNames& usedNames, NextSuffixByName& nextSuffixByName) {
  const auto key = comparisonKey(name);
  if (!key) return std::unexpected(key.error());
  if (usedNames.insert(*key).second) {
    nextSuffixByName.insert_or_assign(*key, 2);
    return name;
  }
  const platform::FileNameParts parts = platform::FileNameParts::split(name);
  const auto next = nextSuffixByName.find(*key);
  std::uint64_t suffix = next == nextSuffixByName.end() ? 2 : next->second;
  for (std::uint64_t attempt = 0; attempt < maximumAttempts && suffix < std::numeric_limits<std::uint64_t>::max();
       ++attempt, ++suffix) {
    // A name without an extension gets none, rather than a trailing dot.
    std::string candidate = std::string(parts.stem) + "-" + std::to_string(suffix);
    if (!parts.extension.empty()) candidate.append(".").append(parts.extension);
    auto candidateKey = comparisonKey(candidate);
    if (!candidateKey) return std::unexpected(candidateKey.error());
    if (usedNames.insert(std::move(*candidateKey)).second) {
      nextSuffixByName.insert_or_assign(*key, suffix + 1);
      return candidate;
    }
  }
  return std::unexpected(Error::resourceLimitExceeded);
}

}  // namespace galdrine::recovery
