#include "keys/RecoveryKeyMnemonicV1.hpp"

#include <gtest/gtest.h>

#include <cctype>
#include <map>
#include <string>

#include "keys/RecoveryKeyVocabulary.hpp"

namespace galdrine::keys {

namespace {

namespace Mnemonic = RecoveryKeyMnemonicV1;
using Error = RecoveryKeyMnemonicV1Error;

Bytes fromHex(std::string_view hex) { return ByteText::parseLowerHex(hex).value_or(Bytes{}); }

// zeroPhrase gives the words of all-zero entropy, 23 times "abandon" and then "art", with the
// words at the given places (from 0) replaced.
std::string zeroPhrase(const std::map<std::size_t, std::string_view>& replaced = {}, std::string_view separator = " ") {
  std::string text;
  for (std::size_t position = 0; position < 24; ++position) {
    const auto found = replaced.find(position);
    if (position > 0) text += separator;
    text += found != replaced.end() ? found->second : position < 23 ? "abandon" : "art";
  }
  return text;
}

const std::string kZeroPhrase = zeroPhrase();

// Reference phrases made with Debian's python3-mnemonic (0.19), an independent BIP-39
// implementation:
//   /usr/bin/python3 -c "from mnemonic import Mnemonic;
//   print(Mnemonic('english').to_mnemonic(bytes.fromhex('<entropy>')))"
// The first five entropies are those of the published BIP-39 test vectors for 256 bits.
struct Vector {
  std::string_view entropyHex;
  std::string_view phrase;
};
const Vector kVectors[] = {
    {"0000000000000000000000000000000000000000000000000000000000000000", kZeroPhrase},
    {"7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f7f",
     "legal winner thank year wave sausage worth useful legal winner thank year wave sausage worth useful legal "
     "winner thank year wave sausage worth title"},
    {"8080808080808080808080808080808080808080808080808080808080808080",
     "letter advice cage absurd amount doctor acoustic avoid letter advice cage absurd amount doctor acoustic avoid "
     "letter advice cage absurd amount doctor acoustic bless"},
    {"ffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff",
     "zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo zoo vote"},
    {"68a79eaca2324873eacc50cb9c6eca8cc68ea5d936f98787c60c7ebc74e6ce7c",
     "hamster diagram private dutch cause delay private meat slide toddler razor book happy fancy gospel tennis "
     "maple dilemma loan word shrug inflict delay length"},
    {"9f6a2878b2520799a44ef18bc7df394e7061a224d2c33cd015b157d746869863",
     "panda eyebrow bullet gorilla call smoke muffin taste mesh discover soft ostrich alcohol speed nation flash "
     "devote level hobby quick inner drive ghost inside"},
    {"066dca1a2bb7e8a1db2832148ce9933eea0f3ac9548d793112d9a95c9407efad",
     "all hour make first leader extend hole alien behind guard gospel lava path output census museum junior mass "
     "reopen famous sing advance salt reform"},
    {"f585c11aec520db57dd353c69554b21a89b20fb0650966fa0a9d6f74fd989d8f",
     "void come effort suffer camp survey warrior heavy shoot primary clutch crush open amazing screen patrol group "
     "space point ten exist slush involve unfold"},
};

TEST(RecoveryKeyMnemonicV1, MatchesReferencePhrasesBothWays) {
  for (const Vector& vector : kVectors) {
    const Bytes entropy = fromHex(vector.entropyHex);
    EXPECT_EQ(Mnemonic::phrase(entropy), std::string(vector.phrase)) << vector.entropyHex;
    EXPECT_EQ(Mnemonic::entropy(vector.phrase), entropy) << vector.entropyHex;
  }
  const auto key = Mnemonic::recoveryKey(kVectors[5].phrase);
  ASSERT_TRUE(key.has_value());
  EXPECT_EQ(key->storage()->withTemporaryBytes([](ByteView bytes) { return Bytes(bytes.begin(), bytes.end()); }),
            fromHex(kVectors[5].entropyHex));
  const auto generated = Mnemonic::generatePhrase();
  ASSERT_TRUE(generated.has_value());
  EXPECT_EQ(Mnemonic::phrase(Mnemonic::entropy(*generated).value_or(Bytes{})), *generated);
}

TEST(RecoveryKeyMnemonicV1, AcceptsCaseBlanksAndFullWidthLetters) {
  std::string upper = kZeroPhrase;
  for (char& character : upper) character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
  const std::string variants[] = {
      upper, " \t\n" + zeroPhrase({}, "  \t ") + "\r\n\n", zeroPhrase({}, "\u00A0\u3000\u2028"),
      zeroPhrase({{0, "\uFF21\uFF42\uFF21\uFF4E\uFF24\uFF4F\uFF2E"}}),  // "AbAnDoN" in full-width letters
  };
  for (const std::string& variant : variants) EXPECT_EQ(Mnemonic::entropy(variant), Bytes(32)) << variant;
}

// Counts and lengths are checked before the list is loaded: an empty list (Bytes{}) reaches no
// case but invalidWordList. Then the words are looked up in order.
TEST(RecoveryKeyMnemonicV1, TellsFailuresApartInCheckOrder) {
  const std::string twentyThree = kZeroPhrase.substr(kZeroPhrase.find(' ') + 1);
  const std::pair<std::string, std::int64_t> counts[] = {
      {twentyThree, 23},
      {kZeroPhrase + " abandon", 25},
      {" \n\t ", 0},
      {kZeroPhrase + " \xFF", 0},            // not UTF-8: no readable word
      {"abandon\u00A8 " + twentyThree, 25},  // NFKD makes a blank of the diaeresis
  };
  for (const auto& [phrase, count] : counts) {
    EXPECT_EQ(Mnemonic::entropy(phrase, Bytes{}), std::unexpected(Error::invalidWordCount(24, count))) << phrase;
  }
  for (const std::int64_t length : {0, 31, 33}) {
    EXPECT_EQ(Mnemonic::phrase(Bytes(static_cast<std::size_t>(length)), Bytes{}),
              std::unexpected(Error::invalidEntropyByteCount(32, length)));
  }
  EXPECT_EQ(Mnemonic::entropy(kZeroPhrase, Bytes{}), std::unexpected(Error::invalidWordList()));
  EXPECT_EQ(Mnemonic::entropy(zeroPhrase({{4, "abandonn"}, {8, "zzz"}})), std::unexpected(Error::unknownWord(5)));
  // NFKD keeps the accent as a mark: no such word.
  EXPECT_EQ(Mnemonic::entropy(zeroPhrase({{2, "aband\u00F3n"}})), std::unexpected(Error::unknownWord(3)));
}

// The last word carries 3 bits of entropy and the 8-bit checksum, so after 23 times "abandon"
// exactly 8 of the 2048 words fit; every other one is a checksum mismatch.
TEST(RecoveryKeyMnemonicV1, ExactlyEightLastWordsFitTheChecksum) {
  const auto vocabulary = RecoveryKeyVocabulary::load(RecoveryKeyVocabulary::publishedList());
  ASSERT_TRUE(vocabulary.has_value());
  int fitting = 0;
  for (std::uint16_t index = 0; index < RecoveryKeyVocabulary::wordCount; ++index) {
    const auto entropy = Mnemonic::entropy(zeroPhrase({{23, vocabulary->word(index)}}));
    fitting += entropy ? 1 : 0;
    EXPECT_TRUE(entropy || entropy.error() == Error::checksumMismatch()) << vocabulary->word(index);
  }
  EXPECT_EQ(fitting, 8);
}

TEST(RecoveryKeyMnemonicV1, DamagedWordListIsInvalidOnEveryOperation) {
  const ByteView published = RecoveryKeyVocabulary::publishedList();
  EXPECT_EQ(Mnemonic::entropy(kZeroPhrase, Bytes(published.begin(), published.end())), Bytes(32));
  Bytes changed(published.begin(), published.end());
  changed[5000] ^= 0x01;
  const Bytes lists[] = {changed, Bytes(published.begin(), published.end() - 1), Bytes{}};
  const auto invalid = Error::invalidWordList();
  for (const Bytes& list : lists) {
    EXPECT_EQ(Mnemonic::phrase(Bytes(32), list), std::unexpected(invalid)) << list.size();
    EXPECT_EQ(Mnemonic::entropy(kZeroPhrase, list), std::unexpected(invalid)) << list.size();
    EXPECT_EQ(Mnemonic::recoveryKey(kZeroPhrase, list).error(), RecoveryKeyMnemonicV1Failure(invalid)) << list.size();
    EXPECT_EQ(Mnemonic::generatePhrase(list).error(), RecoveryKeyMnemonicV1Failure(invalid)) << list.size();
  }
}

}  // namespace

}  // namespace galdrine::keys
