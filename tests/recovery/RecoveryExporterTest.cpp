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
#include "recovery/export/ResourceRecovery.hpp"
#include "support/ExportTestSupport.hpp"
#include "support/RecoveryTestPackages.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::recovery {

namespace {

using namespace testsupport::RecoveryTestPackages;
using namespace testsupport::ExportTestSupport;
using ExportError = RecoveryExporterError;
using FaultPoint = RecoveryExportFaultPoint;
using Result = RecoveryExportResult;

[[nodiscard]] mode_t permissionsOf(const fs::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 ? (status.st_mode & 07777) : 0;
}

class ExporterPackageTest : public testing::Test {
 protected:
  [[nodiscard]] fs::path packagePath() const { return directory_ / "Library.galdrine"; }
  [[nodiscard]] std::vector<std::string> namesBeside() const { return entryNames(directory_.path()); }

  testsupport::TemporaryDirectory directory_;
  Writer writer_ = createWithRecoveryKey(packagePath());
};

TEST_F(ExporterPackageTest, ExportsEveryResourceByteForByteBesideBothDocuments) {
  const auto library = testsupport::BackupSampleLibrary::make({.seed = 3});
  const auto first = writer_.writeCommit(library);
  ASSERT_TRUE(first && writer_.writeCommit(
                           testsupport::RecoveryTestPackages::library(9, 2)));  // a later commit; the first is exported
  const fs::path destination = directory_ / "Recovered";

  const auto result = exportWithRecoveryKey(packagePath(), kRecoveryKey, bytesOf(first->commitIdentifier), destination);
  const auto resourceCount = static_cast<std::int64_t>(first->resources.size());
  const auto itemCount = static_cast<std::int64_t>(library.items.size());
  EXPECT_EQ(result, (Result{destination, bytesOf(first->commitIdentifier), first->snapshot.identifier(),
                            RecoveryExportStatus::completed, itemCount, itemCount, resourceCount, resourceCount, 0}));
  EXPECT_EQ(entryNames(destination),
            (std::vector<std::string>{"All Items", "library-mapping.json", "recovery-report.json"}));
  EXPECT_EQ(namesBeside(), (std::vector<std::string>{"Library.galdrine", "Recovered"}));
  const auto exported = readExport(destination);
  ASSERT_TRUE(exported.has_value());
  expectEveryRecoveredFileIsItsResource(*exported, contentsByIdentifier(library));
  EXPECT_EQ(exported->allItemsNames.size(), first->resources.size());
  EXPECT_EQ(exported->mapping.selectedCommitIdentifier, ByteText::lowerHex(first->commitIdentifier));
  for (const char* name : {"", "All Items"}) EXPECT_EQ(permissionsOf(destination / name), 0700u) << name;
  for (const std::string& name :
       {std::string("recovery-report.json"), "All Items/" + exported->allItemsNames.front()}) {
    EXPECT_EQ(permissionsOf(destination / name), 0600u) << name;
  }
}

// Every refusal comes before the next step is taken: a destination outside its standard form
// before the package is even opened (none of these packages exist), a malformed selection
// before the package, then the package, the credential and the selection among the
// authenticated snapshots. A refused export leaves nothing beside the package.
TEST_F(ExporterPackageTest, RefusalsComeInTheirOrderAndLeaveNothing) {
  const std::string root = directory_.path().string();
  const std::vector<std::string> refused = {"Recovered",
                                            root + "/./Recovered",
                                            root + "/sub/../Recovered",
                                            root + "/Recovered/",
                                            root + "//Recovered",
                                            root + "/.",
                                            ""};
  for (const std::string& destination : refused) {
    EXPECT_EQ(exportWithRecoveryKey(directory_ / "Absent.galdrine", kRecoveryKey, Bytes(15, 1), fs::path(destination)),
              std::unexpected(ExportError::destinationUnavailable))
        << destination;
  }
  const auto written = writer_.writeCommit(library(4, 2));
  ASSERT_TRUE(written.has_value());
  const Bytes selected = bytesOf(written->commitIdentifier);
  Bytes wrongKey = kRecoveryKey;
  wrongKey[0] ^= 1;
  const struct {
    fs::path package;
    Bytes key;
    Bytes selection;
    ExportError expected;
  } cases[] = {
      {directory_ / "Absent.galdrine", kRecoveryKey, Bytes(15, 1), ExportError::snapshotNotFound},
      {directory_ / "Absent.galdrine", kRecoveryKey, selected, ExportError::invalidPackage},
      {packagePath(), wrongKey, selected, ExportError::unlockFailed},
      {packagePath(), Bytes(31, 1), selected, ExportError::unlockFailed},
      {packagePath(), kRecoveryKey, Bytes(16, 0xEE), ExportError::snapshotNotFound},
  };
  for (const auto& refusal : cases) {
    EXPECT_EQ(exportWithRecoveryKey(refusal.package, refusal.key, refusal.selection, directory_ / "Out"),
              std::unexpected(refusal.expected));
    EXPECT_EQ(restoreSessionWithRecoveryKey(refusal.package, refusal.key, refusal.selection).error(), refusal.expected);
  }
  EXPECT_EQ(namesBeside(), std::vector<std::string>{"Library.galdrine"});
}

TEST_F(ExporterPackageTest, EveryFaultPointLeavesNeitherDestinationNorStaging) {
  const auto written = writer_.writeCommit(library(5, 3, 1));
  ASSERT_TRUE(written.has_value());
  for (const FaultPoint point : {FaultPoint::afterStagingCreated, FaultPoint::afterFirstResourceAttempt,
                                 FaultPoint::beforeMetadata, FaultPoint::beforePublication}) {
    EXPECT_EQ(exportWithRecoveryKey(packagePath(), kRecoveryKey, bytesOf(written->commitIdentifier),
                                    directory_ / "Recovered", point),
              std::unexpected(ExportError::outputWriteFailed))
        << static_cast<int>(point);
    EXPECT_EQ(namesBeside(), std::vector<std::string>{"Library.galdrine"}) << static_cast<int>(point);
  }
}

TEST_F(ExporterPackageTest, AnEmptyPlanPublishesAnEmptyAllItemsAndNeverMeetsTheFirstAttempt) {
  const auto written = writer_.writeCommit(writer::BackupLibrarySnapshot{});
  ASSERT_TRUE(written.has_value());
  const auto result = exportWithRecoveryKey(packagePath(), kRecoveryKey, bytesOf(written->commitIdentifier),
                                            directory_ / "Recovered", FaultPoint::afterFirstResourceAttempt);
  ASSERT_TRUE(result.has_value()) << static_cast<int>(result.error());
  EXPECT_EQ(result->status, RecoveryExportStatus::completed);
  EXPECT_EQ(result->totalItemCount + result->totalResourceCount, 0);
  EXPECT_TRUE(entryNames(directory_ / "Recovered" / "All Items").empty());
}

// A resource record whose digest is not that of its parts: every part opens, the file is
// written whole, and only the final proof refuses it. (The mapping keeps a failed resource's
// planned path: the documents' suite.)
TEST_F(ExporterPackageTest, APayloadThatFailsItsFinalDigestLeavesNoFile) {
  const auto written = writer_.writeCommit(library(6, 1, 1));
  ASSERT_TRUE(written.has_value());
  const auto session = restoreSessionWithRecoveryKey(packagePath(), kRecoveryKey, bytesOf(written->commitIdentifier));
  ASSERT_TRUE(session.has_value());
  const auto& plan = (*session)->plan();
  const auto video =
      std::ranges::find_if(plan, [](const auto& planned) { return planned.resource->parts().size() > 1; });
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
  const auto outcome = recover({video->item, &*altered, video->relativePath}, root, (*session)->reader().package(),
                               (*session)->libraryDomainIdentifier(), (*session)->bpmk(),
                               (*session)->model().payloadKeys, (*session)->availability());
  EXPECT_EQ(outcome, (ResourceOutcome{std::nullopt, {{std::nullopt, ResourceFailureReason::payloadIntegrityFailure}}}));
  EXPECT_TRUE(entryNames(root / "All Items").empty());
}

// Names that would climb out, name a device, hide a control character, collide after folding
// or run past what a file system takes all land as safe, distinct, flat names in "All Items",
// and nothing is written anywhere else.
TEST_F(ExporterPackageTest, HostileNamesBecomeSafeFlatNamesInsideAllItems) {
  std::string wide;
  while (wide.size() + 3 <= 1024) wide += "\u540d";  // three bytes a character
  const std::string hostile[] = {"../../escape.jpg",
                                 "a/b/c.jpg",
                                 "..",
                                 ".",
                                 "\x01\x1b[31m\x7f.jpg",
                                 "\u202Egpj.exe",
                                 "CON.jpg",
                                 "nul",
                                 "Lpt9.png",
                                 "R\u00e9sum\u00e9.JPG",
                                 "resume.jpg",
                                 "RESUME.jpg",
                                 "a\\b:c*?.jpg",
                                 " .. . ",
                                 std::string(1024, 'x'),
                                 std::string(1020, 'y') + ".jpg",
                                 wide};
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
  const auto written = writer_.writeCommit(library);
  ASSERT_TRUE(written.has_value());
  const fs::path destination = directory_ / "Recovered";
  const std::set<fs::path> before = filesUnder(directory_.path());

  ASSERT_TRUE(exportWithRecoveryKey(packagePath(), kRecoveryKey, bytesOf(written->commitIdentifier), destination));
  const auto exported = readExport(destination);
  ASSERT_TRUE(exported.has_value());
  expectEveryRecoveredFileIsItsResource(*exported, contentsByIdentifier(library));
  ASSERT_EQ(exported->allItemsNames.size(), std::size(hostile));
  std::set<std::string> folded;
  for (const std::string& name : exported->allItemsNames) {
    EXPECT_TRUE(name != "." && name != ".." && !name.contains('/') && !name.contains('\\') && name.size() <= 255)
        << name;
    EXPECT_TRUE(folded.insert(comparisonKey(name).value_or("")).second) << name;
  }
  std::set<fs::path> added;
  std::ranges::set_difference(filesUnder(directory_.path()), before, std::inserter(added, added.end()));
  for (const fs::path& file : added) EXPECT_TRUE(file.string().starts_with(destination.string() + "/")) << file;
  EXPECT_EQ(added.size(), std::size(hostile) + 2);
}

}  // namespace

}  // namespace galdrine::recovery
