#pragma once
// Helpers of the export suites: an export read back through its own mapping document (which
// resource was planned where, and what stands there), the library's contents by resource, and
// the names a directory holds.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "recovery/export/ExportDocumentText.hpp"
#include "support/BackupWriterTestSupport.hpp"
#include "support/FileFixtures.hpp"
#include "writer/BackupLibrarySnapshot.hpp"

namespace galdrine::testsupport::ExportTestSupport {

namespace fs = std::filesystem;

// entryNames lists a directory's names, hidden ones included, sorted; nothing for a directory
// that is not there.
[[nodiscard]] inline std::vector<std::string> entryNames(const fs::path& directory) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(directory, error)) names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  return names;
}

// contentsByIdentifier gives each resource of `library` its bytes, keyed by lower-case hex.
[[nodiscard]] inline std::map<std::string, Bytes> contentsByIdentifier(const writer::BackupLibrarySnapshot& library) {
  std::map<std::string, Bytes> contents;
  for (const auto& [identifier, bytes] : BackupWriterTestSupport::expectedContents(library)) {
    contents[ByteText::lowerHex(identifier)] = bytes;
  }
  return contents;
}

struct ExportedResource {
  bool recovered = false;
  std::optional<Bytes> bytes;  // what stands at the planned path, if anything
};

// Exported is a published export as its documents describe it.
struct Exported {
  recovery::MappingV1 mapping;
  recovery::ReportV1 report;
  std::map<std::string, ExportedResource> resources;  // by lower-case hex identifier
  std::vector<std::string> allItemsNames;
};

// readExport reads the two documents of the export at `destination` and what stands at every
// planned path; it fails the test and gives nothing when a document does not read back.
[[nodiscard]] inline std::optional<Exported> readExport(const fs::path& destination) {
  const auto textOf = [&](const char* name) {
    const Bytes bytes = FileFixtures::readFile(destination / name);
    return std::string(bytes.begin(), bytes.end());
  };
  auto mapping = recovery::mappingFromDocumentText(textOf("library-mapping.json"));
  auto report = recovery::reportFromDocumentText(textOf("recovery-report.json"));
  if (!mapping || !report) {
    ADD_FAILURE() << "the documents of " << destination << " do not read back";
    return std::nullopt;
  }
  Exported exported{std::move(*mapping), std::move(*report), {}, entryNames(destination / "All Items")};
  for (const auto& item : exported.mapping.items) {
    for (const auto& resource : item.resources) {
      const fs::path file = destination / resource.plannedRelativePath;
      std::optional<Bytes> bytes;
      if (fs::is_regular_file(fs::symlink_status(file))) bytes = FileFixtures::readFile(file);
      exported.resources[resource.identifier] = {resource.recovered, std::move(bytes)};
    }
  }
  return exported;
}

// expectEveryRecoveredFileIsItsResource: a resource the mapping calls recovered stands at its
// planned path with exactly its bytes; any other has no file; and "All Items" holds nothing
// but recovered resources.
inline void expectEveryRecoveredFileIsItsResource(const Exported& exported,
                                                  const std::map<std::string, Bytes>& contents) {
  std::size_t recovered = 0;
  for (const auto& [identifier, resource] : exported.resources) {
    const auto expected = contents.find(identifier);
    ASSERT_NE(expected, contents.end()) << identifier;
    EXPECT_EQ(resource.bytes, resource.recovered ? std::optional(expected->second) : std::nullopt) << identifier;
    recovered += resource.recovered ? 1 : 0;
  }
  EXPECT_EQ(exported.allItemsNames.size(), recovered);
}

}  // namespace galdrine::testsupport::ExportTestSupport
