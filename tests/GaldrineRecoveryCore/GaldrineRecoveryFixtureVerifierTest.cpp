#include "GaldrineRecoveryCore/GaldrineRecoveryFixtureVerifier.hpp"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cctype>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "FixtureSetCopy.hpp"
#include "GaldrineRecoveryCore/FixtureFiles.hpp"
#include "Support/GaldrineProgramRunner.hpp"

inline void PrintTo(GaldrineRecoveryFixtureVerificationError error, std::ostream* out) {
  constexpr const char* names[] = {"invalidIndex", "invalidFixturePath", "invalidFixture", "invalidHex"};
  *out << names[static_cast<int>(error)];
}

namespace {

using Error = GaldrineRecoveryFixtureVerificationError;
using Json = nlohmann::json;
namespace Verifier = GaldrineRecoveryFixtureVerifier;
namespace fs = std::filesystem;

const fs::path committedSet = GALDRINE_FIXTURE_SET_DIRECTORY;
constexpr std::string_view golden = "golden-v1.json";
constexpr std::string_view graph = "graph-v1.json";
constexpr std::string_view payload = "payload-v1.json";
constexpr std::string_view keyEnvelopes = "key-envelopes-v1.json";
constexpr std::string_view prototype = "prototype-header-v0.json";

// flippedBit changes one bit of the byte that the hexadecimal digit at `position` belongs to.
std::string flippedBit(std::string hex, std::size_t position) {
  const int digit = std::isdigit(static_cast<unsigned char>(hex[position])) ? hex[position] - '0' : hex[position] - 'a' + 10;
  hex[position] = "0123456789abcdef"[digit ^ 1];
  return hex;
}

std::string upperCase(std::string text) {
  for (char& character : text) character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
  return text;
}

// alter reads the fixture `name` of the copy, lets `change` edit it, and writes it back.
void alter(const FixtureSetCopy& copy, std::string_view name, const std::function<void(Json&)>& change) {
  Json document = copy.read(name);
  change(document);
  copy.write(name, document);
}

void alterIndex(const FixtureSetCopy& copy, const std::function<void(Json&)>& change) {
  Json index = copy.read("index.json");
  change(index);
  copy.writeIndex(index);
}

Json& fixtureEntry(Json& index, std::string_view name) {
  for (auto& fixture : index["fixtures"]) {
    if (fixture["relativePath"] == name) return fixture;
  }
  ADD_FAILURE() << "no index entry for " << name;
  return index;
}

struct AlteredSet {
  std::string name;
  std::function<void(const FixtureSetCopy&)> alteration;
  Error expected;
};

void PrintTo(const AlteredSet& altered, std::ostream* out) { *out << altered.name; }

const AlteredSet alteredSets[] = {
    // The index and its rules.
    {"IndexWithoutFixtures", [](const auto& copy) { alterIndex(copy, [](Json& index) { index["fixtures"] = Json::array(); }); },
     Error::invalidIndex},
    {"IndexOf257Fixtures",
     [](const auto& copy) {
       alterIndex(copy, [](Json& index) {
         const Json model = index["fixtures"][1];
         index["fixtures"] = Json::array();
         for (int number = 0; number < 257; ++number) {
           Json fixture = model;
           fixture["identifier"] = "golden-" + std::to_string(number);
           fixture["relativePath"] = "golden-" + std::to_string(number) + ".json";
           index["fixtures"].push_back(fixture);
         }
       });
     },
     Error::invalidIndex},
    {"TwoFixturesOfOnePath",
     [](const auto& copy) { alterIndex(copy, [](Json& index) { index["fixtures"][1]["relativePath"] = graph; }); },
     Error::invalidIndex},
    {"TwoFixturesOfOneIdentifier",
     [](const auto& copy) { alterIndex(copy, [](Json& index) { index["fixtures"][1]["identifier"] = "graph"; }); },
     Error::invalidIndex},
    {"UnknownFixtureKind",
     [](const auto& copy) { alterIndex(copy, [](Json& index) { index["fixtures"][4]["kind"] = "prototype-header-v1"; }); },
     Error::invalidIndex},
    {"AnotherIndexSchemaVersion", [](const auto& copy) { alterIndex(copy, [](Json& index) { index["schemaVersion"] = 2; }); },
     Error::invalidIndex},
    {"IndexAbove64KiB",
     [](const auto& copy) {
       GaldrineFileFixtures::writeFile(copy.index(), copy.read("index.json").dump(2) + std::string(65536, ' '));
     },
     Error::invalidIndex},
    {"PathWithASlash",
     [](const auto& copy) {
       fs::create_directory(copy / "nested");
       fs::copy_file(copy / golden, copy / "nested" / golden);
       alterIndex(copy, [](Json& index) { fixtureEntry(index, golden)["relativePath"] = "nested/golden-v1.json"; });
     },
     Error::invalidFixturePath},
    {"PathWithABackslash",
     [](const auto& copy) { alterIndex(copy, [](Json& index) { fixtureEntry(index, golden)["relativePath"] = "nested\\golden-v1.json"; }); },
     Error::invalidFixturePath},
    {"PathToTheParent",
     [](const auto& copy) { alterIndex(copy, [](Json& index) { fixtureEntry(index, golden)["relativePath"] = ".."; }); },
     Error::invalidFixturePath},
    {"IdentifierWithAnUpperCaseLetter",
     [](const auto& copy) { alterIndex(copy, [](Json& index) { fixtureEntry(index, golden)["identifier"] = "Golden"; }); },
     Error::invalidFixturePath},
    {"UpperCaseDigestOfTheRightFile",
     [](const auto& copy) {
       alterIndex(copy, [](Json& index) {
         Json& entry = fixtureEntry(index, golden);
         entry["sha256"] = upperCase(entry["sha256"].get<std::string>());
       });
     },
     Error::invalidFixture},
    {"DigestOfAnotherFile",
     [](const auto& copy) {
       alterIndex(copy, [](Json& index) { fixtureEntry(index, golden)["sha256"] = fixtureEntry(index, payload)["sha256"]; });
     },
     Error::invalidFixture},
    {"FixtureThatIsASymbolicLink",
     [](const auto& copy) {
       fs::rename(copy / golden, copy / "golden-target.json");
       GaldrineFileFixtures::makeSymbolicLink("golden-target.json", copy / golden);
     },
     Error::invalidFixture},
    // Golden fixtures.
    {"FlippedBitInAGoldenFrame",
     [](const auto& copy) {
       alter(copy, golden, [](Json& fixture) {
         std::string frame = fixture["vectors"][0]["frameHex"];
         fixture["vectors"][0]["frameHex"] = flippedBit(frame, frame.size() - 10);  // inside the tag
       });
     },
     Error::invalidFixture},
    {"OddLengthFrameHex",
     [](const auto& copy) {
       alter(copy, golden, [](Json& fixture) {
         fixture["vectors"][1]["frameHex"] = fixture["vectors"][1]["frameHex"].get<std::string>() + "0";
       });
     },
     Error::invalidHex},
    {"NonHexadecimalDigit",
     [](const auto& copy) { alter(copy, golden, [](Json& fixture) { fixture["vectors"][2]["aadHex"] = "8g"; }); },
     Error::invalidHex},
    {"FourthGoldenVector",
     [](const auto& copy) { alter(copy, golden, [](Json& fixture) { fixture["vectors"].push_back(fixture["vectors"][0]); }); },
     Error::invalidFixture},
    {"GoldenVectorNameRepeated",
     [](const auto& copy) { alter(copy, golden, [](Json& fixture) { fixture["vectors"][1]["name"] = "resource-chunk"; }); },
     Error::invalidFixture},
    {"RecoveryEnvelopeWithoutBinding",
     [](const auto& copy) { alter(copy, golden, [](Json& fixture) { fixture["vectors"][2].erase("envelopeBinding"); }); },
     Error::invalidFixture},
    {"UnknownGoldenDomain",
     [](const auto& copy) {
       alter(copy, golden, [](Json& fixture) { fixture["vectors"][0]["domain"] = "galdrine/backup/thumbnail/v1"; });
     },
     Error::invalidFixture},
    {"GoldenFixtureAbove1MiB", [](const auto& copy) { copy.write(golden, copy.read(golden), 1048577); },
     Error::invalidFixture},
    // Key envelope set fixtures.
    {"RegistryDigestOfOtherBytes",
     [](const auto& copy) {
       alter(copy, keyEnvelopes, [](Json& fixture) { fixture["registrySHA256Hex"] = flippedBit(fixture["registrySHA256Hex"], 0); });
     },
     Error::invalidFixture},
    {"OneFactorTwice",
     [](const auto& copy) {
       alter(copy, keyEnvelopes, [](Json& fixture) { fixture["activeEntries"][0]["factor"] = "recovery-key"; });
     },
     Error::invalidFixture},
    {"ActiveEntryOfAnotherGeneration",
     [](const auto& copy) { alter(copy, keyEnvelopes, [](Json& fixture) { fixture["activeEntries"][1]["generation"] = 2; }); },
     Error::invalidFixture},
    // Payload fixtures.
    {"FlippedBitInThePackSegment",
     [](const auto& copy) {
       alter(copy, payload, [](Json& fixture) {
         const std::string segment = flippedBit(fixture["pack"]["segmentHex"], 200);  // inside the first entry's frame
         const Bytes bytes = *GaldrineByteText::parseLowerHex(segment);
         fixture["pack"]["segmentHex"] = segment;
         fixture["pack"]["segmentSHA256Hex"] = GaldrineByteText::lowerHex(GaldrinePlatformSHA256::digest(bytes));
       });
     },
     Error::invalidFixture},
    {"PackEntriesInAnotherOrder",
     [](const auto& copy) {
       alter(copy, payload, [](Json& fixture) {
         std::swap(fixture["pack"]["entries"][0]["identifierHex"], fixture["pack"]["entries"][1]["identifierHex"]);
       });
     },
     Error::invalidFixture},
    {"StandaloneOfAnotherName",
     [](const auto& copy) { alter(copy, payload, [](Json& fixture) { fixture["standalone"]["name"] = "pack-entry-zero"; }); },
     Error::invalidFixture},
    // Graph fixtures.
    {"TenArtifacts", [](const auto& copy) { alter(copy, graph, [](Json& fixture) { fixture["artifacts"].erase(6); }); },
     Error::invalidFixture},
    {"TwelveArtifacts",
     [](const auto& copy) {
       alter(copy, graph, [](Json& fixture) {
         Json extra = fixture["artifacts"][0];
         extra["identifierHex"] = std::string(32, '0');
         fixture["artifacts"].push_back(extra);
       });
     },
     Error::invalidFixture},
    {"SixSectionsAndTwoHeads",
     [](const auto& copy) { alter(copy, graph, [](Json& fixture) { fixture["artifacts"][6]["kind"] = "head"; }); },
     Error::invalidFixture},
    {"OneIdentifierTwiceInTwoCases",
     [](const auto& copy) {
       alter(copy, graph, [](Json& fixture) {
         fixture["artifacts"][1]["identifierHex"] = upperCase(fixture["artifacts"][0]["identifierHex"]);
       });
     },
     Error::invalidFixture},
    {"HeadReferenceWithAnotherFrameDigest",
     [](const auto& copy) {
       alter(copy, graph, [](Json& fixture) {
         fixture["headReference"]["frameSHA256Hex"] = flippedBit(fixture["headReference"]["frameSHA256Hex"], 63);
       });
     },
     Error::invalidFixture},
    {"TamperedRecoveredPayloadDigest",
     [](const auto& copy) {
       alter(copy, graph, [](Json& fixture) {
         fixture["expected"]["recoveredPayloadSHA256Hex"] = flippedBit(fixture["expected"]["recoveredPayloadSHA256Hex"], 5);
       });
     },
     Error::invalidFixture},
    {"GraphFixtureOf2097153Bytes", [](const auto& copy) { copy.write(graph, copy.read(graph), 2097153); },
     Error::invalidFixture},
    // Prototype header fixtures.
    {"PrototypeOfAnotherMagic",
     [](const auto& copy) { alter(copy, prototype, [](Json& fixture) { fixture["magic"] = "GALDRINE-DRAFT2"; }); },
     Error::invalidFixture},
};

class GaldrineRecoveryFixtureVerifierAlteredSet : public testing::TestWithParam<AlteredSet> {};

TEST_P(GaldrineRecoveryFixtureVerifierAlteredSet, FailsWithItsErrorAndAsACompatibilityFailure) {
  const FixtureSetCopy copy(committedSet);
  GetParam().alteration(copy);

  const auto result = Verifier::verifyFixtureIndex(copy.index());
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(result.error(), GetParam().expected);

  const GaldrineProgramOutcome run =
      GaldrineProgramRunner::run(GALDRINE_RECOVERY_EXECUTABLE, {"verify-fixtures", copy.index().string()});
  EXPECT_EQ(run.exitStatus, 4);
  EXPECT_EQ(run.standardOutput, "");
  EXPECT_EQ(run.standardError, "Galdrine compatibility verification failed.\n");
}

INSTANTIATE_TEST_SUITE_P(Cases, GaldrineRecoveryFixtureVerifierAlteredSet, testing::ValuesIn(alteredSets),
                         [](const auto& info) { return info.param.name; });

TEST(GaldrineRecoveryFixtureVerifier, CommittedSetVerifiesWithItsCounts) {
  const auto result = Verifier::verifyFixtureIndex(committedSet / "index.json");
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(*result, (GaldrineRecoveryFixtureVerificationResult{5, 10}));

  const struct {
    std::expected<std::int64_t, Error> (*verify)(const fs::path&);
    std::string_view name;
    std::int64_t count;
  } kinds[] = {{Verifier::verifyGoldenFixture, golden, 3},
               {Verifier::verifyKeyEnvelopeSetFixture, keyEnvelopes, 2},
               {Verifier::verifyPayloadFixture, payload, 3},
               {Verifier::verifyGraphFixture, graph, 2}};
  for (const auto& kind : kinds) {
    const auto count = kind.verify(committedSet / kind.name);
    ASSERT_TRUE(count.has_value()) << kind.name;
    EXPECT_EQ(*count, kind.count) << kind.name;
  }
}

TEST(GaldrineRecoveryFixtureVerifier, ProgramPrintsTheCountsOfTheCommittedSet) {
  const GaldrineProgramOutcome fixtures =
      GaldrineProgramRunner::run(GALDRINE_RECOVERY_EXECUTABLE, {"verify-fixtures", (committedSet / "index.json").string()});
  EXPECT_EQ(fixtures.exitStatus, 0);
  EXPECT_EQ(fixtures.standardOutput, "Galdrine recovery verified 5 compatibility fixtures and 10 production vectors.\n");
  EXPECT_EQ(fixtures.standardError, "");

  const GaldrineProgramOutcome goldenRun =
      GaldrineProgramRunner::run(GALDRINE_RECOVERY_EXECUTABLE, {"verify-golden", (committedSet / golden).string()});
  EXPECT_EQ(goldenRun.exitStatus, 0);
  EXPECT_EQ(goldenRun.standardOutput, "Galdrine recovery verified 3 synthetic V1 golden vectors.\n");

  const GaldrineProgramOutcome graphAsGolden =
      GaldrineProgramRunner::run(GALDRINE_RECOVERY_EXECUTABLE, {"verify-golden", (committedSet / graph).string()});
  EXPECT_EQ(graphAsGolden.exitStatus, 4);
  EXPECT_EQ(graphAsGolden.standardError, "Galdrine compatibility verification failed.\n");
}

// Hexadecimal fields may be written in either case, and keys this build does not know are
// passed over, so a fixture edited by another producer still verifies.
TEST(GaldrineRecoveryFixtureVerifier, UpperCaseHexAndUnknownKeysAreAccepted) {
  const FixtureSetCopy copy(committedSet);
  alter(copy, golden, [](Json& fixture) {
    fixture["headerHex"] = upperCase(fixture["headerHex"]);
    for (Json& vector : fixture["vectors"]) {
      vector["frameHex"] = upperCase(vector["frameHex"]);
      vector["producedBy"] = "another producer";
    }
    fixture["notes"] = Json::array({1, 2});
  });
  alterIndex(copy, [](Json& index) { index["fixtures"][0]["comment"] = "graph first"; });

  const auto count = Verifier::verifyGoldenFixture(copy / golden);
  ASSERT_TRUE(count.has_value());
  EXPECT_EQ(*count, 3);
  const auto result = Verifier::verifyFixtureIndex(copy.index());
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(*result, (GaldrineRecoveryFixtureVerificationResult{5, 10}));
}

TEST(GaldrineRecoveryFixtureVerifier, MalformedDocumentsAreInvalidFixtures) {
  const GaldrineTemporaryDirectory directory;
  const struct {
    std::string name;
    std::string text;
  } documents[] = {
      {"empty", ""},
      {"not JSON", "{\"fixtureSchemaVersion\": 1,"},
      {"an array", "[]"},
      {"invalid UTF-8", "{\"formatIdentifier\": \"\xff\"}"},
      {"version as text", "{\"fixtureSchemaVersion\": \"1\"}"},
  };
  for (const auto& document : documents) {
    GaldrineFileFixtures::writeFile(directory / "fixture.json", document.text);
    for (const auto verify : {Verifier::verifyGoldenFixture, Verifier::verifyKeyEnvelopeSetFixture,
                              Verifier::verifyPayloadFixture, Verifier::verifyGraphFixture}) {
      const auto result = verify(directory / "fixture.json");
      ASSERT_FALSE(result.has_value()) << document.name;
      EXPECT_EQ(result.error(), Error::invalidFixture) << document.name;
    }
  }
  // Nesting far deeper than any stack could recurse neither overflows the stack nor decodes.
  GaldrineFileFixtures::writeFile(directory / "nested.json", std::string(200000, '[') + std::string(200000, ']'));
  const auto nested = Verifier::verifyGoldenFixture(directory / "nested.json");
  ASSERT_FALSE(nested.has_value());
  EXPECT_EQ(nested.error(), Error::invalidFixture);
  const auto missing = Verifier::verifyFixtureIndex(directory / "no-index.json");
  ASSERT_FALSE(missing.has_value());
  EXPECT_EQ(missing.error(), Error::invalidIndex);
}

// The scratch directories of payload and graph fixtures are gone after every call, whether
// the fixture verified or not.
TEST(GaldrineRecoveryFixtureVerifier, ScratchDirectoriesAreRemovedOnEveryWayOut) {
  const GaldrineTemporaryDirectory temporary;
  const FixtureSetCopy copy(committedSet);
  alter(copy, graph, [](Json& fixture) {
    fixture["expected"]["recoveredPayloadSHA256Hex"] = std::string(64, '0');
  });
  const char* saved = ::getenv("TMPDIR");
  const std::string savedValue = saved == nullptr ? "" : saved;
  ::setenv("TMPDIR", temporary.path().c_str(), 1);
  const auto payloadCount = Verifier::verifyPayloadFixture(committedSet / payload);
  const auto graphCount = Verifier::verifyGraphFixture(committedSet / graph);
  const auto tampered = Verifier::verifyGraphFixture(copy / graph);
  if (saved == nullptr) {
    ::unsetenv("TMPDIR");
  } else {
    ::setenv("TMPDIR", savedValue.c_str(), 1);
  }
  EXPECT_TRUE(payloadCount.has_value());
  EXPECT_TRUE(graphCount.has_value());
  ASSERT_FALSE(tampered.has_value());
  EXPECT_EQ(tampered.error(), Error::invalidFixture);
  EXPECT_TRUE(fs::is_empty(temporary.path()));
}

TEST(GaldrineRecoveryFixtureVerifier, RelativeFileNames) {
  const struct {
    std::string name;
    bool valid;
  } cases[] = {
      {"golden-v1.json", true},  {std::string(255, 'a'), true}, {"", false},        {std::string(256, 'a'), false},
      {"a/b", false},            {"a\\b", false},               {".", false},       {"..", false},
      {"/golden.json", false},   {"\xff.json", false},          {"...", true},      {"golden.json/", false},
  };
  for (const auto& testCase : cases) {
    EXPECT_EQ(FixtureFiles::validRelativeFilename(testCase.name), testCase.valid) << testCase.name;
    EXPECT_EQ(FixtureFiles::fixtureURL("/fixtures/v1", testCase.name).has_value(), testCase.valid) << testCase.name;
  }
  EXPECT_EQ(FixtureFiles::fixtureURL("/fixtures/v1", "golden-v1.json"), fs::path("/fixtures/v1/golden-v1.json"));
}

TEST(GaldrineRecoveryFixtureVerifier, Identifiers) {
  for (const std::string& identifier : std::vector<std::string>{"golden", "a", "key-envelopes-2", std::string(128, 'z')})
    EXPECT_TRUE(FixtureFiles::validIdentifier(identifier)) << identifier;
  for (const std::string& identifier : std::vector<std::string>{"", "Golden", "golden_v1", "golden.v1", "gölden", std::string(129, 'z')})
    EXPECT_FALSE(FixtureFiles::validIdentifier(identifier)) << identifier;
}

}  // namespace
