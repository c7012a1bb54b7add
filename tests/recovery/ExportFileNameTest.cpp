#include "recovery/export/ExportFileName.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ExportTestRecords.hpp"
#include "platform/UnicodeText.hpp"

namespace galdrine::recovery {

namespace {

using Error = RecoveryExporterError;
using Kind = format::BackupMediaKindV1;
using Role = format::BackupMediaResourceRoleV1;

std::string repeated(std::string_view text, std::size_t count) {
  std::string result;
  for (std::size_t index = 0; index < count; ++index) result += text;
  return result;
}

TEST(ExportFileName, PreferredFilenameCleansEveryStepInOrder) {
  const struct {
    std::string originalFilename;
    Kind kind;
    std::string uniformTypeIdentifier;
    bool hasMultipleResources;
    Role role;
    std::string expected;
  } cases[] = {
      {"IMG_0001.JPG", Kind::photo, "public.jpeg", false, Role::primary, "IMG_0001.JPG"},
      // Nothing left of the name: the kind names it, the type's preferred tag ends it.
      {". . ..", Kind::photo, "public.jpeg", false, Role::primary, "Photo.jpeg"},
      {" .. ", Kind::video, "com.apple.quicktime-movie", false, Role::primary, "Video.mov"},
      {"", Kind::photo, "public.png", false, Role::primary, "Photo.png"},
      // Reserved device names, in any case, and only as the whole stem.
      {"con.jpg", Kind::photo, "public.jpeg", false, Role::primary, "_con.jpg"},
      {"COM1.png", Kind::photo, "public.png", false, Role::primary, "_COM1.png"},
      {"COM0.png", Kind::photo, "public.png", false, Role::primary, "COM0.png"},
      {"CON.txt.jpg", Kind::photo, "public.jpeg", false, Role::primary, "CON.txt.jpg"},
      {"con.jpg", Kind::photo, "public.jpeg", true, Role::primary, "_con-current.jpg"},
      // Structure and control characters become "_".
      {"a/b:c.jpg", Kind::photo, "public.jpeg", false, Role::primary, "a_b_c.jpg"},
      {"a\tb\xE2\x80\x8B"
       "c\xE2\x80\xAE.jpg",
       Kind::photo, "public.jpeg", false, Role::primary, "a_b_c_.jpg"},
      {std::string("x\0y.jpg", 7), Kind::photo, "public.jpeg", false, Role::primary, "x_y.jpg"},
      // Trimming, then trailing dots and spaces, then the split at the last dot.
      {"  photo.jpg...  ", Kind::photo, "public.jpeg", false, Role::primary, "photo.jpg"},
      {"\xE3\x80\x80spaced name . jpg\xE3\x80\x80", Kind::photo, "public.jpeg", false, Role::primary,
       "spaced name .jpeg"},
      {".hidden", Kind::photo, "public.png", false, Role::primary, ".hidden.png"},
      {"a.b.c", Kind::photo, "public.jpeg", false, Role::primary, "a.b.jpeg"},
      // Form C: a decomposed accent is composed.
      {"e\xCC\x81.jpg", Kind::photo, "public.jpeg", false, Role::primary, "\xC3\xA9.jpg"},
      // Extensions: kept with their case when a tag ignoring case, in full case folding.
      {"IMG.HEIC", Kind::livePhoto, "public.heic", true, Role::primary, "IMG-current.HEIC"},
      {"IMG.HEIC", Kind::livePhoto, "com.apple.quicktime-movie", true, Role::pairedVideo, "IMG-motion.mov"},
      {"IMG.jpg", Kind::photo, "public.jpeg", true, Role::original, "IMG-original.jpg"},
      {"clip.t\xC5\xBF", Kind::video, "public.mpeg-2-transport-stream", false, Role::primary, "clip.t\xC5\xBF"},
      {"x.JPG", Kind::photo, "com.example.unknown", false, Role::primary, "x.bin"},
      {"x.jpg", Kind::photo, "public.image", false, Role::primary, "x.bin"},
      {"x.png", Kind::photo, "PUBLIC.JPEG", false, Role::primary, "x.jpeg"},
      // 180 bytes of stem, cut only between characters.
      {repeated("a", 180) + ".jpg", Kind::photo, "public.jpeg", false, Role::primary, repeated("a", 180) + ".jpg"},
      {repeated("a", 179) + "\xC3\xA9.jpg", Kind::photo, "public.jpeg", false, Role::primary,
       repeated("a", 179) + ".jpg"},
      {repeated("a", 178) + "q\xCC\x81.jpg", Kind::photo, "public.jpeg", false, Role::primary,
       repeated("a", 178) + ".jpg"},
      {repeated("a", 175) + ".jpg", Kind::photo, "public.jpeg", true, Role::primary, repeated("a", 175) + "-curr.jpg"},
  };
  for (const auto& testCase : cases) {
    SCOPED_TRACE(testCase.originalFilename);
    const auto item = ExportTestRecords::item(1, testCase.originalFilename, {10}, testCase.kind);
    const auto resource = ExportTestRecords::resource(10, 1, testCase.uniformTypeIdentifier, testCase.role);
    EXPECT_EQ(preferredFilename(item, resource, testCase.hasMultipleResources), testCase.expected);
  }
}

// A stem is cut to whole characters, so a first character longer than the limit leaves none.
TEST(ExportFileName, TruncationKeepsWholeCharactersWithinTheByteCount) {
  const auto item = ExportTestRecords::item(1, std::string("a").append(repeated("\xCC\x81", 100)).append(".jpg"), {10});
  EXPECT_EQ(preferredFilename(item, ExportTestRecords::resource(10, 1), false),
            std::unexpected(Error::integrityFailure));
  EXPECT_EQ(*truncated("ab\xC3\xA9", 3), "ab");
  EXPECT_EQ(*truncated("ab\xC3\xA9", 4), "ab\xC3\xA9");
  EXPECT_EQ(*truncated("\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA", 7), "");  // one flag of 8 bytes
  EXPECT_EQ(truncated("\xC3", 10).error(), Error::integrityFailure);
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
      {"composed or not",
       {"R\xC3\xA9sum\xC3\xA9.JPG", "resume\xCC\x81.jpg"},
       {"R\xC3\xA9sum\xC3\xA9.JPG", "resume\xCC\x81-2.jpg"}},
      {"suffix already taken", {"a-2.jpg", "a.jpg", "a.jpg", "a.jpg"}, {"a-2.jpg", "a.jpg", "a-3.jpg", "a-4.jpg"}},
      {"twin of a suffixed name", {"a.jpg", "a.jpg", "a-2.jpg"}, {"a.jpg", "a-2.jpg", "a-2-2.jpg"}},
      {"no extension", {"a", "A"}, {"a", "A-2"}},
  };
  for (const auto& sequence : sequences) {
    SCOPED_TRACE(sequence.name);
    UsedNames usedNames;
    NextSuffixByName nextSuffixByName;
    for (std::size_t index = 0; index < sequence.names.size(); ++index) {
      EXPECT_EQ(collisionSafeName(sequence.names[index], 10, usedNames, nextSuffixByName), sequence.expected[index]);
    }
  }
}

TEST(ExportFileName, CollisionAttemptsRunOutAsAResourceLimit) {
  UsedNames usedNames;
  NextSuffixByName nextSuffixByName;
  for (const char* name : {"a.jpg", "a-2.jpg"}) ASSERT_TRUE(collisionSafeName(name, 1, usedNames, nextSuffixByName));
  EXPECT_EQ(collisionSafeName("a.jpg", 1, usedNames, nextSuffixByName), std::unexpected(Error::resourceLimitExceeded));
  EXPECT_EQ(collisionSafeName("a.jpg", 2, usedNames, nextSuffixByName), "a-3.jpg");
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

}  // namespace

}  // namespace galdrine::recovery
