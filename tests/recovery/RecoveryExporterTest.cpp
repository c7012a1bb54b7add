// The exporter on packages that the package writer made: a whole export read back byte for
// byte, the destination's standard form, the session's refusals in their order, every fault
// point, an empty plan, a resource whose bytes fail their final digest, and hostile names.

#include "recovery/export/RecoveryExporter.hpp"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "recovery/export/ExportFileName.hpp"
#include "recovery/export/ExportMapping.hpp"
#include "support/ExportTestSupport.hpp"
#include "support/RecoveryTestPackages.hpp"
#include "recovery/export/ResourcePlan.hpp"
#include "recovery/export/ResourceRecovery.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::recovery {

namespace {

using namespace testsupport::RecoveryTestPackages;
using namespace testsupport::ExportTestSupport;
using ExportError = RecoveryExporterError;
using FaultPoint = RecoveryExportFaultPoint;
using Written = writer::BackupWrittenCommit;
using Result = RecoveryExportResult;

[[nodiscard]] mode_t permissionsOf(const fs::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 ? (status.st_mode & 07777) : 0;
}

class ExporterPackageTest : public testing::Test {
 protected:
  [[nodiscard]] fs::path packagePath() const { return directory_ / "Library.galdrine"; }

  [[nodiscard]] Written write(const writer::BackupLibrarySnapshot& library) {
    auto written = writer_.writeCommit(library);
    if (!written) {
      ADD_FAILURE() << "writing failed: " << written.error().index();
      std::abort();
    }
    return std::move(*written);
  }

  [[nodiscard]] std::expected<Result, ExportError> exportTo(const fs::path& destination, const Written& written) const {
    return exportWithRecoveryKey(packagePath(), kRecoveryKey, bytesOf(written.commitIdentifier), destination);
  }

  testsupport::TemporaryDirectory directory_;
  Writer writer_ = createWithRecoveryKey(packagePath());
};

TEST_F(ExporterPackageTest, ExportsEveryResourceByteForByteBesideBothDocuments) {
  const auto library = testsupport::BackupSampleLibrary::make({.seed = 3});
  const Written first = write(library);
  static_cast<void>(write(testsupport::RecoveryTestPackages::library(9, 2)));  // a later commit; the first is exported
  const fs::path destination = directory_ / "Recovered";

  const auto result = exportTo(destination, first);
  ASSERT_TRUE(result.has_value()) << static_cast<int>(result.error());
  const auto resourceCount = static_cast<std::int64_t>(first.resources.size());
  const auto itemCount = static_cast<std::int64_t>(library.items.size());
  EXPECT_EQ(*result, (Result{destination, bytesOf(first.commitIdentifier), first.snapshot.identifier(),
                             RecoveryExportStatus::completed, itemCount, itemCount, resourceCount, resourceCount, 0}));

  EXPECT_EQ(entryNames(destination), (std::vector<std::string>{"All Items", "library-mapping.json", "recovery-report.json"}));
  EXPECT_EQ(entryNames(directory_.path()), (std::vector<std::string>{"Library.galdrine", "Recovered"}));
  const auto exported = readExport(destination);
  ASSERT_TRUE(exported.has_value());
  expectEveryRecoveredFileIsItsResource(*exported, contentsByIdentifier(library));
  EXPECT_EQ(exported->allItemsNames.size(), first.resources.size());
  EXPECT_EQ(exported->report.status, "completed");
  EXPECT_TRUE(exported->report.failures.empty());
  EXPECT_EQ(exported->mapping.selectedCommitIdentifier, ByteText::lowerHex(first.commitIdentifier));
  EXPECT_EQ(exported->mapping.tombstones.size(), library.tombstones.size());
  EXPECT_EQ(exported->mapping.albums.size(), library.albums.size());
  EXPECT_TRUE(exported->mappingText.ends_with('}') && exported->reportText.ends_with('}'));

  EXPECT_EQ(permissionsOf(destination), 0700u);
  EXPECT_EQ(permissionsOf(destination / "All Items"), 0700u);
  EXPECT_EQ(permissionsOf(destination / "recovery-report.json"), 0600u);
  EXPECT_EQ(permissionsOf(destination / exported->resources.begin()->second.plannedRelativePath), 0600u);
}

// The destination is checked before the package is even opened: none of these packages exist.
TEST_F(ExporterPackageTest, RefusesADestinationOutsideItsStandardForm) {
  const std::string root = directory_.path().string();
  const std::string refused[] = {"Recovered", root + "/./Recovered", root + "/sub/../Recovered", root + "/Recovered/",
                                 root + "//Recovered", root + "/.", ""};
  for (const std::string& destination : refused) {
    const auto result = exportWithRecoveryKey(directory_ / "Absent.galdrine", kRecoveryKey, Bytes(16, 1),
                                                        fs::path(destination));
    EXPECT_EQ(result, std::unexpected(ExportError::destinationUnavailable)) << destination;
  }
  EXPECT_EQ(entryNames(directory_.path()), std::vector<std::string>{"Library.galdrine"});
}

TEST_F(ExporterPackageTest, SessionRefusalsComeInTheirOrder) {
  const Written written = write(library(4, 2));
  const Bytes selected = bytesOf(written.commitIdentifier);
  Bytes wrongKey = kRecoveryKey;
  wrongKey[0] ^= 1;
  const struct {
    const char* name;
    fs::path package;
    Bytes key;
    Bytes selection;
    ExportError expected;
  } cases[] = {
      {"a selection of 15 bytes, before the package", directory_ / "Absent.galdrine", kRecoveryKey, Bytes(15, 1),
       ExportError::snapshotNotFound},
      {"no package", directory_ / "Absent.galdrine", kRecoveryKey, selected, ExportError::invalidPackage},
      {"a wrong key", packagePath(), wrongKey, selected, ExportError::unlockFailed},
      {"a key of 31 bytes", packagePath(), Bytes(31, 1), selected, ExportError::unlockFailed},
      {"an unknown commit, after unlocking", packagePath(), kRecoveryKey, Bytes(16, 0xEE), ExportError::snapshotNotFound},
  };
  for (const auto& refusal : cases) {
    const auto result = exportWithRecoveryKey(refusal.package, refusal.key, refusal.selection, directory_ / "Out");
    EXPECT_EQ(result, std::unexpected(refusal.expected)) << refusal.name;
    EXPECT_EQ(restoreSessionWithRecoveryKey(refusal.package, refusal.key, refusal.selection).error(),
              refusal.expected)
        << refusal.name;
  }
  EXPECT_EQ(entryNames(directory_.path()), std::vector<std::string>{"Library.galdrine"});
}

TEST_F(ExporterPackageTest, EveryFaultPointLeavesNeitherDestinationNorStaging) {
  const Written written = write(library(5, 3, 1));
  for (const FaultPoint point : {FaultPoint::afterStagingCreated, FaultPoint::afterFirstResourceAttempt,
                                 FaultPoint::beforeMetadata, FaultPoint::beforePublication}) {
    const auto result = exportWithRecoveryKey(packagePath(), kRecoveryKey, bytesOf(written.commitIdentifier),
                                                        directory_ / "Recovered", point);
    EXPECT_EQ(result, std::unexpected(ExportError::outputWriteFailed)) << static_cast<int>(point);
    EXPECT_EQ(entryNames(directory_.path()), std::vector<std::string>{"Library.galdrine"}) << static_cast<int>(point);
  }
}

TEST_F(ExporterPackageTest, AnEmptyPlanPublishesAnEmptyAllItemsAndNeverMeetsTheFirstAttempt) {
  const Written written = write(writer::BackupLibrarySnapshot{});
  const auto result = exportWithRecoveryKey(packagePath(), kRecoveryKey, bytesOf(written.commitIdentifier),
                                                      directory_ / "Recovered", FaultPoint::afterFirstResourceAttempt);
  ASSERT_TRUE(result.has_value()) << static_cast<int>(result.error());
  EXPECT_EQ(result->status, RecoveryExportStatus::completed);
  EXPECT_EQ(result->totalItemCount + result->totalResourceCount, 0);
  EXPECT_TRUE(entryNames(directory_ / "Recovered" / "All Items").empty());
}

// A resource record whose digest is not that of its parts: every part opens, the file is
// written whole, and only the final proof refuses it.
TEST_F(ExporterPackageTest, APayloadThatFailsItsFinalDigestLeavesNoFileAndKeepsItsPlannedPath) {
  const Written written = write(library(6, 1, 1));
  const auto session = restoreSessionWithRecoveryKey(packagePath(), kRecoveryKey, bytesOf(written.commitIdentifier));
  ASSERT_TRUE(session.has_value());
  const auto& plan = (*session)->plan();
  const auto video = std::ranges::find_if(plan, [](const auto& planned) { return planned.resource->parts().size() > 1; });
  ASSERT_NE(video, plan.end());
  const format::BackupMediaResourceRecordV1& original = *video->resource;
  platform::SHA256Digest otherDigest = original.plaintextSHA256();
  otherDigest[0] ^= 1;
  const auto altered = format::BackupMediaResourceRecordV1::make(
      {original.identifier(), original.itemIdentifier(), original.role(), original.originalUTI(),
       original.plaintextByteCount(), original.pixelWidth(), original.pixelHeight(), original.durationIEEE754Bits(),
       otherDigest, original.payloadKeyIdentifier(), original.parts()});
  ASSERT_TRUE(altered.has_value());

  const fs::path root = directory_ / "root";
  fs::create_directories(root / "All Items");
  const PlannedResource planned{video->item, &*altered, video->relativePath};
  const auto outcome = recover(planned, root, (*session)->reader().package(), (*session)->libraryDomainIdentifier(),
                                         (*session)->bpmk(), (*session)->model().payloadKeys, (*session)->availability());
  ASSERT_TRUE(outcome.has_value());
  const ResourceIssue finalProof{std::nullopt, ResourceFailureReason::payloadIntegrityFailure};
  EXPECT_EQ(*outcome, (ResourceOutcome{std::nullopt, {finalProof}}));
  EXPECT_TRUE(entryNames(root / "All Items").empty());

  ResourceOutcomes outcomes{{original.identifier(), *outcome}};
  for (const auto& other : plan) outcomes.try_emplace(other.resource->identifier(), ResourceOutcome{{}, {}});
  const auto mapping = mappingDocument({}, (*session)->model(), plan, outcomes);
  ASSERT_TRUE(mapping.has_value());
  const auto row = std::ranges::find_if(mapping->items, [&](const auto& item) {
    return item.identifier == ByteText::lowerHex(original.itemIdentifier());
  });
  ASSERT_NE(row, mapping->items.end());
  ASSERT_EQ(row->resources.size(), 1u);
  EXPECT_EQ(row->resources.front().plannedRelativePath, video->relativePath);
  EXPECT_FALSE(row->resources.front().recovered);
  EXPECT_FALSE(row->resources.front().recoveredSHA256.has_value());
}

// Names that would climb out, name a device, hide a control character, collide after folding
// or run past what a file system takes all land as safe, distinct, flat names in "All Items",
// and nothing is written anywhere else.
TEST_F(ExporterPackageTest, HostileNamesBecomeSafeFlatNamesInsideAllItems) {
  const std::string hostile[] = {
      "../../escape.jpg", "a/b/c.jpg", "..", ".", "\x01\x1b[31m\x7f.jpg", "\u202Egpj.exe", "CON.jpg", "nul", "Lpt9.png",
      "R\u00e9sum\u00e9.JPG", "resume.jpg", "RESUME.jpg", "a\\b:c*?.jpg", " .. . ", std::string(1024, 'x'),
      std::string(1020, 'y') + ".jpg", [] {
        std::string name;
        while (name.size() + 3 <= 1024) name += "\u540d";  // three bytes a character
        return name;
      }()};
  writer::BackupLibrarySnapshot library;
  for (std::size_t index = 0; index < std::size(hostile); ++index) {
    writer::BackupItemDescription item;
    item.identifier[0] = static_cast<std::uint8_t>(index + 1);
    item.originalFilename = hostile[index];
    writer::BackupResourceDescription resource;
    resource.identifier[1] = static_cast<std::uint8_t>(index + 1);
    resource.uniformTypeIdentifier = "public.jpeg";
    resource.content = testsupport::BackupSampleLibrary::content(index, 100 + index);
    item.resources.push_back(std::move(resource));
    library.items.push_back(std::move(item));
  }
  const Written written = write(library);
  const fs::path destination = directory_ / "Recovered";
  const auto files = [&] { return testsupport::BackupWriterTestSupport::filesUnder(directory_.path()); };
  const std::set<fs::path> before = files();

  const auto result = exportTo(destination, written);
  ASSERT_TRUE(result.has_value()) << static_cast<int>(result.error());
  const auto exported = readExport(destination);
  ASSERT_TRUE(exported.has_value());
  expectEveryRecoveredFileIsItsResource(*exported, contentsByIdentifier(library));
  ASSERT_EQ(exported->allItemsNames.size(), std::size(hostile));
  for (const std::string& name : exported->allItemsNames) {
    EXPECT_TRUE(name != "." && name != ".." && !name.contains('/') && !name.contains('\\') && name.size() <= 255) << name;
    EXPECT_TRUE(std::ranges::none_of(name, [](char byte) { return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f; }))
        << name;
  }
  std::set<std::string> folded;
  for (const std::string& name : exported->allItemsNames) {
    const auto key = comparisonKey(name);
    ASSERT_TRUE(key.has_value());
    EXPECT_TRUE(folded.insert(*key).second) << name;
  }
  std::set<fs::path> added;
  std::ranges::set_difference(files(), before, std::inserter(added, added.end()));
  for (const fs::path& file : added) EXPECT_TRUE(file.string().starts_with(destination.string() + "/")) << file;
  EXPECT_EQ(added.size(), std::size(hostile) + 2);
}

}  // namespace

}  // namespace galdrine::recovery
