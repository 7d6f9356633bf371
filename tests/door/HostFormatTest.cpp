#include <gtest/gtest.h>

#include "door/HostFormat.h"
#include "tests/door/ReportFixtures.h"

using mp4::CachedSource;
using mp4::HostCopy;
using mp4::HostTrial;
using mp4::MemorySource;
using mp4::WhereHostFindsFormat;

namespace {

std::string PlaceIn(const Bytes& bytes) {
  MemorySource memory(bytes.data(), bytes.size());
  CachedSource cache(&memory);
  HostTrial trial(HostCopy::Of(&cache, UINT64_MAX, 1 << 20));
  return WhereHostFindsFormat(&trial);
}

}  // namespace

TEST(HostFormat, NamesTheBytesThatDecide) {
  EXPECT_EQ(PlaceIn(reports::FileWith({reports::Song("drms")})),
            "it takes \"drms\" at byte 404, in moov/trak[1]/mdia/minf/stbl/stsd/drms[1], for the "
            "first format of a track");
}

TEST(HostFormat, PassesOverTheSameBytesElsewhere) {
  // In the file type box, in media data, and in the name of a handler.
  const Bytes name = fixture::Hdlr("soun", "drms");
  const Bytes bytes = fixture::Ftyp("isom", {"drms"}) + Box("mdat", Bytes().Text("drms").Fill(20)) +
                      fixture::Moov({reports::Song("drms")}, Box("free", name));
  EXPECT_NE(PlaceIn(bytes).find("at byte 436, in moov/trak[1]/"), std::string::npos)
      << PlaceIn(bytes);
}

TEST(HostFormat, OfSeveralNamesTheLastThatHasToGo) {
  fixture::Track second = reports::Song("drms");
  second.id = 2;
  EXPECT_NE(PlaceIn(reports::FileWith({reports::Song("drms"), second})).find("in moov/trak[2]/"),
            std::string::npos);
}

TEST(HostFormat, HasNothingToSayOfOtherAnswers) {
  EXPECT_EQ(PlaceIn(reports::ClearFile()), "");
  EXPECT_EQ(PlaceIn(Box("moov", Bytes().Text("drms").Fill(50))), "");
}
