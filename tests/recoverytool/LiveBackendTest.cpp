// Typed words into recovery key bytes. The live backend's inspection, its credential handling
// and its tables of engine failures meet the user in the end-to-end runs of tests/programs
// and in the export's tamper sweep.

#include "recoverytool/LiveBackend.hpp"

#include <gtest/gtest.h>

#include <string>

#include "keys/RecoveryKeyMnemonicV1.hpp"
#include "support/RecoveryTestPackages.hpp"

namespace galdrine::recoverytool {

namespace {

using testsupport::RecoveryTestPackages::kRecoveryKey;

TEST(LiveBackend, RecoveryKeyWordsBecomeTheirBytesAndAnythingElseIsAnInvalidCredential) {
  const auto phrase = keys::RecoveryKeyMnemonicV1::phrase(kRecoveryKey);
  ASSERT_TRUE(phrase.has_value());
  EXPECT_EQ(LiveBackend::recoveryKey(ByteText::bytes("  " + *phrase + "\n")), kRecoveryKey);

  std::string wrongWord = *phrase;
  wrongWord.replace(0, wrongWord.find(' '), "zzzz");
  std::string notText = *phrase;
  notText[3] = '\xC0';  // a lead byte with nothing after it
  for (const std::string& credential : {wrongWord, phrase->substr(phrase->find(' ') + 1), std::string(), notText}) {
    EXPECT_EQ(LiveBackend::recoveryKey(ByteText::bytes(credential)),
              std::unexpected(RecoveryToolBackendError::invalidCredential))
        << credential;
  }
}

}  // namespace

}  // namespace galdrine::recoverytool
