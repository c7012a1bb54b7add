#include "kdf/Argon2id.hpp"

#include <gtest/gtest.h>

#include <string_view>
#include <tuple>

namespace galdrine::kdf {

using namespace std::string_view_literals;
constexpr std::int64_t kMiB = 1'048'576;

// Expected keys come from Debian's independent argon2 command-line tool (package argon2,
// 0~20171227), run once as
//   printf '<passphrase bytes>' | argon2 <salt> -id -t <passes> -m <log2 of KiB> -p 1 -l 32 -r
// where -m 16 is 64 MiB, 17 is 128 MiB and 18 is 256 MiB. The passphrases carry what a careless
// implementation would alter: a trailing space and line feed, a decomposed u-umlaut (u followed
// by U+0308) that NFC would compose, a NUL byte and a zero-width space. Each derivation counts.
TEST(Argon2id, KeysEqualAnIndependentImplementation) {
  const std::tuple<std::string_view, std::string_view, std::uint64_t, std::int64_t, std::string_view> knownAnswers[] = {
      {"password", "somesaltsomesalt", 3, 64 * kMiB,
       "7664ad4ba1a3c999fcdd0991ffc2270f78302d2383233db5e7befc85d1bb1819"},
      {"password", "somesaltsomesalt", 12, 64 * kMiB,
       "1d76bf1762ff2bd9425b2fd6b9f8fd6192d5aaff3940ffe49b8b56f49c070b84"},
      {"correct horse battery staple u\xcc\x88 \n", "0123456789abcdef", 5, 128 * kMiB,
       "43c61f7496575a387e6c11d7531cc58a9d45428432fe9265036167e32ca93e80"},
      {"Pa\0ss\xe2\x80\x8bphrase"sv, "SALTSALTSALTSALT", 3, 256 * kMiB,
       "9a23377f3b21a74e762cfe4fecd2ac8a2403620a1972b7f9472cbfc445a61f7a"},
  };
  const std::uint64_t derivationsBefore = Argon2id::derivationCount();
  for (const auto& [passphrase, salt, operationsLimit, memoryLimitBytes, expected] : knownAnswers) {
    const auto parameters = Argon2idParameters::make(operationsLimit, memoryLimitBytes);
    ASSERT_TRUE(parameters.has_value());
    const auto key = Argon2id::deriveKey(ByteText::view(passphrase), ByteText::view(salt), *parameters);
    ASSERT_TRUE(key.has_value()) << expected;
    EXPECT_EQ(ByteText::lowerHex(*key), expected);
  }
  EXPECT_EQ(Argon2id::derivationCount(), derivationsBefore + std::size(knownAnswers));
}

// The passphrase is judged before the salt, and neither kind of refusal starts a hash.
TEST(Argon2id, RefusesBadInputsInOrderWithoutDeriving) {
  const auto parameters = Argon2idParameters::make(3, 64 * kMiB);
  ASSERT_TRUE(parameters.has_value());
  const std::tuple<Bytes, Bytes, Argon2idFailure> cases[] = {
      {Bytes{}, Bytes(15, 7), Argon2idError::emptyPassphrase()},
      {Bytes{'p'}, Bytes(15, 7), Argon2idError::invalidSaltLength(16, 15)},
      {Bytes{'p'}, Bytes(17, 7), Argon2idError::invalidSaltLength(16, 17)},
  };
  const std::uint64_t derivationsBefore = Argon2id::derivationCount();
  for (const auto& [passphrase, salt, expected] : cases) {
    EXPECT_EQ(Argon2id::deriveKey(passphrase, salt, *parameters), std::unexpected(expected))
        << passphrase.size() << ", " << salt.size();
  }
  EXPECT_EQ(Argon2id::derivationCount(), derivationsBefore);
}

}  // namespace galdrine::kdf
