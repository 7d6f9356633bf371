#include <gtest/gtest.h>

#include "door/LayoutJson.h"
#include "io/MemorySource.h"
#include "tests/MovieFixtures.h"

namespace {

std::string LayoutOfBytes(const Bytes& file, std::size_t parts) {
  mp4::MemorySource source(file.data(), file.size());
  return mp4::LayoutJson(&source, parts);
}

/// Media data of 20,000 bytes in front of the tracks, whose default chunks lie in it.
Bytes MovieOf(const std::vector<fixture::Track>& tracks) {
  return fixture::Ftyp("isom") + Box("mdat", Bytes().Fill(20000)) + fixture::Moov(tracks);
}

}  // namespace

// Four samples of 0.1 s each, of 10, 20, 30 and 40 bytes at 1,000, 2,000, 3,000 and 4,000.
TEST(LayoutJson, HasEachTracksStretchesAndBytesOverTime) {
  const Bytes file = MovieOf({{.id = 5}});
  EXPECT_EQ(R"({"size":)" + std::to_string(file.size()) +
                R"(,"seconds":0.4,"tracks":[{"id":5,"handler":"vide","codec":"H.264/AVC",)"
                R"("protected":false,"whole":true,)"
                R"("extents":[[1000,1010,10],[2000,2020,20],[3000,3030,30],[4000,4040,40]],)"
                R"("bytes":[30,70]}]})",
            LayoutOfBytes(file, 2));
}

TEST(LayoutJson, OfNoTracksIsAnEmptyList) {
  EXPECT_EQ(R"({"size":4,"seconds":0,"tracks":[]})", LayoutOfBytes({1, 2, 3, 4}, 3));
}

TEST(LayoutJson, SaysWhatIsProtectedAndWhatHasNoHandler) {
  const Bytes sinf = Box("sinf", Box("frma", Bytes().Text("mp4a")) +
                                     FullBox("schm", 0, 0, Bytes().Text("cenc").Be32(0x10000)));
  const std::string json =
      LayoutOfBytes(MovieOf({{.format = "enca", .handler = "soun", .atoms = sinf}}), 1);
  EXPECT_NE(std::string::npos, json.find(R"("handler":"soun")")) << json;
  EXPECT_NE(std::string::npos, json.find(R"("protected":true)")) << json;
  const Bytes bare = Box("moov", fixture::Mvhd() + Box("trak", fixture::Tkhd(9)));
  EXPECT_NE(std::string::npos,
            LayoutOfBytes(bare, 1).find(R"({"id":9,"handler":"","codec":"","protected":false)"))
      << LayoutOfBytes(bare, 1);
}
