#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "keys/KeyManagementResourceBundle.hpp"
#include "keys/RecoveryKeyMnemonicV1.hpp"
#include "keys/RecoveryKeyVocabulary.hpp"
#include "platform/UnicodeScalars.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::keys {

namespace {

namespace Mnemonic = RecoveryKeyMnemonicV1;
using Error = RecoveryKeyMnemonicV1Error;

const std::filesystem::path kBuildWordList = std::filesystem::path(GALDRINE_BUILD_RESOURCE_BUNDLE) / "bip39-english-v1.txt";

Bytes fromHex(std::string_view hex) {
  const auto bytes = ByteText::parseLowerHex(hex);
  return bytes ? *bytes : Bytes{};
}

std::vector<std::string> wordsOf(const std::string& phrase) {
  std::istringstream stream(phrase);
  return {std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()};
}

std::string joined(const std::vector<std::string>& words, std::string_view separator) {
  std::string text;
  for (std::size_t index = 0; index < words.size(); ++index) text += (index ? std::string(separator) : "") + words[index];
  return text;
}

const std::string kZeroPhrase =
    "abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon "
    "abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon art";

// Reference phrases made with Debian's python3-mnemonic (0.19), an independent BIP-39
// implementation:
//   /usr/bin/python3 -c "from mnemonic import Mnemonic; print(Mnemonic('english').to_mnemonic(bytes.fromhex('<entropy>')))"
// The first five entropies are those of the published BIP-39 test vectors for 256 bits.
struct Vector { std::string_view entropyHex; std::string_view phrase; };
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
}

TEST(RecoveryKeyMnemonicV1, RandomEntropyRoundTrips) {
  std::mt19937 generator(20240611);
  for (int round = 0; round < 200; ++round) {
    Bytes entropy(32);
    for (auto& byte : entropy) byte = static_cast<std::uint8_t>(generator());
    const auto phrase = Mnemonic::phrase(entropy);
    ASSERT_TRUE(phrase.has_value());
    EXPECT_EQ(wordsOf(*phrase).size(), 24u);
    EXPECT_EQ(Mnemonic::entropy(*phrase), entropy);
  }
}

// fullWidth writes printable ASCII in its full-width forms (U+FF01 to U+FF5E), keeping blanks.
std::string fullWidth(std::string_view ascii) {
  std::u32string wide;
  for (const char character : ascii) {
    wide.push_back(character == ' ' ? U' ' : U'\uFF01' + static_cast<char32_t>(character - '!'));
  }
  return platform::UnicodeScalars::utf8(wide);
}

TEST(RecoveryKeyMnemonicV1, AcceptsCaseBlanksAndFullWidthLetters) {
  const Bytes entropy = fromHex(kVectors[4].entropyHex);
  std::vector<std::string> words = wordsOf(std::string(kVectors[4].phrase));
  std::string upper = joined(words, " ");
  for (char& character : upper) character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
  std::vector<std::string> mixedCaseWords = words;
  for (auto& word : mixedCaseWords) word[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(word[0])));
  const std::string variants[] = {
      upper,
      joined(mixedCaseWords, " "),
      " \t\n" + joined(words, "  \t ") + "\r\n\n",
      joined(words, "\n"),
      joined(words, "\u00A0\u3000\u2028"),
      fullWidth(joined(words, " ")),
      fullWidth(upper),
  };
  for (const std::string& variant : variants) {
    EXPECT_EQ(Mnemonic::entropy(variant), entropy) << variant;
  }
}

TEST(RecoveryKeyMnemonicV1, TellsFailuresApartInCheckOrder) {
  const std::vector<std::string> words = wordsOf(kZeroPhrase);
  std::vector<std::string> twentyThree(words.begin(), words.end() - 1);
  std::vector<std::string> twentyFive = words;
  twentyFive.push_back("abandon");
  std::vector<std::string> twoUnknown = words;
  twoUnknown[4] = "abandonn";
  twoUnknown[8] = "zzz";
  std::vector<std::string> accented = words;
  accented[2] = "aband\u00F3n";  // NFKD keeps the accent as a mark: no such word
  std::vector<std::string> wrongLast = words;
  wrongLast[23] = "zoo";
  const std::filesystem::path missing = "/nonexistent/bip39-english-v1.txt";

  struct FailureCase { std::string phrase; std::filesystem::path list; Error expected; };
  const FailureCase cases[] = {
      {joined(twentyThree, " "), missing, Error::invalidWordCount(24, 23)},  // counted before the list is read
      {joined(twentyFive, " "), missing, Error::invalidWordCount(24, 25)},
      {"", missing, Error::invalidWordCount(24, 0)},
      {" \n\t ", missing, Error::invalidWordCount(24, 0)},
      {joined(words, " ") + " \xFF", missing, Error::invalidWordCount(24, 0)},  // not UTF-8: no readable word
      {"abandon\u00A8 " + joined(twentyThree, " "), missing, Error::invalidWordCount(24, 25)},  // NFKD makes a blank
      {joined(words, " "), missing, Error::invalidWordList()},
      {joined(twoUnknown, " "), kBuildWordList, Error::unknownWord(5)},
      {joined(accented, " "), kBuildWordList, Error::unknownWord(3)},
      {joined(wrongLast, " "), kBuildWordList, Error::checksumMismatch()},
  };
  for (const FailureCase& failureCase : cases) {
    EXPECT_EQ(Mnemonic::entropy(failureCase.phrase, failureCase.list), std::unexpected(failureCase.expected))
        << failureCase.phrase;
  }
}

// The last word carries 3 bits of entropy and the 8-bit checksum, so for a fixed start exactly
// 8 of the 2048 possible last words fit, one for each value of those 3 bits: the words of the
// keys that differ from zero only in those bits. A spread of the other words fails the checksum.
TEST(RecoveryKeyMnemonicV1, ExactlyEightLastWordsFitTheChecksum) {
  const std::vector<std::string> zeroWords = wordsOf(kZeroPhrase);
  std::set<std::string> fittingLastWords;
  for (std::uint8_t lowBits = 0; lowBits < 8; ++lowBits) {
    Bytes entropy(32, 0);
    entropy.back() = lowBits;
    const auto phrase = Mnemonic::phrase(entropy, kBuildWordList);
    ASSERT_TRUE(phrase.has_value());
    std::vector<std::string> words = wordsOf(*phrase);
    fittingLastWords.insert(words.back());
    words.pop_back();
    EXPECT_EQ(words, std::vector<std::string>(zeroWords.begin(), zeroWords.end() - 1));
    EXPECT_EQ(Mnemonic::entropy(*phrase, kBuildWordList), entropy);
  }
  ASSERT_EQ(fittingLastWords.size(), 8u);

  const auto vocabulary = RecoveryKeyVocabulary::load(kBuildWordList);
  ASSERT_TRUE(vocabulary.has_value());
  std::vector<std::string> words = zeroWords;
  for (std::uint16_t index = 0; index < 2048; index += 61) {
    words[23] = std::string(vocabulary->word(index));
    if (fittingLastWords.contains(words[23])) continue;
    EXPECT_EQ(Mnemonic::entropy(joined(words, " "), kBuildWordList), std::unexpected(Error::checksumMismatch()))
        << words[23];
  }
}

TEST(RecoveryKeyMnemonicV1, RefusesEntropyOfAnotherLengthBeforeReadingTheList) {
  for (const std::size_t length : {0u, 16u, 31u, 33u}) {
    EXPECT_EQ(Mnemonic::phrase(Bytes(length), "/nonexistent"),
              std::unexpected(Error::invalidEntropyByteCount(32, static_cast<std::int64_t>(length))));
  }
}

std::filesystem::path writeList(const testsupport::TemporaryDirectory& directory, const std::string& name, const std::string& bytes) {
  const std::filesystem::path path = directory / name;
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

TEST(RecoveryKeyMnemonicV1, DamagedWordListIsInvalidOnEveryOperation) {
  std::ifstream original(kBuildWordList, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(original), std::istreambuf_iterator<char>()};
  ASSERT_EQ(bytes.size(), 13116u);
  const testsupport::TemporaryDirectory directory;
  std::string changed = bytes;
  changed[5000] = static_cast<char>(changed[5000] ^ 0x01);
  std::string swapped = bytes;  // "abandon\nability" becomes "ability\nabandon": same bytes, other order
  swapped.replace(0, 15, "ability\nabandon");
  const std::filesystem::path lists[] = {
      writeList(directory, "changed.txt", changed),
      writeList(directory, "swapped.txt", swapped),
      writeList(directory, "extra-line.txt", bytes + "\n"),
      writeList(directory, "truncated.txt", bytes.substr(0, bytes.size() - 1)),
      writeList(directory, "empty.txt", ""),
      directory.path(),
      directory / "missing.txt",
  };
  const auto invalid = Error::invalidWordList();
  for (const auto& list : lists) {
    EXPECT_EQ(Mnemonic::phrase(Bytes(32), list), std::unexpected(invalid)) << list;
    EXPECT_EQ(Mnemonic::entropy(kZeroPhrase, list), std::unexpected(invalid)) << list;
    EXPECT_EQ(Mnemonic::recoveryKey(kZeroPhrase, list).error(), RecoveryKeyMnemonicV1Failure(invalid)) << list;
    EXPECT_EQ(Mnemonic::generatePhrase(list).error(), RecoveryKeyMnemonicV1Failure(invalid)) << list;
  }
  // The unchanged bytes in another place are the list.
  EXPECT_EQ(Mnemonic::entropy(kZeroPhrase, writeList(directory, "copy.txt", bytes)), Bytes(32));
}

TEST(RecoveryKeyMnemonicV1, RecoveryKeyHoldsTheEntropy) {
  const Bytes entropy = fromHex(kVectors[5].entropyHex);
  const auto handle = Mnemonic::recoveryKey(kVectors[5].phrase);
  ASSERT_TRUE(handle.has_value());
  EXPECT_EQ(handle->storage()->withTemporaryBytes([](ByteView key) { return Bytes(key.begin(), key.end()); }), entropy);
  EXPECT_EQ(Mnemonic::recoveryKey("abandon").error(),
            RecoveryKeyMnemonicV1Failure(Error::invalidWordCount(24, 1)));
}

TEST(RecoveryKeyMnemonicV1, GeneratedPhrasesReadBack) {
  const auto first = Mnemonic::generatePhrase();
  const auto second = Mnemonic::generatePhrase();
  ASSERT_TRUE(first.has_value());
  ASSERT_TRUE(second.has_value());
  EXPECT_NE(*first, *second);
  const auto entropy = Mnemonic::entropy(*first);
  ASSERT_TRUE(entropy.has_value());
  EXPECT_EQ(Mnemonic::phrase(*entropy), *first);
}

}  // namespace

}  // namespace galdrine::keys
