#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <type_traits>

#include "mp4judge/mp4judge.hpp"
#include "tests/door/ReportFixtures.h"

using mp4judge::Report;
using mp4judge::Verdict;

namespace {

Report OfBytes(const Bytes& bytes, const mp4judge::Options& options = {}) {
  return Report::OfMemory(bytes.data(), bytes.size(), options);
}

static_assert(std::is_nothrow_move_constructible_v<Report>);
static_assert(!std::is_copy_constructible_v<Report>);

}  // namespace

TEST(CppInterface, TellsWhatTheReportSays) {
  const Report report = OfBytes(reports::CencFile());
  EXPECT_EQ(report.verdict(), Verdict::kProtected);
  EXPECT_EQ(NameOf(report.verdict()), "protected");
  EXPECT_FALSE(report.error());
  EXPECT_EQ(report.reason(), "");
  EXPECT_EQ(report.hostAnswer(), false);
  EXPECT_EQ(report.hostReads(), true);
  EXPECT_NE(report.hostDifference().find("\"enca\" is not \"drms\""), std::string_view::npos);
  EXPECT_TRUE(report.everything());
  EXPECT_EQ(report.fragments(), 0u);
  EXPECT_FALSE(report.needs());
  EXPECT_EQ(report.json().substr(0, 11), "{\"schema\":\"");
}

TEST(CppInterface, ListsAreRanges) {
  const Report report = OfBytes(reports::CencFile());
  ASSERT_EQ(report.schemes().size(), 1u);
  EXPECT_EQ(report.schemes()[0], "cenc");
  int seen = 0;
  for (const mp4judge::Track track : report.tracks()) {
    EXPECT_EQ(track.id(), 1u);
    EXPECT_EQ(track.handler(), "soun");
    EXPECT_TRUE(track.isProtected());
    for (const mp4judge::Entry entry : track.entries()) {
      EXPECT_EQ(entry.format(), "enca");
      EXPECT_EQ(entry.originalFormat(), "mp4a");
      for (const mp4judge::Scheme& scheme : entry.schemes()) {
        EXPECT_EQ(scheme.type, "cenc");
        EXPECT_EQ(scheme.defaultProtected, true);
        ASSERT_TRUE(scheme.defaultKeyId);
        EXPECT_EQ(*scheme.defaultKeyId, mp4judge::Id(reports::KeyId().data()));
        EXPECT_TRUE(scheme.constantIv.empty());
        ++seen;
      }
    }
  }
  EXPECT_EQ(seen, 1);
  const auto evidence = report.evidence();
  ASSERT_FALSE(evidence.empty());
  EXPECT_EQ(evidence[0].offset, 400u);
  EXPECT_EQ(evidence[0].track, 1u);
  EXPECT_FALSE(evidence[0].item);
  EXPECT_TRUE(report.items().empty());
  EXPECT_TRUE(report.systems().empty());
}

TEST(CppInterface, WhatItReturnsOutlivesAMove) {
  Report first = OfBytes(reports::CencFile());
  const std::string_view format = first.tracks()[0].entries()[0].format();
  const Report second = std::move(first);
  EXPECT_EQ(format, "enca");
  // What was moved from says nothing.
  EXPECT_EQ(first.verdict(), Verdict::kUndetermined);  // NOLINT(bugprone-use-after-move)
  EXPECT_TRUE(first.tracks().empty());
}

TEST(CppInterface, ErrorsAreValues) {
  const Report report = Report::OfPath("/no such file");
  EXPECT_TRUE(report.error());
  EXPECT_EQ(report.error().code, MP4JUDGE_ERROR_OPEN);
  EXPECT_EQ(report.error().systemError, ENOENT);
  EXPECT_EQ(report.error().text(), "the file cannot be opened");
  EXPECT_EQ(report.path(), "/no such file");
}

TEST(CppInterface, OptionsAreHandedOn) {
  const Report report = OfBytes(reports::CencFile(), {true, false, "name"});
  EXPECT_EQ(report.path(), "name");
  EXPECT_FALSE(report.hostAnswer());
}

TEST(CppInterface, InspectsWhatACallableReads) {
  const Bytes bytes = reports::CencFile();
  int calls = 0;
  const auto read = [&](std::uint64_t offset, void* to, std::size_t n) {
    ++calls;
    std::copy_n(bytes.data() + offset, n, static_cast<unsigned char*>(to));
    return n;
  };
  EXPECT_EQ(Report::OfReader(bytes.size(), read).json(), OfBytes(bytes).json());
  EXPECT_EQ(calls, 1);
}

TEST(CppInterface, WhatACallableThrowsComesOut) {
  int calls = 0;
  const auto read = [&](std::uint64_t, void*, std::size_t) -> int {
    ++calls;
    throw std::runtime_error("mine");
  };
  EXPECT_THROW(Report::OfReader(1000, read), std::runtime_error);
  EXPECT_EQ(calls, 1);
}

TEST(CppInterface, RangesAreBroughtOnDemand) {
  const Bytes bytes = reports::CencFile();
  mp4judge::Ranges ranges(bytes.size());
  Report report = ranges.Inspect();
  int rounds = 0;
  while (const auto needed = report.needs()) {
    EXPECT_EQ(report.error().code, MP4JUDGE_ERROR_NEEDS_BYTES);
    EXPECT_FALSE(ranges.Add(needed->offset, bytes.data() + needed->offset, needed->size));
    report = ranges.Inspect();
    ASSERT_LT(++rounds, 10);
  }
  EXPECT_EQ(report.verdict(), Verdict::kProtected);
  EXPECT_EQ(rounds, 1);
  EXPECT_EQ(ranges.Add(0, nullptr, 1).code, MP4JUDGE_ERROR_ARGUMENT);
}
