#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "io/FileSource.h"
#include "tests/Fixtures.h"
#include "tests/SourceFixtures.h"

TEST(FileSource, ReadsAFile) {
  const TempFile file(CountingFromZero(300));
  mp4::OpenResult result;
  const auto source = mp4::FileSource::Open(file.path().c_str(), &result);
  ASSERT_NE(source, nullptr);
  EXPECT_EQ(result.fault, mp4::OpenFault::kNone);
  EXPECT_EQ(source->Size(), 300u);
  unsigned char got[50] = {};
  EXPECT_EQ(source->ReadAt(290, got, 50), 10u);
  EXPECT_EQ(got[9], 299 - 256);
  EXPECT_FALSE(source->Failed());
}

TEST(FileSource, SaysWhyAFileDoesNotOpen) {
  mp4::OpenResult result;
  EXPECT_EQ(mp4::FileSource::Open("/nowhere/at/all", &result), nullptr);
  EXPECT_EQ(result.fault, mp4::OpenFault::kSystem);
  EXPECT_EQ(result.error, ENOENT);
  EXPECT_EQ(mp4::FileSource::Open(TempFile::Directory().c_str(), &result), nullptr);
  EXPECT_EQ(result.fault, mp4::OpenFault::kDirectory);
  EXPECT_EQ(mp4::FileSource::Open("/dev/null", &result), nullptr);
  EXPECT_EQ(result.fault, mp4::OpenFault::kNotRegular);
  EXPECT_EQ(mp4::FileSource::Open(nullptr, nullptr), nullptr);
}

TEST(FileSource, DoesNotWaitForAPipe) {
  const std::string path = TempFile::Directory() + "/mp4judge-pipe-" + std::to_string(getpid());
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  mp4::OpenResult result;
  EXPECT_EQ(mp4::FileSource::Open(path.c_str(), &result), nullptr);
  EXPECT_EQ(result.fault, mp4::OpenFault::kNotRegular);
  std::remove(path.c_str());
}

TEST(FileSource, AFileThatBecomesShorterIsTroubleNotAnEnd) {
  const TempFile file(CountingFromZero(300));
  const auto source = mp4::FileSource::Open(file.path().c_str(), nullptr);
  ASSERT_NE(source, nullptr);
  ASSERT_EQ(truncate(file.path().c_str(), 100), 0);
  unsigned char got[300];
  EXPECT_EQ(source->ReadAt(50, got, 200), 50u);
  EXPECT_EQ(source->Trouble().fault, mp4::SourceFault::kReadFailed);
  EXPECT_EQ(source->Trouble().offset, 100u);
  EXPECT_EQ(source->Trouble().size, 150u);
  EXPECT_EQ(source->Trouble().error, 0);
}
