#include "recovery/export/ExportModel.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "ExportTestRecords.hpp"

namespace galdrine::recovery {

namespace {

namespace Records = testsupport::ManifestTestRecords;
using Error = RecoveryExporterError;

format::BackupManifestRecordV1 payloadKey(std::uint64_t number) {
  return Records::made(format::BackupPayloadKeyRecordV1::make(
      Records::payloadKeyFields(number, format::BackupPayloadKeyScopeV1::pack, 800)));
}

format::BackupManifestRecordV1 membership(std::uint64_t album, std::uint64_t item) {
  return Records::made(format::BackupAlbumMembershipRecordV1::make(Records::membershipFields(album, item)));
}

format::BackupIdentifierV1 identifier(std::uint64_t number) { return *format::FixedBytes::identifier(Records::identifier(number)); }

TEST(ExportModel, SortsEveryListByIdentifierAndKeepsTheOrderOfEqualKeys) {
  const std::vector<format::BackupManifestRecordV1> records = {
      ExportTestRecords::item(3, "c.jpg", {30}),
      ExportTestRecords::item(2, "first.jpg", {20}),
      ExportTestRecords::resource(30, 3),
      ExportTestRecords::item(1, "a.jpg", {10}),
      ExportTestRecords::item(2, "second.jpg", {21}),
      ExportTestRecords::resource(10, 1),
      payloadKey(901),
      membership(2, 1),
      membership(1, 2),
      membership(1, 1),
      Records::made(format::BackupTombstoneRecordV1::make(Records::tombstoneFields(5, Records::identifiers({})))),
      Records::made(format::BackupTombstoneRecordV1::make(Records::tombstoneFields(4, Records::identifiers({50})))),
      Records::made(format::BackupAlbumRecordV1::make(Records::albumFields(8, std::nullopt, std::nullopt))),
      Records::made(format::BackupAlbumRecordV1::make(Records::albumFields(7, std::nullopt, 1))),
      Records::made(format::BackupAlbumFolderRecordV1::make(Records::folderFields(61, std::nullopt))),
      Records::made(format::BackupAlbumFolderRecordV1::make(Records::folderFields(60, 61))),
      payloadKey(900),
  };
  const auto model = exportModel(records);
  ASSERT_TRUE(model.has_value());

  std::vector<std::string> itemNames;
  for (const auto& item : model->items) itemNames.push_back(item.originalFilename());
  EXPECT_EQ(itemNames, (std::vector<std::string>{"a.jpg", "first.jpg", "second.jpg", "c.jpg"}));
  ASSERT_EQ(model->resources.size(), 2u);
  EXPECT_EQ(model->resources[0].identifier(), identifier(10));
  ASSERT_EQ(model->memberships.size(), 3u);
  EXPECT_EQ(model->memberships[0].albumIdentifier(), identifier(1));
  EXPECT_EQ(model->memberships[0].itemIdentifier(), identifier(1));
  EXPECT_EQ(model->memberships[1].itemIdentifier(), identifier(2));
  EXPECT_EQ(model->memberships[2].albumIdentifier(), identifier(2));
  EXPECT_EQ(model->tombstones.front().itemIdentifier(), identifier(4));
  EXPECT_EQ(model->albums.front().identifier(), identifier(7));
  EXPECT_EQ(model->folders.front().identifier(), identifier(60));
  EXPECT_EQ(model->payloadKeys.size(), 2u);
  EXPECT_TRUE(model->payloadKeys.contains(identifier(900)));
}

TEST(ExportModel, ARepeatedPayloadKeyIsAnIntegrityFailure) {
  const std::vector<format::BackupManifestRecordV1> records = {payloadKey(900), ExportTestRecords::item(1, "a.jpg", {10}),
                                                               payloadKey(900)};
  const auto model = exportModel(records);
  ASSERT_FALSE(model.has_value());
  EXPECT_EQ(model.error(), Error::integrityFailure);
}

// The same limit check, at a limit of three, decides after the repeated key check.
TEST(ExportModel, RecordCountLimitComesAfterTheRepeatedKeyCheck) {
  std::vector<format::BackupManifestRecordV1> records(4, membership(1, 2));
  const std::span<const format::BackupManifestRecordV1> all(records);

  EXPECT_TRUE(exportModel(all.first(3), 3).has_value());
  const auto tooMany = exportModel(all, 3);
  ASSERT_FALSE(tooMany.has_value());
  EXPECT_EQ(tooMany.error(), Error::resourceLimitExceeded);

  records[0] = payloadKey(900);
  records.back() = payloadKey(900);
  const auto repeated = exportModel(records, 3);
  ASSERT_FALSE(repeated.has_value());
  EXPECT_EQ(repeated.error(), Error::integrityFailure);
}

}  // namespace

}  // namespace galdrine::recovery
