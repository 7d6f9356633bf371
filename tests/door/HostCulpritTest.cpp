#include <gtest/gtest.h>

#include "door/HostCulprit.h"
#include "tests/door/ReportFixtures.h"

using mp4::BoxId;
using mp4::CachedSource;
using mp4::FindCulprit;
using mp4::HostCopy;
using mp4::HostTrial;
using mp4::MemorySource;

namespace {

HostTrial TrialWith(const Bytes& bytes) {
  MemorySource memory(bytes.data(), bytes.size());
  CachedSource cache(&memory);
  return HostTrial(HostCopy::Of(&cache, UINT64_MAX, 1 << 20));
}

bool Reads(mp4judge_host_answer answer) { return answer != MP4JUDGE_HOST_UNREADABLE; }
bool SaysClear(mp4judge_host_answer answer) { return answer == MP4JUDGE_HOST_CLEAR; }

std::vector<std::string> Paths(HostTrial* trial, const std::vector<BoxId>& boxes) {
  std::vector<std::string> paths;
  for (const BoxId box : boxes) paths.push_back(trial->Tree().Path(box));
  return paths;
}

using PathList = std::vector<std::string>;

}  // namespace

TEST(HostCulprit, FindsTheInnermostBox) {
  // The host refuses a sample description for MPEG streams.
  fixture::Track bad = reports::Song("mp4a");
  bad.handler = "MPEG";
  HostTrial trial = TrialWith(reports::FileWith({reports::Song("mp4a"), bad}));
  ASSERT_FALSE(Reads(trial.Answer({})));
  EXPECT_EQ(Paths(&trial, FindCulprit(&trial, Reads)),
            PathList{"moov/trak[2]/mdia/minf/stbl/stsd"});
}

TEST(HostCulprit, FindsAFaultThatEveryTrackHas) {
  fixture::Track bad = reports::Song("mp4a");
  bad.handler = "MPEG";
  HostTrial trial = TrialWith(reports::FileWith({bad, bad, reports::Song("mp4a")}));
  ASSERT_FALSE(Reads(trial.Answer({})));
  EXPECT_EQ(Paths(&trial, FindCulprit(&trial, Reads)).size(), 3u);
}

TEST(HostCulprit, FindsNothingWhereNoBoxIsToBlame) {
  HostTrial trial = TrialWith(fixture::Ftyp("isom") + Box("moov", fixture::Mvhd()));
  EXPECT_TRUE(FindCulprit(&trial, Reads).empty());
}

TEST(HostCulprit, SearchesForAnyOtherAnswer) {
  fixture::Track second = reports::Song("drms");
  second.id = 2;
  HostTrial trial = TrialWith(reports::FileWith({reports::Song("mp4a"), second}));
  EXPECT_EQ(Paths(&trial, FindCulprit(&trial, SaysClear)),
            PathList{"moov/trak[2]/mdia/minf/stbl/stsd/drms[1]"});
}
