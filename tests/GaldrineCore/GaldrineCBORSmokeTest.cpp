#include <gtest/gtest.h>

#include "GaldrineCore/GaldrineDeterministicCBOR.hpp"

TEST(GaldrineCBORSmoke, RoundTripsAMap) {
  GaldrineCBORValue::Map entries;
  entries.emplace(1, GaldrineCBORValue::textString("a"));
  entries.emplace(0, GaldrineCBORValue::signedInteger(-5));
  const auto encoded = GaldrineDeterministicCBOR::encode(GaldrineCBORValue::map(entries), GaldrineCBORLimits::formatHeader());
  ASSERT_TRUE(encoded.has_value());
  EXPECT_EQ(*encoded, (Bytes{0xA2, 0x00, 0x24, 0x01, 0x61, 'a'}));
  const auto decoded = GaldrineDeterministicCBOR::decode(*encoded, GaldrineCBORLimits::formatHeader());
  ASSERT_TRUE(decoded.has_value());
  EXPECT_EQ(*decoded, GaldrineCBORValue::map(entries));
}
