// From records to the plan of an export: the model's checks in their order, then every resource
// given a flat, unique path in the order the items list them. (The documents' suite shows the
// model sorted.)

#include "recovery/export/ResourcePlan.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "ExportTestRecords.hpp"
#include "recovery/export/ExportFileName.hpp"

namespace galdrine::recovery {

namespace {

namespace Records = testsupport::ManifestTestRecords;
using Error = RecoveryExporterError;
using Role = format::BackupMediaResourceRoleV1;
using Record = format::BackupManifestRecordV1;
using ExportTestRecords::item;
using ExportTestRecords::resource;

Record payloadKey(std::uint64_t number) {
  return Records::made(format::BackupPayloadKeyRecordV1::make(
      Records::payloadKeyFields(number, format::BackupPayloadKeyScopeV1::pack, 800)));
}

Record membership(std::uint64_t album, std::uint64_t item) {
  return Records::made(format::BackupAlbumMembershipRecordV1::make(Records::membershipFields(album, item)));
}

std::expected<std::vector<std::string>, Error> plannedPaths(std::vector<Record> records) {
  const auto model = exportModel(records);
  if (!model) return std::unexpected(model.error());
  const auto plan = resourcePlan(*model);
  if (!plan) return std::unexpected(plan.error());
  std::vector<std::string> paths;
  for (const auto& planned : *plan) paths.push_back(planned.relativePath);
  return paths;
}

// A repeated payload key is found first; the record count limit, here three, decides after it.
TEST(ExportModelTest, ARepeatedPayloadKeyComesBeforeTheRecordLimit) {
  std::vector<Record> records(4, membership(1, 2));
  EXPECT_TRUE(exportModel(std::span(records).first(3), 3).has_value());
  EXPECT_EQ(exportModel(records, 3).error(), Error::resourceLimitExceeded);
  records[0] = payloadKey(900);
  records.back() = payloadKey(900);
  EXPECT_EQ(exportModel(records, 3).error(), Error::integrityFailure);
  EXPECT_EQ(exportModel(records).error(), Error::integrityFailure);
}

TEST(ResourcePlanTest, PlansItemsInOrderAndResourcesInListedOrderUnderOneFlatDirectory) {
  EXPECT_EQ(plannedPaths({item(3, "a.jpg", {31}), item(1, "IMG.HEIC", {10, 11}, format::BackupMediaKindV1::livePhoto),
                          item(2, "A.JPG", {20}), item(4, "\xC3\xA4.jpg", {40}), resource(40, 4),
                          resource(11, 1, "com.apple.quicktime-movie", Role::pairedVideo), resource(20, 2),
                          resource(10, 1, "public.heic"), resource(31, 3)}),
            (std::vector<std::string>{"All Items/IMG-current.HEIC", "All Items/IMG-motion.mov", "All Items/A.JPG",
                                      "All Items/a-2.jpg", "All Items/\xC3\xA4-3.jpg"}));
  EXPECT_EQ(plannedPaths({}), std::vector<std::string>{});
}

TEST(ResourcePlanTest, ResourcesThatDoNotBelongWhereListedAreIntegrityFailures) {
  std::string longFirstCharacter = "a";
  for (int mark = 0; mark < 100; ++mark) longFirstCharacter += "\xCC\x81";
  const std::vector<Record> cases[] = {
      {item(1, "a.jpg", {10, 20}), item(2, "b.jpg", {20}), resource(10, 1),
       resource(20, 2)},                                           // another item's resource
      {item(1, "a.jpg", {10, 11}), resource(10, 1)},               // a listed resource missing
      {item(1, "a.jpg", {10}), resource(10, 1), resource(11, 1)},  // a resource no item lists
      {item(1, longFirstCharacter, {10}), resource(10, 1)},        // no stem fits
  };
  for (const auto& records : cases) EXPECT_EQ(plannedPaths(records), std::unexpected(Error::integrityFailure));
}

// The plan allows one more attempt than there are resources, which no set of names can use up:
// each failed attempt meets a different name already given.
TEST(ResourcePlanTest, NamesThatCollideEverywhereStillAllGetDistinctPaths) {
  const std::string names[] = {"a.jpg", "a-2.jpg", "A-3.JPG", "a-2-2.jpg", "\xC3\xA4.jpg"};
  std::vector<Record> records;
  for (std::uint64_t number = 1; number <= 200; ++number) {
    records.push_back(item(number, names[(number * 7) % 5], {1000 + number}));
    records.push_back(resource(1000 + number, number));
  }
  const auto paths = plannedPaths(records);
  ASSERT_TRUE(paths.has_value());
  std::set<std::string> keys;
  for (const auto& path : *paths) EXPECT_TRUE(keys.insert(*comparisonKey(path)).second) << path;
  EXPECT_EQ(keys.size(), 200u);
}

}  // namespace

}  // namespace galdrine::recovery
