#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "kdf/Argon2id.hpp"
#include "kdf/SodiumRuntime.hpp"

namespace galdrine::kdf {

namespace {

using namespace std::string_view_literals;
constexpr std::int64_t kMiB = 1'048'576;

Argon2idParameters parameters(std::uint64_t operationsLimit, std::int64_t memoryLimitBytes) {
  const auto made = Argon2idParameters::make(operationsLimit, memoryLimitBytes);
  EXPECT_TRUE(made.has_value());
  return made.has_value() ? *made : *Argon2idParameters::make(3, 64 * kMiB);
}

Argon2idParameters cheapest() { return parameters(3, 64 * kMiB); }

// Expected keys come from Debian's independent argon2 command-line tool (package argon2,
// 0~20171227), run once as
//   printf '<passphrase bytes>' | argon2 <salt> -id -t <passes> -m <log2 of KiB> -p 1 -l 32 -r
// where -m 16 is 64 MiB, 17 is 128 MiB and 18 is 256 MiB. The passphrases carry what a careless
// implementation would alter: a trailing space and line feed, a decomposed u-umlaut (u followed
// by U+0308) that NFC would compose, a NUL byte and a zero-width space.
struct KnownAnswer {
  std::string_view passphrase;
  std::string_view salt;
  std::uint64_t operationsLimit;
  std::int64_t memoryLimitBytes;
  std::string_view key;
};
const KnownAnswer kKnownAnswers[] = {
    {"password", "somesaltsomesalt", 3, 64 * kMiB, "7664ad4ba1a3c999fcdd0991ffc2270f78302d2383233db5e7befc85d1bb1819"},
    {"password", "somesaltsomesalt", 12, 64 * kMiB, "1d76bf1762ff2bd9425b2fd6b9f8fd6192d5aaff3940ffe49b8b56f49c070b84"},
    {"correct horse battery staple u\xcc\x88 \n", "0123456789abcdef", 5, 128 * kMiB,
     "43c61f7496575a387e6c11d7531cc58a9d45428432fe9265036167e32ca93e80"},
    {"Pa\0ss\xe2\x80\x8bphrase"sv, "SALTSALTSALTSALT", 3, 256 * kMiB,
     "9a23377f3b21a74e762cfe4fecd2ac8a2403620a1972b7f9472cbfc445a61f7a"},
};

TEST(Argon2id, KeysEqualAnIndependentImplementation) {
  for (const KnownAnswer& vector : kKnownAnswers) {
    SCOPED_TRACE(testing::Message() << vector.operationsLimit << " passes, " << vector.memoryLimitBytes << " bytes");
    const auto key = Argon2id::deriveKey(ByteText::view(vector.passphrase),
                                                 ByteText::view(vector.salt),
                                                 parameters(vector.operationsLimit, vector.memoryLimitBytes));
    ASSERT_TRUE(key.has_value());
    EXPECT_EQ(ByteText::lowerHex(*key), vector.key);
  }
}

// The passphrase is judged before the salt, and neither kind of refusal starts a hash.
TEST(Argon2id, RefusesBadInputsInOrderWithoutDeriving) {
  using Error = Argon2idError;
  const Bytes salt16(16, 7);
  struct Case {
    std::string_view name;
    Bytes passphrase;
    Bytes salt;
    Argon2idFailure expected;
  };
  const Case cases[] = {
      {"empty passphrase, good salt", {}, salt16, Error::emptyPassphrase()},
      {"empty passphrase, wrong salt", {}, Bytes(15, 7), Error::emptyPassphrase()},
      {"15-byte salt", {'p'}, Bytes(15, 7), Error::invalidSaltLength(16, 15)},
      {"17-byte salt", {'p'}, Bytes(17, 7), Error::invalidSaltLength(16, 17)},
      {"empty salt", {'p'}, {}, Error::invalidSaltLength(16, 0)},
  };
  const std::uint64_t derivationsBefore = Argon2id::derivationCount();
  for (const Case& rejected : cases) {
    SCOPED_TRACE(rejected.name);
    const auto key = Argon2id::deriveKey(rejected.passphrase, rejected.salt, cheapest());
    ASSERT_FALSE(key.has_value());
    EXPECT_EQ(key.error(), rejected.expected);
  }
  EXPECT_EQ(Argon2id::derivationCount(), derivationsBefore);
}

TEST(Argon2id, CountsEachHashItStarts) {
  const std::uint64_t derivationsBefore = Argon2id::derivationCount();
  const auto first = Argon2id::deriveKey(ByteText::view("a"), Bytes(16, 1), cheapest());
  const auto second = Argon2id::deriveKey(ByteText::view("a"), Bytes(16, 1), cheapest());
  ASSERT_TRUE(first.has_value());
  ASSERT_TRUE(second.has_value());
  EXPECT_EQ(*first, *second);
  EXPECT_EQ(first->size(), 32u);
  EXPECT_EQ(Argon2id::derivationCount(), derivationsBefore + 2);
}

TEST(SodiumRuntime, StartsRepeatedlyAndNamesItsVersion) {
  EXPECT_TRUE(SodiumRuntime::initialize().has_value());
  EXPECT_TRUE(SodiumRuntime::initialize().has_value());
  const std::string_view version = SodiumRuntime::versionString();
  EXPECT_FALSE(version.empty());
  EXPECT_TRUE(version.find_first_not_of("0123456789.") == std::string_view::npos) << version;
}

}  // namespace

}  // namespace galdrine::kdf
