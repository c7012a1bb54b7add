#include <gtest/gtest.h>

#include "writer/BackupPseudoRandom.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"
#include "support/BackupWriterTestSupport.hpp"

namespace galdrine::writer {

namespace {

using namespace testsupport::BackupWriterTestSupport;
using Source = BackupContentSource;
using Reader = BackupContentReader;

[[nodiscard]] std::expected<Bytes, Error> readInPieces(const Source& source, std::size_t pieceByteCount) {
  auto reader = Reader::open(source);
  if (!reader) return std::unexpected(reader.error());
  Bytes content;
  while (reader->position() < reader->byteCount()) {
    Bytes piece(std::min<std::uint64_t>(pieceByteCount, reader->byteCount() - reader->position()));
    if (auto done = reader->read(piece); !done) return std::unexpected(done.error());
    content.insert(content.end(), piece.begin(), piece.end());
  }
  if (auto done = reader->finish(); !done) return std::unexpected(done.error());
  return content;
}

TEST(BackupContentSource, EverySourceGivesItsBytesWhateverThePieces) {
  const testsupport::TemporaryDirectory directory;
  const Bytes expected = testsupport::BackupSampleLibrary::bytes(3, 10007);
  testsupport::FileFixtures::writeFile(directory / "content", expected);
  const Source sources[] = {Source::bytes(expected), Source::file(directory / "content"),
                            testsupport::BackupSampleLibrary::content(3, 10007)};
  for (const Source& source : sources) {
    for (const std::size_t piece : {1u, 7u, 4096u, 10007u, 20000u}) EXPECT_EQ(readInPieces(source, piece), expected) << piece;
  }
}

TEST(BackupContentSource, ASourceThatIsMissingOrChangesIsRefused) {
  const testsupport::TemporaryDirectory directory;
  const fs::path file = directory / "content";
  testsupport::FileFixtures::writeFile(file, Bytes(100, 1));

  auto grown = Reader::open(Source::file(file));
  ASSERT_TRUE(grown);
  Bytes all(100);
  ASSERT_TRUE(grown->read(all));
  testsupport::FileFixtures::writeFile(file, Bytes(101, 1));
  EXPECT_EQ(grown->finish().error(), Error::contentChanged);

  auto shrunk = Reader::open(Source::file(file));
  ASSERT_TRUE(shrunk);
  testsupport::FileFixtures::writeFile(file, Bytes(50, 1));
  Bytes wanted(101);
  EXPECT_EQ(shrunk->read(wanted).error(), Error::contentChanged);

  auto past = Reader::open(Source::bytes(Bytes(10, 2)));
  ASSERT_TRUE(past);
  Bytes eleven(11);
  EXPECT_EQ(past->read(eleven).error(), Error::contentChanged);
  Bytes five(5);
  ASSERT_TRUE(past->read(five));
  EXPECT_EQ(past->finish().error(), Error::contentChanged);  // half read

  testsupport::FileFixtures::makeDirectory(directory / "folder");
  EXPECT_EQ(Reader::open(Source::file(directory / "folder")).error(), Error::contentUnavailable);
  EXPECT_EQ(Reader::open(Source::file(directory / "absent")).error(), Error::contentUnavailable);
  EXPECT_EQ(Reader::open(Source::retained()).error(), Error::contentUnavailable);
}

TEST(BackupPseudoRandom, AnyPieceOfAStreamEqualsTheSameBytesOfTheWhole) {
  Bytes whole(64);
  BackupPseudoRandom::fill(11, 0, whole);
  for (std::size_t offset = 0; offset <= whole.size(); ++offset) {
    for (std::size_t count = 0; offset + count <= whole.size(); ++count) {
      Bytes piece(count);
      BackupPseudoRandom::fill(11, offset, piece);
      ASSERT_TRUE(std::ranges::equal(piece, std::span(whole).subspan(offset, count))) << offset << " " << count;
    }
  }
  Bytes other(64);
  BackupPseudoRandom::fill(12, 0, other);
  EXPECT_NE(whole, other);
}

TEST(BackupSampleLibrary, ALibraryFollowsFromItsShapeAndCanMoveToDisk) {
  const testsupport::BackupSampleLibraryShape shape{.seed = 4, .photoCount = 3, .livePhotoCount = 2, .videoCount = 1};
  const auto library = testsupport::BackupSampleLibrary::make(shape);
  const auto again = testsupport::BackupSampleLibrary::make(shape);
  ASSERT_EQ(library.items.size(), 6u);
  for (std::size_t index = 0; index < library.items.size(); ++index) EXPECT_EQ(library.items[index].identifier, again.items[index].identifier);
  EXPECT_EQ(library.items[3].kind, format::BackupMediaKindV1::livePhoto);
  EXPECT_EQ(library.items[3].resources[1].role, format::BackupMediaResourceRoleV1::pairedVideo);
  EXPECT_EQ(library.folders[1].parentFolderIdentifier, library.folders[0].identifier);
  EXPECT_EQ(library.memberships.size(), 6u);
  EXPECT_EQ(expectedContents(library), expectedContents(again));

  const testsupport::TemporaryDirectory directory;
  const auto onDisk = testsupport::BackupSampleLibrary::materialize(library, directory.path());
  ASSERT_TRUE(onDisk);
  EXPECT_EQ(namesIn(directory.path()).size(), 8u);
  EXPECT_EQ(expectedContents(*onDisk), expectedContents(library));
}

}  // namespace

}  // namespace galdrine::writer
