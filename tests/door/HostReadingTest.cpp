#include <gtest/gtest.h>

#include "door/HostReading.h"
#include "tests/door/ReportFixtures.h"

using mp4::CachedSource;
using mp4::HostCopy;
using mp4::HostTrial;
using mp4::MemorySource;
using mp4::WhyHostDoesNotBegin;
using mp4::WhyHostFails;

namespace {

std::string WhyNotBegun(const Bytes& bytes) {
  MemorySource memory(bytes.data(), bytes.size());
  CachedSource cache(&memory);
  return WhyHostDoesNotBegin(&cache);
}

std::string WhyFailed(const Bytes& bytes) {
  MemorySource memory(bytes.data(), bytes.size());
  CachedSource cache(&memory);
  HostTrial trial(HostCopy::Of(&cache, UINT64_MAX, 1 << 20));
  return WhyHostFails(&trial);
}

}  // namespace

TEST(HostReading, BeginsWithBoxesOfAMovie) {
  for (const char* type : {"ftyp", "moov", "mdat", "free", "skip", "wide", "pnot"}) {
    EXPECT_EQ(WhyNotBegun(Box(type, Bytes().Fill(12))), "") << type;
  }
  EXPECT_EQ(WhyNotBegun(Box("uuid", Bytes().Fill(12))),
            "it begins with \"uuid\", not with \"ftyp\" or a box of a movie");
}

TEST(HostReading, NeedsTwentyBytes) {
  EXPECT_EQ(WhyNotBegun(Box("moov", Bytes().Fill(12))), "");
  EXPECT_EQ(WhyNotBegun(Box("moov", Bytes().Fill(11))), "the file is shorter than 20 bytes");
}

TEST(HostReading, SaysNothingOfAMovieThatTheHostReads) {
  EXPECT_EQ(WhyFailed(reports::ClearFile()), "");
}

TEST(HostReading, NamesABoxThatTheReaderFailsOver) {
  fixture::Track bad = reports::Song("mp4a");
  bad.handler = "MPEG";
  const Bytes bytes = reports::FileWith({reports::Song("mp4a"), bad});
  EXPECT_NE(WhyFailed(bytes).find("its reader fails over a \"stsd\" in \"stbl\" (moov/trak[2]/"),
            std::string::npos);
}

TEST(HostReading, TellsAFileTypeBoxThatIsTooShort) {
  // The first box is read before anything else, so that no trial without it tells more.
  const Bytes bytes = Box("ftyp", Bytes().Text("isom")) + fixture::Moov({reports::Song("mp4a")});
  EXPECT_NE(WhyFailed(bytes).find("its reader fails over the box \"ftyp\" (ftyp, byte 0)"),
            std::string::npos)
      << WhyFailed(bytes);
}
