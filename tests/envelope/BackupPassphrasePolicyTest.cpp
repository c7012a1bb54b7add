#include <gtest/gtest.h>

#include "envelope/BackupPassphrasePolicy.hpp"

namespace galdrine::envelope {

TEST(BackupPassphrasePolicy, JudgesBytesWithEightCharactersAndSixWords) {
  struct PassphraseCase { std::string_view passphrase; bool accepted; };
  const PassphraseCase cases[] = {
      {"aaaa aaaa", false},        {"12345678", false},        {"1234 5678", false},
      {"abcdabcd", false},         {"abcdabce", true},         {"Ab aB Ab aB", false},
      {" abcdabce", false},        {"abcdabce ", false},       {"abcd abce", true},
      {"abcd\tabce", false},       {"abcdabce\n", false},      {"\u00E9E\u00E8ab\u00C9cd", true},
      {"\u00E9E\u00E8\u00EAe\u00CB\u00C8\u00C9", false},      // one letter, accents and case aside
      {"abcdefg", false},          {"abcdefgh", true},         {"unbreakablepassphrase", true},
      {"abcdefg\xFF", false},      {"abcdefgh\xC0\x80", false},  // not UTF-8
  };
  for (const PassphraseCase& passphraseCase : cases) {
    EXPECT_EQ(BackupPassphrasePolicy::accepts(ByteText::view(passphraseCase.passphrase)),
              passphraseCase.accepted)
        << passphraseCase.passphrase;
  }
}

}  // namespace galdrine::envelope
