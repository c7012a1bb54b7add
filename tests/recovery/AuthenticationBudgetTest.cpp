// The one budget of an inspection: inclusive limits, one charge per manifest artifact, overflow.

#include "recovery/inspection/AuthenticationBudget.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "support/RecoveryTestPackages.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryPackageInspectorError;

[[nodiscard]] format::BackupArtifactReferenceV1 reference(std::uint8_t seed, std::uint64_t plaintextByteCount,
                                                          std::uint8_t digestByte = 0x0D) {
  return *format::BackupArtifactReferenceV1::make(Bytes(16, seed), plaintextByteCount + 64, Bytes(32, digestByte),
                                                  plaintextByteCount, Bytes(32, digestByte));
}

TEST(AuthenticationBudgetTest, ATotalExactlyAtEachLimitPassesAndARefusedChargeCostsNothing) {
  AuthenticationBudget budget({.maximumManifestPlaintextByteCount = 100, .maximumManifestRecordCount = 10});
  EXPECT_TRUE(budget.reserve(reference(1, 60), 9));
  EXPECT_EQ(budget.reserve(reference(2, 41), 0), std::unexpected(Error::resourceLimitExceeded));
  EXPECT_EQ(budget.reserve(reference(3, 1), 2), std::unexpected(Error::resourceLimitExceeded));
  EXPECT_TRUE(budget.reserve(reference(4, 40), 1));
  EXPECT_EQ(budget.consumedPlaintextByteCount(), 100u);
  EXPECT_EQ(budget.consumedRecordCount(), 10u);
  EXPECT_EQ(budget.reserve(reference(5, 1), 0), std::unexpected(Error::resourceLimitExceeded));
}

TEST(AuthenticationBudgetTest, AnArtifactChargedTwiceCostsOnceAndMustAgree) {
  AuthenticationBudget budget({.maximumManifestPlaintextByteCount = 100, .maximumManifestRecordCount = 10});
  EXPECT_TRUE(budget.reserve(reference(1, 80), 8));
  EXPECT_TRUE(budget.reserve(reference(1, 80), 8));
  EXPECT_EQ(budget.consumedPlaintextByteCount(), 80u);
  EXPECT_EQ(budget.consumedRecordCount(), 8u);
  EXPECT_EQ(budget.reserve(reference(1, 80, 0x0E), 8), std::unexpected(Error::integrityFailure));
  EXPECT_EQ(budget.reserve(reference(1, 79), 8), std::unexpected(Error::integrityFailure));
}

TEST(AuthenticationBudgetTest, AnOverflowingTotalIsALimitNotAWrapAround) {
  constexpr auto largest = std::numeric_limits<std::uint64_t>::max();
  AuthenticationBudget budget({.maximumManifestPlaintextByteCount = largest, .maximumManifestRecordCount = largest});
  EXPECT_TRUE(budget.reserve(reference(1, largest - 100), largest));
  EXPECT_EQ(budget.reserve(reference(2, 101), 0), std::unexpected(Error::resourceLimitExceeded));
  EXPECT_EQ(budget.reserve(reference(3, 1), 1), std::unexpected(Error::resourceLimitExceeded));
  EXPECT_TRUE(budget.reserve(reference(4, 100), 0));
}

}  // namespace

}  // namespace galdrine::recovery
