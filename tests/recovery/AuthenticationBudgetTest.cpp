// The one budget of an inspection: inclusive limits, one charge per manifest artifact, overflow.

#include "recovery/inspection/AuthenticationBudget.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <optional>

#include "support/RecoveryTestPackages.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryPackageInspectorError;
using Reference = format::BackupArtifactReferenceV1;

[[nodiscard]] Reference reference(std::uint8_t seed, std::uint64_t plaintextByteCount, std::uint8_t digestByte = 0x0D) {
  auto made = Reference::make(Bytes(16, seed), plaintextByteCount + 64, Bytes(32, digestByte),
                              plaintextByteCount, Bytes(32, digestByte));
  EXPECT_TRUE(made.has_value());
  return *made;
}

[[nodiscard]] std::optional<Error> errorOf(const std::expected<void, Error>& result) {
  if (result) return std::nullopt;
  return result.error();
}

TEST(AuthenticationBudgetTest, ATotalExactlyAtEachLimitPassesAndOneMoreFails) {
  AuthenticationBudget bytes({.maximumManifestPlaintextByteCount = 100, .maximumManifestRecordCount = 10});
  EXPECT_EQ(errorOf(bytes.reserve(reference(1, 60), 0)), std::nullopt);
  EXPECT_EQ(errorOf(bytes.reserve(reference(2, 41), 0)), Error::resourceLimitExceeded);
  EXPECT_EQ(errorOf(bytes.reserve(reference(3, 40), 0)), std::nullopt);
  EXPECT_EQ(bytes.consumedPlaintextByteCount(), 100u);
  EXPECT_EQ(errorOf(bytes.reserve(reference(4, 1), 0)), Error::resourceLimitExceeded);

  AuthenticationBudget records({.maximumManifestPlaintextByteCount = 1000, .maximumManifestRecordCount = 10});
  EXPECT_EQ(errorOf(records.reserve(reference(1, 1), 10)), std::nullopt);
  EXPECT_EQ(errorOf(records.reserve(reference(2, 1), 1)), Error::resourceLimitExceeded);
  // A refused charge leaves the totals as they were.
  EXPECT_EQ(records.consumedPlaintextByteCount(), 1u);
  EXPECT_EQ(records.consumedRecordCount(), 10u);
  EXPECT_EQ(errorOf(records.reserve(reference(3, 1), 0)), std::nullopt);
}

TEST(AuthenticationBudgetTest, AnArtifactChargedTwiceCostsOnceAndMustAgree) {
  AuthenticationBudget budget({.maximumManifestPlaintextByteCount = 100, .maximumManifestRecordCount = 10});
  EXPECT_EQ(errorOf(budget.reserve(reference(1, 80), 8)), std::nullopt);
  EXPECT_EQ(errorOf(budget.reserve(reference(1, 80), 8)), std::nullopt);
  EXPECT_EQ(budget.consumedPlaintextByteCount(), 80u);
  EXPECT_EQ(budget.consumedRecordCount(), 8u);
  EXPECT_EQ(errorOf(budget.reserve(reference(1, 80, 0x0E), 8)), Error::integrityFailure);
  EXPECT_EQ(errorOf(budget.reserve(reference(1, 79), 8)), Error::integrityFailure);
}

TEST(AuthenticationBudgetTest, AnOverflowingTotalIsALimitNotAWrapAround) {
  constexpr auto largest = std::numeric_limits<std::uint64_t>::max();
  AuthenticationBudget budget({.maximumManifestPlaintextByteCount = largest, .maximumManifestRecordCount = largest});
  EXPECT_EQ(errorOf(budget.reserve(reference(1, largest - 100), largest)), std::nullopt);
  EXPECT_EQ(errorOf(budget.reserve(reference(2, 101), 0)), Error::resourceLimitExceeded);
  EXPECT_EQ(errorOf(budget.reserve(reference(3, 1), 1)), Error::resourceLimitExceeded);
  EXPECT_EQ(errorOf(budget.reserve(reference(4, 100), 0)), std::nullopt);
}

}  // namespace

}  // namespace galdrine::recovery
