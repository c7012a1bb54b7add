// The two documents of an export: the mapping and the report built from a model, a plan and
// the outcomes, their exact text, and reading them back.

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <string>
#include <vector>

#include "ExportTestRecords.hpp"
#include "recovery/export/ExportDocumentText.hpp"
#include "recovery/export/ExportMapping.hpp"
#include "recovery/export/ResourcePlan.hpp"

namespace galdrine::recovery {

namespace {

namespace Records = testsupport::ManifestTestRecords;
using Error = RecoveryExporterError;
using Reason = ResourceFailureReason;
using Role = format::BackupMediaResourceRoleV1;

using ExportTestRecords::digest;
using ExportTestRecords::identifier;
std::string hex(std::uint64_t number) { return ByteText::lowerHex(Records::identifier(number)); }

std::size_t occurrences(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// A library of three items: item 1 a live photo whose movie is missing, item 2 with a
// non-ASCII name, recovered, and item 3 whose pack key did not unwrap; two folders, two albums,
// two memberships and a tombstone. The records stand out of order, as a manifest may list them:
// the documents list everything by identifier.
struct ExportScene {
  ExportScene() {
    auto timeZoneZero = Records::itemFields(1, Records::identifiers({10, 11}));
    timeZoneZero.originalFilename = "a.jpg";
    timeZoneZero.displayTimeZoneSeconds = 0;
    timeZoneZero.kind = format::BackupMediaKindV1::livePhoto;
    auto noTimeZone = Records::itemFields(2, Records::identifiers({20}));
    noTimeZone.originalFilename = "\xC3\x84.jpg";
    noTimeZone.displayTimeZoneSeconds = std::nullopt;
    auto movie = Records::packedResourceFields(11, 1, 900, 801, 1);
    movie.originalUTI = "com.apple.quicktime-movie";
    movie.role = Role::pairedVideo;
    movie.durationIEEE754Bits = std::bit_cast<std::uint64_t>(2.5);
    auto folder = Records::folderFields(61, 60);
    auto album = Records::albumFields(70, 60, std::nullopt);
    album.name = "Sommer in K\xC3\xB6ln";
    using format::BackupAlbumFolderRecordV1, format::BackupAlbumRecordV1, format::BackupAlbumMembershipRecordV1;
    const std::vector<format::BackupManifestRecordV1> records = {
        ExportTestRecords::item(3, "b.jpg", {30}),
        Records::made(format::BackupMediaItemRecordV1::make(timeZoneZero)),
        Records::made(format::BackupMediaItemRecordV1::make(noTimeZone)),
        ExportTestRecords::resource(30, 3),
        ExportTestRecords::resource(10, 1),
        Records::made(format::BackupMediaResourceRecordV1::make(movie)),
        ExportTestRecords::resource(20, 2),
        Records::made(BackupAlbumFolderRecordV1::make(folder)),
        Records::made(BackupAlbumFolderRecordV1::make(Records::folderFields(60, std::nullopt))),
        Records::made(BackupAlbumRecordV1::make(Records::albumFields(71, std::nullopt, 1))),
        Records::made(BackupAlbumRecordV1::make(album)),
        Records::made(BackupAlbumMembershipRecordV1::make(Records::membershipFields(71, 2))),
        Records::made(BackupAlbumMembershipRecordV1::make(Records::membershipFields(70, 1))),
        Records::made(
            format::BackupTombstoneRecordV1::make(Records::tombstoneFields(5, Records::identifiers({50, 51})))),
    };
    model = *exportModel(records);
    plan = *resourcePlan(model);
    outcomes[identifier(10)] = {digest(10), {}};
    outcomes[identifier(11)] = {std::nullopt, {{identifier(801), Reason::missingPayload}}};
    outcomes[identifier(20)] = {digest(20), {}};
    outcomes[identifier(30)] = {std::nullopt, {{std::nullopt, Reason::payloadIntegrityFailure}}};
  }

  const ExportSelection selected{identifier(100), identifier(101), -1700000000000};
  ExportModel model;
  std::vector<PlannedResource> plan;
  ResourceOutcomes outcomes;
};

TEST(ExportDocuments, MappingCarriesTheSortedLibraryWithPlannedPathsAndItemStatus) {
  const ExportScene scene;
  const auto mapping = mappingDocument(scene.selected, scene.model, scene.plan, scene.outcomes);
  ASSERT_TRUE(mapping.has_value());
  EXPECT_EQ(mapping->schemaIdentifier, "com.galdrine.recovery.export-mapping.v1");
  EXPECT_EQ(mapping->selectedCommitIdentifier, hex(100));
  EXPECT_EQ(mapping->snapshotCreatedAtUTCMilliseconds, -1700000000000);
  ASSERT_EQ(mapping->items.size(), 3u);
  std::vector<std::string> statuses;
  for (const auto& item : mapping->items) statuses.push_back(item.status);
  EXPECT_EQ(statuses, (std::vector<std::string>{"partially-recovered", "recovered", "unavailable"}));
  EXPECT_EQ(mapping->items[0].kind, "live-photo");
  EXPECT_EQ(mapping->folders[0].identifier, hex(60));
  EXPECT_EQ(mapping->albums[0].identifier, hex(70));
  const auto& movie = mapping->items[0].resources[1];
  EXPECT_EQ(movie.plannedRelativePath, "All Items/a-motion.mov");  // a failed resource keeps its planned path
  EXPECT_TRUE(!movie.recovered && !movie.recoveredSHA256);
  EXPECT_EQ(mapping->items[1].resources[0].recoveredSHA256, ByteText::lowerHex(Records::digest(20)));
  EXPECT_EQ(mapping->memberships[0].albumIdentifier, hex(70));
  EXPECT_EQ(mapping->tombstones[0].resourceIdentifiers, (std::vector<std::string>{hex(50), hex(51)}));

  const auto text = documentText(*mapping);
  ASSERT_TRUE(text.has_value());
  EXPECT_NE(text->find("\"plannedRelativePath\": \"All Items/a-current.jpg\""), std::string::npos);
  EXPECT_NE(text->find("\"name\": \"Sommer in K\xC3\xB6ln\""), std::string::npos);
  EXPECT_NE(text->find("\"durationSeconds\": 2.5"), std::string::npos);
  EXPECT_EQ(occurrences(*text, "\"displayTimeZoneSeconds\": 0,"), 1u);  // zero is written, absent is left out
  EXPECT_EQ(occurrences(*text, "\"recoveredSHA256\""), 2u);
  EXPECT_EQ(occurrences(*text, "null"), 0u);
  EXPECT_EQ(occurrences(*text, "\\/"), 0u);
  EXPECT_EQ(text->back(), '}');
  EXPECT_EQ(*mappingFromDocumentText(*text), *mapping);
}

TEST(ExportDocuments, ReportListsOneRowPerIssueInPlanOrderAndIsCompletedWithoutOne) {
  ExportScene scene;
  const auto report = reportDocument(scene.selected, scene.model, scene.plan, scene.outcomes);
  ASSERT_TRUE(report.has_value());
  const auto text = documentText(*report);
  ASSERT_TRUE(text.has_value());
  EXPECT_EQ(*text, R"({
  "failedResourceCount": 2,
  "failures": [
    {
      "itemIdentifier": "0000000000000001a5a5a5a5a5a5a5a5",
      "payloadArtifactIdentifier": "0000000000000321a5a5a5a5a5a5a5a5",
      "reason": "missing-payload",
      "resourceIdentifier": "000000000000000ba5a5a5a5a5a5a5a5"
    },
    {
      "itemIdentifier": "0000000000000003a5a5a5a5a5a5a5a5",
      "reason": "payload-integrity-failure",
      "resourceIdentifier": "000000000000001ea5a5a5a5a5a5a5a5"
    }
  ],
  "recoveredItemCount": 1,
  "recoveredResourceCount": 2,
  "schemaIdentifier": "com.galdrine.recovery.export-report.v1",
  "selectedCommitIdentifier": "0000000000000064a5a5a5a5a5a5a5a5",
  "selectedSnapshotIdentifier": "0000000000000065a5a5a5a5a5a5a5a5",
  "status": "completed-with-issues",
  "totalItemCount": 3,
  "totalResourceCount": 4
})");
  EXPECT_EQ(*reportFromDocumentText(*text), *report);

  scene.outcomes[identifier(11)] = {digest(11), {}};
  scene.outcomes[identifier(30)] = {digest(30), {}};
  const auto clean = reportDocument(scene.selected, scene.model, scene.plan, scene.outcomes);
  ASSERT_TRUE(clean.has_value());
  EXPECT_EQ(clean->status, "completed");
  EXPECT_EQ(clean->recoveredItemCount, 3);
  EXPECT_NE(documentText(*clean)->find("\"failures\": [],"), std::string::npos);
}

// A resource without an outcome or a plan entry, and text that JSON cannot say (a NaN, bytes
// that are not UTF-8), give no document.
TEST(ExportDocuments, WhatADocumentCannotSayIsAnIntegrityFailure) {
  ExportScene scene;
  EXPECT_EQ(mappingDocument(scene.selected, scene.model, std::span(scene.plan).first(3), scene.outcomes).error(),
            Error::integrityFailure);
  scene.outcomes.erase(identifier(20));
  EXPECT_EQ(mappingDocument(scene.selected, scene.model, scene.plan, scene.outcomes).error(), Error::integrityFailure);
  EXPECT_EQ(reportDocument(scene.selected, scene.model, scene.plan, scene.outcomes).error(), Error::integrityFailure);
  MappingV1 mapping;
  mapping.items.resize(1);
  mapping.items[0].resources.resize(1);
  mapping.items[0].resources[0].durationSeconds = std::nan("");
  EXPECT_EQ(documentText(mapping).error(), Error::integrityFailure);
  ReportV1 report;
  report.status = "\xFF";
  EXPECT_EQ(documentText(report).error(), Error::integrityFailure);
}

// Reading back passes over keys it does not know and names the first problem, down to a
// failure row; the decoder's own cases are the platform suite's.
TEST(ExportDocuments, ReadingIgnoresUnknownKeysAndNamesTheFirstProblem) {
  const std::string valid = R"({"schemaIdentifier": "s", "status": "completed", "selectedCommitIdentifier": "c",
    "selectedSnapshotIdentifier": "d", "totalItemCount": 1, "recoveredItemCount": 1, "totalResourceCount": 1,
    "recoveredResourceCount": 1, "failedResourceCount": 0, "failures": [], "unknown": {"ignored": true}})";
  const auto replaced = [&](const std::string& from, const std::string& to) {
    std::string text = valid;
    return text.replace(text.find(from), from.size(), to);
  };
  ASSERT_TRUE(reportFromDocumentText(valid).has_value());
  EXPECT_EQ(reportFromDocumentText(replaced("\"status\"", "\"state\"")).error(),
            platform::JSONDocumentError::keyNotFound);
  EXPECT_EQ(reportFromDocumentText(replaced("\"totalItemCount\": 1", "\"totalItemCount\": \"1\"")).error(),
            platform::JSONDocumentError::typeMismatch);
  EXPECT_EQ(reportFromDocumentText(
                replaced("\"failures\": []", R"("failures": [{"itemIdentifier": "i", "resourceIdentifier": "r"}])"))
                .error(),
            platform::JSONDocumentError::keyNotFound);
}

}  // namespace

}  // namespace galdrine::recovery
