#include "recovery/export/ResourcePlan.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "recovery/export/ExportFileName.hpp"
#include "ExportTestRecords.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryExporterError;
using Role = format::BackupMediaResourceRoleV1;
using ExportTestRecords::item;
using ExportTestRecords::resource;

ExportModel modelOf(std::vector<format::BackupMediaItemRecordV1> items,
                              std::vector<format::BackupMediaResourceRecordV1> resources) {
  std::vector<format::BackupManifestRecordV1> records;
  for (auto& record : items) records.emplace_back(std::move(record));
  for (auto& record : resources) records.emplace_back(std::move(record));
  auto model = exportModel(records);
  EXPECT_TRUE(model.has_value());
  return std::move(*model);
}

std::vector<std::string> pathsOf(const std::vector<PlannedResource>& plan) {
  std::vector<std::string> paths;
  for (const auto& planned : plan) paths.push_back(planned.relativePath);
  return paths;
}

TEST(ResourcePlan, PlansItemsInOrderAndResourcesInListedOrderUnderOneFlatDirectory) {
  const auto model = modelOf(
      {item(3, "a.jpg", {31}), item(1, "IMG.HEIC", {10, 11}, format::BackupMediaKindV1::livePhoto), item(2, "A.JPG", {20}),
       item(4, "\xC3\xA4.jpg", {40})},
      {resource(40, 4), resource(11, 1, "com.apple.quicktime-movie", Role::pairedVideo), resource(20, 2),
       resource(10, 1, "public.heic"), resource(31, 3)});
  const auto plan = resourcePlan(model);
  ASSERT_TRUE(plan.has_value());
  EXPECT_EQ(pathsOf(*plan), (std::vector<std::string>{"All Items/IMG-current.HEIC", "All Items/IMG-motion.mov",
                                                      "All Items/A.JPG", "All Items/a-2.jpg", "All Items/\xC3\xA4-3.jpg"}));
  ASSERT_EQ(plan->size(), 5u);
  EXPECT_EQ((*plan)[1].resource->role(), Role::pairedVideo);
  EXPECT_EQ((*plan)[1].item->identifier(), model.items[0].identifier());
  EXPECT_TRUE(resourcePlan(ExportModel{})->empty());
}

TEST(ResourcePlan, ResourcesThatDoNotBelongWhereListedAreIntegrityFailures) {
  struct Case {
    std::string name;
    std::vector<format::BackupMediaItemRecordV1> items;
    std::vector<format::BackupMediaResourceRecordV1> resources;
    Error expected;
  };
  std::string longFirstCharacter = "a";
  for (int mark = 0; mark < 100; ++mark) longFirstCharacter += "\xCC\x81";
  const Case cases[] = {
      {"listed resource of another item", {item(1, "a.jpg", {10, 20}), item(2, "b.jpg", {20})},
       {resource(10, 1), resource(20, 2)}, Error::integrityFailure},
      {"listed resource missing", {item(1, "a.jpg", {10, 11})}, {resource(10, 1)}, Error::integrityFailure},
      {"resource no item lists", {item(1, "a.jpg", {10})}, {resource(10, 1), resource(11, 1)}, Error::integrityFailure},
      {"first character longer than a stem", {item(1, longFirstCharacter, {10})}, {resource(10, 1)}, Error::integrityFailure},
  };
  for (const auto& testCase : cases) {
    SCOPED_TRACE(testCase.name);
    const auto model = modelOf(testCase.items, testCase.resources);
    const auto plan = resourcePlan(model);
    ASSERT_FALSE(plan.has_value());
    EXPECT_EQ(plan.error(), testCase.expected);
  }
}

// The plan allows one more attempt than there are resources, which no set of names can use up:
// each failed attempt meets a different name already given.
TEST(ResourcePlan, NamesThatCollideEverywhereStillAllGetDistinctPaths) {
  const std::string names[] = {"a.jpg", "a-2.jpg", "A-3.JPG", "a-2-2.jpg", "\xC3\xA4.jpg"};
  std::vector<format::BackupMediaItemRecordV1> items;
  std::vector<format::BackupMediaResourceRecordV1> resources;
  for (std::uint64_t number = 1; number <= 200; ++number) {
    items.push_back(item(number, names[(number * 7) % 5], {1000 + number}));
    resources.push_back(resource(1000 + number, number));
  }
  const auto model = modelOf(items, resources);
  const auto plan = resourcePlan(model);
  ASSERT_TRUE(plan.has_value());
  std::set<std::string> keys;
  for (const auto& path : pathsOf(*plan)) EXPECT_TRUE(keys.insert(*comparisonKey(path)).second) << path;
}

}  // namespace

}  // namespace galdrine::recovery
