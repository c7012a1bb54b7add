#include <gtest/gtest.h>

#include "support/BackupWriterTestSupport.hpp"
#include "support/FileFixtures.hpp"
#include "support/TemporaryDirectory.hpp"

namespace galdrine::writer {

namespace {

using namespace testsupport::BackupWriterTestSupport;
using Source = BackupContentSource;
using Reader = BackupContentReader;

// A source must give the length it had when opened, from its first byte to its last: a file
// that grew or shrank meanwhile, or a reader asked for more or for less, is contentChanged.
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

  auto past = Reader::open(testsupport::BackupSampleLibrary::content(2, 10));
  ASSERT_TRUE(past);
  Bytes eleven(11);
  EXPECT_EQ(past->read(eleven).error(), Error::contentChanged);
  Bytes five(5);
  ASSERT_TRUE(past->read(five));
  EXPECT_EQ(past->finish().error(), Error::contentChanged);  // half read

  testsupport::FileFixtures::makeDirectory(directory / "folder");
  EXPECT_EQ(Reader::open(Source::file(directory / "folder")).error(), Error::contentUnavailable);
  EXPECT_EQ(Reader::open(Source::file(directory / "absent")).error(), Error::contentUnavailable);
}

}  // namespace

}  // namespace galdrine::writer
