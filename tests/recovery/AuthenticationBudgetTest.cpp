// The one budget of an inspection: inclusive limits, one charge per manifest artifact, overflow.
// The inspector's suite meets the limits exactly on a real package; here are the charges it
// cannot make.

#include "recovery/inspection/AuthenticationBudget.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "support/RecoveryTestPackages.hpp"

namespace galdrine::recovery {

namespace {

constexpr auto limitExceeded = std::unexpected(RecoveryPackageInspectorError::resourceLimitExceeded);
constexpr auto integrityFailure = std::unexpected(RecoveryPackageInspectorError::integrityFailure);

[[nodiscard]] format::BackupArtifactReferenceV1 reference(std::uint8_t seed, std::uint64_t plaintextByteCount,
                                                          std::uint8_t digestByte = 0x0D) {
  return *format::BackupArtifactReferenceV1::make(Bytes(16, seed), plaintextByteCount + 64, Bytes(32, digestByte),
                                                  plaintextByteCount, Bytes(32, digestByte));
}

// A refused charge costs nothing, and an artifact charged again costs nothing but must agree.
TEST(AuthenticationBudgetTest, ARefusedOrRepeatedChargeCostsNothing) {
  AuthenticationBudget budget({.maximumManifestPlaintextByteCount = 100, .maximumManifestRecordCount = 10});
  EXPECT_TRUE(budget.reserve(reference(1, 60), 9));
  EXPECT_TRUE(budget.reserve(reference(1, 60), 9));
  EXPECT_EQ(budget.reserve(reference(1, 60, 0x0E), 9), integrityFailure);
  EXPECT_EQ(budget.reserve(reference(1, 59), 9), integrityFailure);
  EXPECT_EQ(budget.reserve(reference(2, 41), 0), limitExceeded);
  EXPECT_EQ(budget.reserve(reference(3, 1), 2), limitExceeded);
  EXPECT_TRUE(budget.reserve(reference(4, 40), 1));
  EXPECT_EQ(budget.consumedPlaintextByteCount(), 100u);
  EXPECT_EQ(budget.consumedRecordCount(), 10u);
}

TEST(AuthenticationBudgetTest, AnOverflowingTotalIsALimitNotAWrapAround) {
  constexpr auto largest = std::numeric_limits<std::uint64_t>::max();
  AuthenticationBudget budget({.maximumManifestPlaintextByteCount = largest, .maximumManifestRecordCount = largest});
  EXPECT_TRUE(budget.reserve(reference(1, largest - 100), largest));
  EXPECT_EQ(budget.reserve(reference(2, 101), 0), limitExceeded);
  EXPECT_EQ(budget.reserve(reference(3, 1), 1), limitExceeded);
  EXPECT_TRUE(budget.reserve(reference(4, 100), 0));
}

}  // namespace

}  // namespace galdrine::recovery
