#include <gtest/gtest.h>

#include "GaldrineBackupWriter/GaldrineBackupPseudoRandomV1.hpp"
#include "Support/GaldrineFileFixtures.hpp"
#include "Support/GaldrineTemporaryDirectory.hpp"
#include "tests/GaldrineBackupWriter/GaldrineBackupWriterTestSupport.hpp"

namespace {

using namespace GaldrineBackupWriterTestSupport;
using Source = GaldrineBackupContentSourceV1;
using Reader = GaldrineBackupContentReaderV1;

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

TEST(GaldrineBackupContentSourceV1, EverySourceGivesItsBytesWhateverThePieces) {
  const GaldrineTemporaryDirectory directory;
  const Bytes expected = GaldrineBackupSampleLibraryV1::bytes(3, 10007);
  GaldrineFileFixtures::writeFile(directory / "content", expected);
  const Source sources[] = {Source::bytes(expected), Source::file(directory / "content"),
                            GaldrineBackupSampleLibraryV1::content(3, 10007)};
  for (const Source& source : sources) {
    for (const std::size_t piece : {1, 7, 4096, 10007, 20000}) EXPECT_EQ(readInPieces(source, piece), expected) << piece;
  }
}

TEST(GaldrineBackupContentSourceV1, ASourceThatIsMissingOrChangesIsRefused) {
  const GaldrineTemporaryDirectory directory;
  const fs::path file = directory / "content";
  GaldrineFileFixtures::writeFile(file, Bytes(100, 1));

  auto grown = Reader::open(Source::file(file));
  ASSERT_TRUE(grown);
  Bytes all(100);
  ASSERT_TRUE(grown->read(all));
  GaldrineFileFixtures::writeFile(file, Bytes(101, 1));
  EXPECT_EQ(grown->finish().error(), Error::contentChanged);

  auto shrunk = Reader::open(Source::file(file));
  ASSERT_TRUE(shrunk);
  GaldrineFileFixtures::writeFile(file, Bytes(50, 1));
  Bytes wanted(101);
  EXPECT_EQ(shrunk->read(wanted).error(), Error::contentChanged);

  auto past = Reader::open(Source::bytes(Bytes(10, 2)));
  ASSERT_TRUE(past);
  Bytes eleven(11);
  EXPECT_EQ(past->read(eleven).error(), Error::contentChanged);
  Bytes five(5);
  ASSERT_TRUE(past->read(five));
  EXPECT_EQ(past->finish().error(), Error::contentChanged);  // half read

  GaldrineFileFixtures::makeDirectory(directory / "folder");
  EXPECT_EQ(Reader::open(Source::file(directory / "folder")).error(), Error::contentUnavailable);
  EXPECT_EQ(Reader::open(Source::file(directory / "absent")).error(), Error::contentUnavailable);
  EXPECT_EQ(Reader::open(Source::retained()).error(), Error::contentUnavailable);
}

TEST(GaldrineBackupPseudoRandomV1, AnyPieceOfAStreamEqualsTheSameBytesOfTheWhole) {
  Bytes whole(64);
  GaldrineBackupPseudoRandomV1::fill(11, 0, whole);
  for (std::size_t offset = 0; offset <= whole.size(); ++offset) {
    for (std::size_t count = 0; offset + count <= whole.size(); ++count) {
      Bytes piece(count);
      GaldrineBackupPseudoRandomV1::fill(11, offset, piece);
      ASSERT_TRUE(std::ranges::equal(piece, std::span(whole).subspan(offset, count))) << offset << " " << count;
    }
  }
  Bytes other(64);
  GaldrineBackupPseudoRandomV1::fill(12, 0, other);
  EXPECT_NE(whole, other);
}

TEST(GaldrineBackupSampleLibraryV1, ALibraryFollowsFromItsShapeAndCanMoveToDisk) {
  const GaldrineBackupSampleLibraryShapeV1 shape{.seed = 4, .photoCount = 3, .livePhotoCount = 2, .videoCount = 1};
  const auto library = GaldrineBackupSampleLibraryV1::make(shape);
  const auto again = GaldrineBackupSampleLibraryV1::make(shape);
  ASSERT_EQ(library.items.size(), 6u);
  for (std::size_t index = 0; index < library.items.size(); ++index) EXPECT_EQ(library.items[index].identifier, again.items[index].identifier);
  EXPECT_EQ(library.items[3].kind, GaldrineBackupMediaKindV1::livePhoto);
  EXPECT_EQ(library.items[3].resources[1].role, GaldrineBackupMediaResourceRoleV1::pairedVideo);
  EXPECT_EQ(library.folders[1].parentFolderIdentifier, library.folders[0].identifier);
  EXPECT_EQ(library.memberships.size(), 6u);
  EXPECT_EQ(expectedContents(library), expectedContents(again));

  const GaldrineTemporaryDirectory directory;
  const auto onDisk = GaldrineBackupSampleLibraryV1::materialize(library, directory.path());
  ASSERT_TRUE(onDisk);
  EXPECT_EQ(namesIn(directory.path()).size(), 8u);
  EXPECT_EQ(expectedContents(*onDisk), expectedContents(library));
}

}  // namespace
