#include <gtest/gtest.h>

#include <cerrno>

#include "door/Judging.h"
#include "io/CallbackSource.h"
#include "io/MemorySource.h"
#include "io/RangeSource.h"
#include "tests/SourceFixtures.h"
#include "tests/door/ReportFixtures.h"

using namespace reports;

namespace {

const mp4judge_options kAll = MP4JUDGE_OPTIONS_DEFAULT;

mp4judge_options Without(int everything, int host, const char* name = nullptr) {
  return {sizeof(mp4judge_options), everything, host, name};
}

mp4::Judged Judge(const Bytes& bytes, const mp4judge_options& options = kAll) {
  mp4::MemorySource source(bytes.data(), bytes.size());
  return mp4::JudgeSource(&source, options);
}

/// A fragmented movie, a fragment far behind it, and, last, a second movie box that the host goes
/// by.
Bytes LateSecondMovie(const Bytes& second) {
  const Bytes mvex = Box("mvex", FullBox("trex", 0, 0, Bytes().Be32(1).Be32(1).Fill(12)));
  const Bytes moof = Box("moof", FullBox("mfhd", 0, 0, Bytes().Be32(1)));
  return FileWith({Song("mp4a")}, mvex) + moof + Box("mdat", Bytes().Fill(4 << 20)) + moof + second;
}

}  // namespace

TEST(Judging, TheHostIsAskedBesideTheInspector) {
  const mp4::Judged clear = Judge(ClearFile());
  EXPECT_EQ(MP4JUDGE_OK, clear.error);
  EXPECT_EQ(mp4::ProtectionVerdict::kClear, clear.report.verdict);
  EXPECT_EQ(MP4JUDGE_HOST_CLEAR, clear.host);
  EXPECT_EQ("", clear.hostDifference);
  const mp4::Judged cenc = Judge(CencFile());
  EXPECT_EQ(mp4::ProtectionVerdict::kProtected, cenc.report.verdict);
  EXPECT_EQ(MP4JUDGE_HOST_CLEAR, cenc.host);
  EXPECT_NE("", cenc.hostDifference);
}

TEST(Judging, WithoutTheQuestionTheHostHasNoAnswer) {
  const mp4::Judged judged = Judge(CencFile(), Without(0, 0));
  EXPECT_FALSE(judged.host.has_value());
  EXPECT_EQ("", judged.hostDifference);
}

TEST(Judging, ASourceIsCalledWhatTheOptionsSay) {
  EXPECT_FALSE(Judge(ClearFile()).path.has_value());
  EXPECT_EQ("x\xFF", Judge(ClearFile(), Without(0, 1, "x\xFF")).path);
  EXPECT_EQ("", Judge(ClearFile(), Without(0, 1, "")).path);
}

TEST(Judging, AReadThatFailsIsTroubleOfTheReport) {
  Caller caller{CencFile()};
  caller.failFrom = 0;
  mp4::CallbackSource source(Caller::Read, Caller::Size, &caller);
  const mp4::Judged judged = mp4::JudgeSource(&source, kAll);
  EXPECT_EQ(MP4JUDGE_ERROR_READ, judged.error);
  EXPECT_EQ(caller.failure, judged.systemError);
  EXPECT_EQ(mp4::ProtectionVerdict::kUndetermined, judged.report.verdict);
  EXPECT_FALSE(judged.host.has_value()) << "nobody could read the file";
}

TEST(Judging, MissingBytesAreNamed) {
  mp4::RangeSource source(500);
  const mp4::Judged judged = mp4::JudgeSource(&source, kAll);
  EXPECT_EQ(MP4JUDGE_ERROR_NEEDS_BYTES, judged.error);
  ASSERT_TRUE(judged.report.needed.has_value());
  EXPECT_EQ(0U, judged.report.needed->offset);
  EXPECT_EQ(500U, judged.report.needed->size);
  EXPECT_FALSE(judged.host.has_value());
}

// Where nothing in front of the far fragments is protected, they cannot change the host's "clear";
// with everything asked for, they and what is behind them are looked at all the same.
TEST(Judging, WhatLiesBehindFarFragmentsCountsOnlyWithEverything) {
  const Bytes file = LateSecondMovie(fixture::Moov({Song("drms")}));
  EXPECT_EQ(MP4JUDGE_HOST_CLEAR, Judge(file).host);
  EXPECT_EQ(MP4JUDGE_HOST_PROTECTED, Judge(file, Without(1, 1)).host);
}

TEST(Judging, AMovieThatIsReplacedBehindFarFragmentsIsAskedForAsAWhole) {
  const Bytes mvex = Box("mvex", FullBox("trex", 0, 0, Bytes().Be32(1).Be32(1).Fill(12)));
  const Bytes moof = Box("moof", FullBox("mfhd", 0, 0, Bytes().Be32(1)));
  const Bytes file = FileWith({Song("drms")}, mvex) + moof + Box("mdat", Bytes().Fill(4 << 20)) +
                     moof + fixture::Moov({Song("mp4a")});
  EXPECT_EQ(MP4JUDGE_HOST_CLEAR, Judge(file).host) << "the last movie box counts";
}

TEST(Judging, OfAFileThatDidNotOpenTheReasonIsSaid) {
  const mp4::Judged folder = mp4::JudgeUnopened({mp4::OpenFault::kDirectory, 0}, kAll);
  EXPECT_EQ(MP4JUDGE_ERROR_NOT_A_FILE, folder.error);
  EXPECT_EQ(EISDIR, folder.systemError);
  EXPECT_EQ("it is a directory", folder.report.reason);
  EXPECT_EQ(mp4::ProtectionVerdict::kUndetermined, folder.report.verdict);
  EXPECT_EQ(MP4JUDGE_HOST_UNREADABLE, folder.host);
  const mp4::Judged pipe =
      mp4::JudgeUnopened({mp4::OpenFault::kNotRegular, 0}, Without(0, 0, "a pipe"));
  EXPECT_EQ(MP4JUDGE_ERROR_NOT_A_FILE, pipe.error);
  EXPECT_EQ(0, pipe.systemError);
  EXPECT_EQ("a pipe", pipe.path);
  EXPECT_FALSE(pipe.host.has_value());
  const mp4::Judged missing = mp4::JudgeUnopened({mp4::OpenFault::kSystem, ENOENT}, kAll);
  EXPECT_EQ(MP4JUDGE_ERROR_OPEN, missing.error);
  EXPECT_EQ(ENOENT, missing.systemError);
  EXPECT_EQ("it cannot be opened: No such file or directory", missing.report.reason);
}
