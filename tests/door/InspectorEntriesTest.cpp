#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <thread>

#include "tests/SourceFixtures.h"
#include "tests/door/ReportFixtures.h"

using namespace reports;

namespace {

Report OfPath(const char* path, const mp4judge_options* options = nullptr) {
  return Report(mp4judge_inspect_path(path, options));
}

Report OfCallbacks(Caller* caller, const mp4judge_options* options = nullptr) {
  return Report(mp4judge_inspect_callbacks(Caller::Read, Caller::Size, caller, options));
}

/// Brings what is asked for, at most `most` bytes at a time, and counts how often.
Report OfRanges(const Bytes& bytes, std::size_t most, int* rounds,
                const mp4judge_options* options = nullptr) {
  mp4judge_ranges* ranges = mp4judge_ranges_new(bytes.size());
  Report report(mp4judge_ranges_inspect(ranges, options));
  uint64_t offset = 0;
  uint64_t n = 0;
  for (*rounds = 0; mp4judge_report_needs(report.get(), &offset, &n) != 0; ++*rounds) {
    EXPECT_EQ(mp4judge_report_error(report.get()), MP4JUDGE_ERROR_NEEDS_BYTES);
    EXPECT_LE(offset + n, bytes.size());
    EXPECT_EQ(
        mp4judge_ranges_add(ranges, offset, bytes.data() + offset, std::min<uint64_t>(n, most)),
        MP4JUDGE_OK);
    report.reset(mp4judge_ranges_inspect(ranges, options));
    if (*rounds > 10000) break;
  }
  mp4judge_ranges_free(ranges);
  return report;
}

/// A clear movie of more than one read of a slow source, its movie box behind 200 KiB of media
/// data.
Bytes LateMovie() {
  return fixture::Ftyp("isom") + Box("mdat", Bytes().Fill(200 << 10)) +
         fixture::Moov({Song("enca", CencInfo())});
}

}  // namespace

TEST(InspectorEntries, GiveTheVerdictOfMemory) {
  EXPECT_EQ(mp4judge_report_verdict(OfMemory(ClearFile()).get()), MP4JUDGE_CLEAR);
  EXPECT_EQ(mp4judge_report_verdict(OfMemory(CencFile()).get()), MP4JUDGE_PROTECTED);
  const Bytes cut = CencFile().Cut(200);
  EXPECT_EQ(mp4judge_report_verdict(OfMemory(cut).get()), MP4JUDGE_UNDETERMINED);
}

TEST(InspectorEntries, SayTheSameThroughFileMemoryCallbacksAndRanges) {
  for (const Bytes& bytes : {ClearFile(), CencFile(), LateMovie(), Bytes().Fill(100, 0x41)}) {
    mp4judge_options options = MP4JUDGE_OPTIONS_DEFAULT;
    options.name = "the same name";
    const std::string json = Json(OfMemory(bytes, &options));
    ASSERT_NE(json, "");
    const TempFile file(bytes);
    EXPECT_EQ(Json(OfPath(file.path().c_str(), &options)), json);
    Caller caller{bytes};
    EXPECT_EQ(Json(OfCallbacks(&caller, &options)), json);
    Caller stingy{bytes};
    stingy.most = 7;
    EXPECT_EQ(Json(OfCallbacks(&stingy, &options)), json);
    int rounds = 0;
    EXPECT_EQ(Json(OfRanges(bytes, SIZE_MAX, &rounds, &options)), json);
    EXPECT_EQ(Json(OfRanges(bytes, 1000, &rounds, &options)), json);
  }
}

TEST(InspectorEntries, AskSlowSourcesForFewReads) {
  Caller first{CencFile() + Box("mdat", Bytes().Fill(100000))};
  EXPECT_EQ(mp4judge_report_verdict(OfCallbacks(&first).get()), MP4JUDGE_PROTECTED);
  EXPECT_EQ(first.calls, 1);
  Caller late{LateMovie()};
  EXPECT_EQ(mp4judge_report_verdict(OfCallbacks(&late).get()), MP4JUDGE_PROTECTED);
  EXPECT_EQ(late.calls, 2);
}

TEST(InspectorEntries, NeedFewRanges) {
  int rounds = 0;
  OfRanges(CencFile(), SIZE_MAX, &rounds);
  EXPECT_EQ(rounds, 1);
  OfRanges(LateMovie(), SIZE_MAX, &rounds);
  EXPECT_EQ(rounds, 2);
}

TEST(InspectorEntries, ARangeThatIsMissingIsNamed) {
  mp4judge_ranges* ranges = mp4judge_ranges_new(500);
  const Report report(mp4judge_ranges_inspect(ranges, nullptr));
  uint64_t offset = 1;
  uint64_t n = 1;
  EXPECT_EQ(mp4judge_report_needs(report.get(), &offset, &n), 1);
  EXPECT_EQ(offset, 0u);
  EXPECT_EQ(n, 500u);
  EXPECT_EQ(mp4judge_report_needs(report.get(), nullptr, nullptr), 1);
  EXPECT_EQ(mp4judge_report_verdict(report.get()), MP4JUDGE_UNDETERMINED);
  EXPECT_EQ(Text(mp4judge_report_reason(report.get())), "needs bytes 0 to 499");
  EXPECT_EQ(mp4judge_report_host_answer(report.get()), -1);
  mp4judge_ranges_free(ranges);
}

TEST(InspectorEntries, AReportOutlivesItsRanges) {
  const Bytes bytes = CencFile();
  mp4judge_ranges* ranges = mp4judge_ranges_new(bytes.size());
  mp4judge_ranges_add(ranges, 0, bytes.data(), bytes.size());
  const Report report(mp4judge_ranges_inspect(ranges, nullptr));
  mp4judge_ranges_free(ranges);
  EXPECT_EQ(Text(mp4judge_report_entry(report.get(), 0, 0)->format), "enca");
}

TEST(InspectorEntries, AFileThatDoesNotOpenSaysWhy) {
  const Report report = OfPath("/no such folder/file.mp4");
  EXPECT_EQ(mp4judge_report_verdict(report.get()), MP4JUDGE_UNDETERMINED);
  EXPECT_EQ(mp4judge_report_error(report.get()), MP4JUDGE_ERROR_OPEN);
  EXPECT_EQ(mp4judge_report_errno(report.get()), ENOENT);
  EXPECT_EQ(Text(mp4judge_report_path(report.get())), "/no such folder/file.mp4");
  EXPECT_EQ(Text(mp4judge_report_reason(report.get())),
            "it cannot be opened: No such file or directory");
  EXPECT_EQ(mp4judge_report_host_answer(report.get()), 0);
  EXPECT_EQ(mp4judge_report_host_reads(report.get()), 0);
}

TEST(InspectorEntries, WhatIsNoFileSaysSo) {
  const Report folder = OfPath(TempFile::Directory().c_str());
  EXPECT_EQ(mp4judge_report_error(folder.get()), MP4JUDGE_ERROR_NOT_A_FILE);
  EXPECT_EQ(mp4judge_report_errno(folder.get()), EISDIR);
  EXPECT_EQ(Text(mp4judge_report_reason(folder.get())), "it is a directory");
  const Report device = OfPath("/dev/null");
  EXPECT_EQ(mp4judge_report_error(device.get()), MP4JUDGE_ERROR_NOT_A_FILE);
  EXPECT_EQ(mp4judge_report_verdict(device.get()), MP4JUDGE_UNDETERMINED);
}

TEST(InspectorEntries, AFailedReadSaysWhereAndWhy) {
  Caller caller{CencFile()};
  caller.failFrom = 0;
  const Report report = OfCallbacks(&caller);
  EXPECT_EQ(mp4judge_report_verdict(report.get()), MP4JUDGE_UNDETERMINED);
  EXPECT_EQ(mp4judge_report_error(report.get()), MP4JUDGE_ERROR_READ);
  EXPECT_EQ(mp4judge_report_errno(report.get()), -5);
  EXPECT_EQ(mp4judge_report_host_answer(report.get()), -1);
  EXPECT_EQ(Text(mp4judge_report_reason(report.get())), "reading failed at byte 0");
}

TEST(InspectorEntries, TakeNull) {
  const Report path = OfPath(nullptr);
  EXPECT_EQ(mp4judge_report_error(path.get()), MP4JUDGE_ERROR_ARGUMENT);
  EXPECT_EQ(mp4judge_report_verdict(path.get()), MP4JUDGE_UNDETERMINED);
  const Report memory(mp4judge_inspect_memory(nullptr, 100, nullptr));
  EXPECT_EQ(Text(mp4judge_report_reason(memory.get())), "the file is empty");
  const Report callbacks(mp4judge_inspect_callbacks(nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(mp4judge_report_error(callbacks.get()), MP4JUDGE_ERROR_ARGUMENT);
  const Report ranges(mp4judge_ranges_inspect(nullptr, nullptr));
  EXPECT_EQ(mp4judge_report_error(ranges.get()), MP4JUDGE_ERROR_ARGUMENT);
  EXPECT_EQ(mp4judge_report_verdict(ranges.get()), MP4JUDGE_UNDETERMINED);
  EXPECT_EQ(mp4judge_ranges_add(nullptr, 0, "a", 1), MP4JUDGE_ERROR_ARGUMENT);
  mp4judge_ranges* some = mp4judge_ranges_new(10);
  EXPECT_EQ(mp4judge_ranges_add(some, 0, nullptr, 1), MP4JUDGE_ERROR_ARGUMENT);
  mp4judge_ranges_free(some);
  mp4judge_ranges_free(nullptr);
  mp4judge_report_free(nullptr);
}

TEST(InspectorEntries, WithoutTheHostsAnswerThereIsNone) {
  mp4judge_options options = MP4JUDGE_OPTIONS_DEFAULT;
  options.host_answer = 0;
  const Report report = OfMemory(CencFile(), &options);
  EXPECT_EQ(mp4judge_report_host_answer(report.get()), -1);
  EXPECT_EQ(mp4judge_report_host_reads(report.get()), -1);
  EXPECT_EQ(mp4judge_report_host_difference(report.get()), nullptr);
}

TEST(InspectorEntries, ManyThreadsInspectAndReadOneReport) {
  const Bytes bytes = CencFile();
  const Report shared = OfMemory(bytes);
  const std::string expected = Json(OfMemory(bytes));
  std::vector<std::string> seen(8);
  std::vector<std::thread> threads;
  for (std::string& json : seen) {
    threads.emplace_back([&] {
      for (int i = 0; i < 20; ++i) json = Json(shared) == Json(OfMemory(bytes)) ? Json(shared) : "";
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::string& json : seen) EXPECT_EQ(json, expected);
}
