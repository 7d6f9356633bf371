#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "demux/FileInfoInterface.h"
#include "door/HostJudgement.h"
#include "io/ByteSource.h"
#include "mp4judge/mp4judge.h"
#include "tests/Fixtures.h"
#include "tests/MovieFixtures.h"

using namespace fixture;

namespace {

Bytes FileOf(const std::string& format) {
  return Ftyp("M4A ", {"mp42"}) + Moov({Track{.format = format, .handler = "soun"}});
}

mp4judge_host_answer Judge(const Bytes& bytes) {
  const TempFile file(bytes);
  return mp4judge_host_judge(file.path().c_str());
}

/// Bytes of which nothing from `end` on can be read.
class FailingFrom : public mp4::ByteSource {
 public:
  FailingFrom(const Bytes& bytes, std::size_t end) : bytes_(bytes), end_(end) {
    SetSize(bytes.size());
  }

 private:
  std::size_t Deliver(std::uint64_t offset, unsigned char* out, std::size_t n) override {
    if (offset + n > end_) Report({mp4::SourceFault::kReadFailed, offset, n, EIO});
    if (offset >= end_) return 0;
    n = std::min<std::size_t>(n, end_ - offset);
    std::memcpy(out, bytes_.data() + offset, n);
    return n;
  }

  const Bytes& bytes_;
  std::size_t end_;
};

/// A protected file under a name of the test's choice, in a folder of its own.
class NamedSong : public testing::Test {
 protected:
  void SetUp() override {
    folder = TempFile::Directory() + "/mp4judge-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
  }
  void TearDown() override {
    if (!name.empty()) std::remove(name.c_str());
    rmdir(folder.c_str());
  }
  /// Gives the file a name inside the folder.
  const char* Named(const std::string& last) {
    const TempFile file(FileOf("drms"));
    name = folder + "/" + last;
    EXPECT_EQ(link(file.path().c_str(), name.c_str()), 0) << last;
    return name.c_str();
  }
  std::string folder;
  std::string name;
};

}  // namespace

TEST(HostJudgement, HasThreeAnswers) {
  EXPECT_EQ(Judge(FileOf("mp4a")), MP4JUDGE_HOST_CLEAR);
  EXPECT_EQ(Judge(FileOf("drms")), MP4JUDGE_HOST_PROTECTED);
  EXPECT_EQ(Judge(Ftyp("isom")), MP4JUDGE_HOST_UNREADABLE);
}

TEST(HostJudgement, AFileThatFailsBehindItsMovieIsUnreadable) {
  const Bytes bad = SizedBox(4, "moof", Bytes().Fill(16));
  EXPECT_EQ(Judge(FileOf("mp4a") + bad), MP4JUDGE_HOST_UNREADABLE);
  EXPECT_EQ(Judge(FileOf("drms") + bad), MP4JUDGE_HOST_UNREADABLE);
}

TEST(HostJudgement, WhatCannotBeOpenedIsUnreadable) {
  EXPECT_EQ(mp4judge_host_judge(nullptr), MP4JUDGE_HOST_UNREADABLE);
  EXPECT_EQ(mp4judge_host_judge(""), MP4JUDGE_HOST_UNREADABLE);
  EXPECT_EQ(mp4judge_host_judge("/nonexistent/never.mp4"), MP4JUDGE_HOST_UNREADABLE);
  EXPECT_EQ(mp4judge_host_judge("/"), MP4JUDGE_HOST_UNREADABLE);
  EXPECT_EQ(mp4judge_host_judge("/dev/zero"), MP4JUDGE_HOST_UNREADABLE);
}

// The last movie box of a file counts. Here it cannot be read: to the host's parsers it is zeros,
// and the movie before it would look clear.
TEST(HostJudgement, NothingIsClearAfterAReadThatFailed) {
  const Bytes bytes = FileOf("mp4a") + Box("free", Bytes().Fill(3000)) +
                      Moov({Track{.format = "drms", .handler = "soun"}});
  FailingFrom whole(bytes, bytes.size());
  EXPECT_EQ(mp4::HostAnswer(&whole), MP4JUDGE_HOST_PROTECTED);
  FailingFrom cut(bytes, 3000);
  EXPECT_EQ(mp4::HostAnswer(&cut), MP4JUDGE_HOST_UNREADABLE);
}

TEST(HostJudgement, AFailureWhereNothingIsReadChangesNothing) {
  const Bytes bytes = FileOf("mp4a") + Box("mdat", Bytes().Fill(3000));
  FailingFrom source(bytes, bytes.size() - 1);
  EXPECT_EQ(mp4::HostAnswer(&source), MP4JUDGE_HOST_CLEAR);
}

TEST(HostJudgement, AProtectedTrackThatWasReadStaysProtected) {
  const Bytes bytes = FileOf("drms") + Box("mdat", Bytes().Fill(3000)) + Box("free");
  FailingFrom source(bytes, 3000);
  EXPECT_EQ(mp4::HostAnswer(&source), MP4JUDGE_HOST_PROTECTED);
  EXPECT_TRUE(source.Failed());
}

TEST_F(NamedSong, UnderAUtf8NameIsFound) {
  EXPECT_EQ(mp4judge_host_judge(Named("\xC3\xBC\xE2\x82\xAC\xF0\x9D\x84\x9E.m4a")),
            MP4JUDGE_HOST_PROTECTED);
}

TEST_F(NamedSong, UnderANameThatIsNotUtf8IsFound) {
  EXPECT_EQ(mp4judge_host_judge(Named("\xFF.m4a")), MP4JUDGE_HOST_PROTECTED);
}

TEST_F(NamedSong, UnderASurrogateOrAnOverlongFormIsFound) {
  EXPECT_EQ(mp4judge_host_judge(Named("\xED\xA0\x80\xC0\xAF")), MP4JUDGE_HOST_PROTECTED);
}

// The wide entry cuts such a path in the middle and would judge another file, or none.
TEST_F(NamedSong, UnderAPathAboveTheWideLimitIsFound) {
  const std::string last = Named("song.m4a");
  for (const std::size_t length : {2046u, 2047u, 2048u, 4000u}) {
    const std::string path = folder + std::string(length - folder.size() - 8, '/') + "song.m4a";
    ASSERT_EQ(path.size(), length);
    EXPECT_EQ(mp4judge_host_judge(path.c_str()), MP4JUDGE_HOST_PROTECTED) << length;
    const std::wstring wide(path.begin(), path.end());
    EXPECT_EQ(JudgeMP4HaveDRM(wide.c_str()), length <= 2047 ? 1 : 0) << length;
  }
}

TEST_F(NamedSong, UnderAPathThatTheSystemRefusesIsUnreadable) {
  Named("song.m4a");
  const std::string path = folder + std::string(5000, '/') + "song.m4a";
  EXPECT_EQ(mp4judge_host_judge(path.c_str()), MP4JUDGE_HOST_UNREADABLE);
}
