// Demuxers share nothing but constant tables: eight threads judge different files and ask for
// supported formats at once. The thread sanitizer build is what gives this its teeth.
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "demux/FileInfoInterface.h"
#include "demux/Mp4Demux.h"
#include "io/FourCC.h"
#include "tests/Fixtures.h"
#include "tests/GoldenBoxes.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 50;

struct Job {
  std::unique_ptr<TempFile> file;
  int expected = 0;
  int wrong = 0;
};

void Work(Job* job) {
  for (int i = 0; i < kRounds; ++i) {
    if (JudgeMP4HaveDRM(job->file->wide().c_str()) != job->expected) ++job->wrong;
    if (!Mp4Demux::IsSupportedFormat(mp4::FourCC("psp "))) ++job->wrong;
    Mp4Demux demux;
    if (!demux.Init(job->file->wide().c_str()) || !demux.ReadyToDemux()) ++job->wrong;
  }
}

}  // namespace

TEST(Threads, EightDemuxersDoNotDisturbOneAnother) {
  std::vector<Job> jobs(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    jobs[i].expected = i % 2;
    const auto song = golden::Song(i % 2 == 1 ? "drms" : "mp4a");
    jobs[i].file = std::make_unique<TempFile>(fixture::Ftyp("M4A ", {"mp42"}) +
                                              fixture::Moov({golden::Film(), song}));
  }
  std::vector<std::thread> threads;
  for (Job& job : jobs) threads.emplace_back(Work, &job);
  for (std::thread& thread : threads) thread.join();
  for (const Job& job : jobs) EXPECT_EQ(job.wrong, 0);
}
