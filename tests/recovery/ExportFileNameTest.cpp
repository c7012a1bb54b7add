#include "recovery/export/ExportFileName.hpp"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "platform/UTF8.hpp"
#include "platform/UnicodeScalars.hpp"
#include "platform/UnicodeText.hpp"
#include "ExportTestRecords.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryExporterError;
using Kind = format::BackupMediaKindV1;
using Role = format::BackupMediaResourceRoleV1;

struct NameCase {
  std::string originalFilename;
  Kind kind;
  std::string uniformTypeIdentifier;
  bool hasMultipleResources;
  Role role;
  std::string expected;
};

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  for (std::size_t index = 0; index < count; ++index) result += text;
  return result;
}

TEST(ExportFileName, PreferredFilenameCleansEveryStepInOrder) {
  const NameCase cases[] = {
      {"IMG_0001.JPG", Kind::photo, "public.jpeg", false, Role::primary, "IMG_0001.JPG"},
      // Nothing left of the name: the kind names it, the type's preferred tag ends it.
      {". . ..", Kind::photo, "public.jpeg", false, Role::primary, "Photo.jpeg"},
      {" .. ", Kind::video, "com.apple.quicktime-movie", false, Role::primary, "Video.mov"},
      {"..", Kind::livePhoto, "public.heic", false, Role::primary, "Photo.heic"},
      {"", Kind::photo, "public.png", false, Role::primary, "Photo.png"},
      // Reserved device names, in any case, and only as the whole stem.
      {"con.jpg", Kind::photo, "public.jpeg", false, Role::primary, "_con.jpg"},
      {"COM1.png", Kind::photo, "public.png", false, Role::primary, "_COM1.png"},
      {"lpt9.jpeg", Kind::photo, "public.jpeg", false, Role::primary, "_lpt9.jpeg"},
      {"COM0.png", Kind::photo, "public.png", false, Role::primary, "COM0.png"},
      {"CON.txt.jpg", Kind::photo, "public.jpeg", false, Role::primary, "CON.txt.jpg"},
      {"con.jpg", Kind::photo, "public.jpeg", true, Role::primary, "_con-current.jpg"},
      // Structure and control characters become "_".
      {"a/b:c.jpg", Kind::photo, "public.jpeg", false, Role::primary, "a_b_c.jpg"},
      {"<>:\"/\\|?*.png", Kind::photo, "public.png", false, Role::primary, "_________.png"},
      {"a\tb\xE2\x80\x8B" "c\xE2\x80\xAE.jpg", Kind::photo, "public.jpeg", false, Role::primary, "a_b_c_.jpg"},
      {std::string("x\0y.jpg", 7), Kind::photo, "public.jpeg", false, Role::primary, "x_y.jpg"},
      // Trimming, then trailing dots and spaces, then the split at the last dot.
      {"  photo.jpg...  ", Kind::photo, "public.jpeg", false, Role::primary, "photo.jpg"},
      {"\xE3\x80\x80spaced name . jpg\xE3\x80\x80", Kind::photo, "public.jpeg", false, Role::primary, "spaced name .jpeg"},
      {".hidden", Kind::photo, "public.png", false, Role::primary, ".hidden.png"},
      {"a.b.c", Kind::photo, "public.jpeg", false, Role::primary, "a.b.jpeg"},
      // Form C: a decomposed accent is composed.
      {"e\xCC\x81.jpg", Kind::photo, "public.jpeg", false, Role::primary, "\xC3\xA9.jpg"},
      // Extensions: kept with their case when a tag ignoring case, in full case folding.
      {"IMG.HEIC", Kind::livePhoto, "public.heic", true, Role::primary, "IMG-current.HEIC"},
      {"IMG.HEIC", Kind::livePhoto, "com.apple.quicktime-movie", true, Role::pairedVideo, "IMG-motion.mov"},
      {"IMG.jpg", Kind::photo, "public.jpeg", true, Role::original, "IMG-original.jpg"},
      {"IMG.jpg", Kind::photo, "public.jpeg", true, Role::rendered, "IMG-rendered.jpg"},
      {"clip.t\xC5\xBF", Kind::video, "public.mpeg-2-transport-stream", false, Role::primary, "clip.t\xC5\xBF"},
      {"x.JPG", Kind::photo, "com.example.unknown", false, Role::primary, "x.bin"},
      {"x.foo", Kind::photo, "com.example.unknown", false, Role::primary, "x.bin"},
      {"x.jpg", Kind::photo, "public.image", false, Role::primary, "x.bin"},
      {"x.png", Kind::photo, "PUBLIC.JPEG", false, Role::primary, "x.jpeg"},
      // 180 bytes of stem, cut only between characters.
      {repeated("a", 180) + ".jpg", Kind::photo, "public.jpeg", false, Role::primary, repeated("a", 180) + ".jpg"},
      {repeated("a", 179) + "\xC3\xA9.jpg", Kind::photo, "public.jpeg", false, Role::primary, repeated("a", 179) + ".jpg"},
      {repeated("a", 178) + "q\xCC\x81.jpg", Kind::photo, "public.jpeg", false, Role::primary, repeated("a", 178) + ".jpg"},
      {repeated("a", 175) + ".jpg", Kind::photo, "public.jpeg", true, Role::primary, repeated("a", 175) + "-curr.jpg"},
  };
  for (const auto& testCase : cases) {
    SCOPED_TRACE(testCase.originalFilename);
    const auto item = ExportTestRecords::item(1, testCase.originalFilename, {10}, testCase.kind);
    const auto resource = ExportTestRecords::resource(10, 1, testCase.uniformTypeIdentifier, testCase.role);
    const auto name = preferredFilename(item, resource, testCase.hasMultipleResources);
    ASSERT_TRUE(name.has_value());
    EXPECT_EQ(*name, testCase.expected);
  }
}

TEST(ExportFileName, AFirstCharacterLongerThanTheStemLimitIsAnIntegrityFailure) {
  const auto item = ExportTestRecords::item(1, "a" + repeated("\xCC\x81", 100) + ".jpg", {10});
  const auto name = preferredFilename(item, ExportTestRecords::resource(10, 1), false);
  ASSERT_FALSE(name.has_value());
  EXPECT_EQ(name.error(), Error::integrityFailure);
}

TEST(ExportFileName, TruncationKeepsWholeCharactersWithinTheByteCount) {
  EXPECT_EQ(*truncated("ab\xC3\xA9", 3), "ab");
  EXPECT_EQ(*truncated("ab\xC3\xA9", 4), "ab\xC3\xA9");
  EXPECT_EQ(*truncated("\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA", 7), "");  // one flag of 8 bytes
  EXPECT_EQ(truncated("\xC3", 10).error(), Error::integrityFailure);
}

// Hostile names of up to the record's 1,024 bytes, made of the pieces that break file systems,
// always give one flat, safe name, or the one failure of a first character too long to keep.
TEST(ExportFileName, HostileNamesAlwaysGiveOneSafeFlatName) {
  const std::vector<std::string> pieces = {"..", ".", "/", "\\", " ", "\t", "\n", std::string(1, '\0'), "\x7F",
                                           "\xE2\x80\xAE", "\xC2\xA0", "CON", "a", "\xC3\x84", "\xCC\x81", ":",
                                           "\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9", "*", "?", ".jpg", "-"};
  std::mt19937 random(2024);
  std::size_t failures = 0;
  for (int round = 0; round < 600; ++round) {
    std::string original;
    const std::size_t pieceCount = random() % 400;
    for (std::size_t index = 0; index < pieceCount; ++index) {
      const std::string& piece = pieces[random() % pieces.size()];
      if (original.size() + piece.size() > format::BackupMediaItemRecordV1::maximumOriginalFilenameByteCount) break;
      original += piece;
    }
    const auto item = ExportTestRecords::item(1, original, {10}, round % 2 == 0 ? Kind::photo : Kind::video);
    const auto name = preferredFilename(item, ExportTestRecords::resource(10, 1), round % 3 == 0);
    if (!name) {
      EXPECT_EQ(name.error(), Error::integrityFailure);
      ++failures;
      continue;
    }
    SCOPED_TRACE(original);
    ASSERT_TRUE(platform::UTF8::isValid(*name));
    EXPECT_LE(name->size(), maximumStemUTF8ByteCount + 1 + 4 * maximumExtensionScalarCount);
    EXPECT_NE(*name, ".");
    EXPECT_NE(*name, "..");
    EXPECT_EQ(name->find_first_of(std::string("/\\", 2) + std::string(1, '\0')), std::string::npos);
    const auto scalars = platform::UnicodeScalars::scalars(*name);
    ASSERT_TRUE(scalars.has_value());
    for (const char32_t scalar : *scalars) EXPECT_FALSE(platform::UnicodeScalars::isControl(scalar));
    const std::size_t dot = name->rfind('.');
    ASSERT_NE(dot, std::string::npos);
    EXPECT_GT(dot, 0u);
    const std::string extension = name->substr(dot + 1);
    EXPECT_TRUE(extension == "jpg" || extension == "jpeg") << "a kept tag or the preferred one";
  }
  EXPECT_LT(failures, 60u);  // only names whose first character is a long run of combining marks
}

TEST(ExportFileName, CollisionsCompareIgnoringCaseAndAccentsAndContinueTheirSuffixes) {
  struct Sequence {
    std::string name;
    std::vector<std::string> names;
    std::vector<std::string> expected;
  };
  const Sequence sequences[] = {
      {"three of a kind", {"a.jpg", "a.jpg", "a.jpg"}, {"a.jpg", "a-2.jpg", "a-3.jpg"}},
      {"case and accents", {"\xC3\x84.jpg", "a.JPG"}, {"\xC3\x84.jpg", "a-2.JPG"}},
      {"composed or not", {"R\xC3\xA9sum\xC3\xA9.JPG", "resume\xCC\x81.jpg"}, {"R\xC3\xA9sum\xC3\xA9.JPG", "resume\xCC\x81-2.jpg"}},
      {"suffix already taken", {"a-2.jpg", "a.jpg", "a.jpg", "a.jpg"}, {"a-2.jpg", "a.jpg", "a-3.jpg", "a-4.jpg"}},
      {"twin of a suffixed name", {"a.jpg", "a.jpg", "a-2.jpg"}, {"a.jpg", "a-2.jpg", "a-2-2.jpg"}},
      {"no extension", {"a", "A"}, {"a", "A-2"}},
  };
  for (const auto& sequence : sequences) {
    SCOPED_TRACE(sequence.name);
    UsedNames usedNames;
    NextSuffixByName nextSuffixByName;
    for (std::size_t index = 0; index < sequence.names.size(); ++index) {
      const auto name = collisionSafeName(sequence.names[index], 10, usedNames, nextSuffixByName);
      ASSERT_TRUE(name.has_value());
      EXPECT_EQ(*name, sequence.expected[index]);
    }
  }
}

TEST(ExportFileName, CollisionAttemptsRunOutAsAResourceLimit) {
  UsedNames usedNames;
  NextSuffixByName nextSuffixByName;
  for (const char* name : {"a.jpg", "a-2.jpg"}) ASSERT_TRUE(collisionSafeName(name, 1, usedNames, nextSuffixByName));
  const auto third = collisionSafeName("a.jpg", 1, usedNames, nextSuffixByName);
  ASSERT_FALSE(third.has_value());
  EXPECT_EQ(third.error(), Error::resourceLimitExceeded);
  EXPECT_EQ(*collisionSafeName("a.jpg", 2, usedNames, nextSuffixByName), "a-3.jpg");
}

// ASCII names take a shorter road to their key; it must end where the text services end.
TEST(ExportFileName, ComparisonKeyOfASCIIEqualsTheFullFolding) {
  std::string every;
  for (int character = 0; character < 0x80; ++character) every.push_back(static_cast<char>(character));
  for (std::size_t start = 0; start < every.size(); start += 16) {
    const std::string text = every.substr(start, 16) + "Photo.JPG";
    EXPECT_EQ(*comparisonKey(text), *platform::UnicodeText::caseAndDiacriticFolded(text)) << start;
  }
  EXPECT_EQ(*comparisonKey("R\xC3\xA9sum\xC3\xA9.JPG"), "resume.jpg");
}

// Whatever names come, in whatever order, no two names given have one comparison key.
TEST(ExportFileName, CollisionSafeNamesNeverShareAComparisonKey) {
  const std::vector<std::string> stems = {"a", "A", "\xC3\xA4", "a\xCC\x88", "a-2", "A-2", "a-3", "\xC3\x85"};
  const std::vector<std::string> extensions = {"jpg", "JPG", "j\xC3\xB6"};
  std::mt19937 random(11);
  for (int round = 0; round < 50; ++round) {
    UsedNames usedNames;
    NextSuffixByName nextSuffixByName;
    std::set<std::string> keys;
    const std::size_t count = 1 + random() % 60;
    for (std::size_t index = 0; index < count; ++index) {
      const std::string original = stems[random() % stems.size()] + "." + extensions[random() % extensions.size()];
      const auto name = collisionSafeName(original, count + 1, usedNames, nextSuffixByName);
      ASSERT_TRUE(name.has_value());
      EXPECT_TRUE(keys.insert(*comparisonKey(*name)).second) << *name;
    }
  }
}

}  // namespace

}  // namespace galdrine::recovery
