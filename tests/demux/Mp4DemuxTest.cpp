#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "demux/Mp4Demux.h"
#include "io/FourCC.h"
#include "io/MemorySource.h"
#include "io/SourceReader.h"
#include "tests/Fixtures.h"
#include "tests/MovieFixtures.h"

using namespace fixture;

namespace {

bool Opens(const Bytes& bytes) {
  const TempFile file(bytes);
  Mp4Demux demux;
  return demux.Init(file.wide().c_str());
}

/// A track of its own kind inside a fragmented movie: empty tables, one "trex".
Bytes FragmentedMovie() {
  Track track{.times = {}, .chunks = {{1, 1}}, .sizes = {}, .offsets = {}};
  const Bytes trex = FullBox("trex", 0, 0, Bytes().Be32(1).Be32(1).Be32(100).Be32(50).Be32(0));
  return Moov({track}, Box("mvex", trex));
}

Bytes Fragment(std::uint32_t samples) {
  const Bytes tfhd = FullBox("tfhd", 0, 0, Bytes().Be32(1));
  const Bytes trun = FullBox("trun", 0, 0, Bytes().Be32(samples));
  return Box("moof", FullBox("mfhd", 0, 0, Bytes().Be32(1)) + Box("traf", tfhd + trun));
}

}  // namespace

TEST(Mp4Demux, StartsEmpty) {
  Mp4Demux demux;
  EXPECT_EQ(demux.state, 0);
  EXPECT_EQ(demux.GetContext(), nullptr);
  EXPECT_EQ(demux.movieBox, nullptr);
  EXPECT_TRUE(demux.fragments.empty());
}

TEST(Mp4Demux, NullPathFails) {
  Mp4Demux demux;
  EXPECT_FALSE(demux.Init(nullptr));
  EXPECT_EQ(demux.GetContext(), nullptr);
}

TEST(Mp4Demux, FileOf19BytesFailsAndLeavesAContext) {
  const TempFile file(Ftyp("isom", {"isom"}).Cut(19));
  Mp4Demux demux;
  EXPECT_FALSE(demux.Init(file.wide().c_str()));
  EXPECT_NE(demux.GetContext(), nullptr);
  EXPECT_NE(demux.reader, nullptr);
  EXPECT_EQ(demux.fileTypeBox, nullptr);
}

TEST(Mp4Demux, FileOf20BytesIsReadButHasNoMovie) {
  const Bytes ftyp = Ftyp("isom", {"mp42"});
  ASSERT_EQ(ftyp.size(), 20u);
  const TempFile file(ftyp);
  Mp4Demux demux;
  EXPECT_FALSE(demux.Init(file.wide().c_str()));
  EXPECT_NE(demux.fileTypeBox, nullptr);
  EXPECT_EQ(demux.GetContext()->GetFileMode(), MP4_FILE_MODE_MP4);
}

TEST(Mp4Demux, MissingFileDirectoryAndEmptyFileFail) {
  Mp4Demux demux;
  EXPECT_FALSE(demux.Init(L"/nonexistent/never.mp4"));
  EXPECT_NE(demux.GetContext(), nullptr);
  const std::string dir = TempFile::Directory();
  EXPECT_FALSE(demux.Init(std::wstring(dir.begin(), dir.end()).c_str()));
  EXPECT_FALSE(Opens(Bytes()));
}

TEST(Mp4Demux, OrdinaryFileOpens) { EXPECT_TRUE(Opens(Ftyp("isom") + Moov({Track{}}))); }

TEST(Mp4Demux, EachMovieModeFirstBoxOpensAsQuickTime) {
  for (const char* type : {"wide", "free", "skip", "mdat", "pnot"}) {
    const TempFile file(Box(type, Bytes().Fill(12)) + Moov({Track{}}));
    Mp4Demux demux;
    EXPECT_TRUE(demux.Init(file.wide().c_str())) << type;
    EXPECT_EQ(demux.GetContext()->GetFileMode(), MP4_FILE_MODE_MOV) << type;
    EXPECT_EQ(demux.fileTypeBox, nullptr) << type;
  }
  const TempFile file(Moov({Track{}}));
  Mp4Demux demux;
  EXPECT_TRUE(demux.Init(file.wide().c_str()));
  EXPECT_EQ(demux.GetContext()->GetFileMode(), MP4_FILE_MODE_MOV);
  EXPECT_EQ(demux.GetContext()->majorBrand, 0u);
}

TEST(Mp4Demux, AnyOtherFirstBoxFails) {
  for (const char* type : {"styp", "moof", "meta", "uuid", "udta", "FTYP"}) {
    EXPECT_FALSE(Opens(Box(type, Bytes().Fill(12)) + Moov({Track{}}))) << type;
  }
}

TEST(Mp4Demux, FailingFileTypeBoxFails) {
  EXPECT_FALSE(Opens(Box("ftyp", Bytes().Text("isom").Fill(7)) + Moov({Track{}})));
}

TEST(Mp4Demux, FirstBoxWithSizeZeroIsTheWholeFile) {
  const Bytes ftyp = SizedBox(0, "ftyp", Bytes().Text("isom").Be32(0).Text("isom"));
  EXPECT_FALSE(Opens(ftyp + Moov({Track{}})));
  EXPECT_TRUE(Opens(SizedBox(0, "moov", Mvhd() + Trak(Track{}))));
}

TEST(Mp4Demux, LastBoxWithSizeZeroEndsTheScan) {
  EXPECT_TRUE(Opens(Ftyp("isom") + Moov({Track{}}) + SizedBox(0, "mdat", Bytes().Fill(100))));
}

TEST(Mp4Demux, KnownAndUnknownTopLevelBoxesAreSkipped) {
  Bytes file = Ftyp("isom");
  for (const char* type : {"mfra", "meta", "uuid", "wide", "free", "pdin", "skip", "abcd"}) {
    file.Append(Box(type, Bytes().Fill(5, 0xFF)));
  }
  EXPECT_TRUE(Opens(file + Moov({Track{}})));
}

TEST(Mp4Demux, FailingMovieBoxFails) { EXPECT_FALSE(Opens(Ftyp("isom") + Box("moov", Mvhd()))); }

TEST(Mp4Demux, SecondMovieBoxWins) {
  Track second;
  second.id = 9;
  const TempFile file(Ftyp("isom") + Moov({Track{}}) + Moov({second}));
  Mp4Demux demux;
  ASSERT_TRUE(demux.Init(file.wide().c_str()));
  EXPECT_EQ(demux.movieBox->tracks.size(), 1u);
  EXPECT_EQ(demux.movieBox->tracks.count(9), 1u);
  EXPECT_EQ(demux.GetContext()->GetTrackCount(), 2);
}

TEST(Mp4Demux, FailingSecondMovieBoxFailsTheFile) {
  EXPECT_FALSE(Opens(Ftyp("isom") + Moov({Track{}}) + Box("moov", Mvhd())));
}

TEST(Mp4Demux, FirstBoxHasNo64BitSize) {
  // Size 1 is a payload of -7 to the file type box. A movie's first box is read again by the scan,
  // which knows the large form.
  const Bytes ftyp = SizedBox(1, "ftyp", Bytes().Be64(28).Text("isom").Be32(0).Text("isom"));
  EXPECT_FALSE(Opens(ftyp + Moov({Track{}})));
  const Bytes mdat = SizedBox(1, "mdat", Bytes().Be64(16 + 40).Fill(40));
  EXPECT_TRUE(Opens(mdat + Moov({Track{}})));
}

TEST(Mp4Demux, ReaderIsNeverPutAtTheCountedPosition) {
  // The movie's last child claims 8 bytes more than the movie has, and the movie does not step
  // back: the bad fragment right behind it is never seen.
  const Bytes movie = Moov({Track{}}, SizedBox(16, "free"));
  const Bytes bad = SizedBox(4, "moof");
  EXPECT_TRUE(Opens(Ftyp("isom") + movie + bad + Box("free", Bytes().Fill(8))));
  EXPECT_FALSE(Opens(Ftyp("isom") + Moov({Track{}}) + bad + Box("free", Bytes().Fill(8))));
}

// The reader moves exactly over a large media data box, while the counted position runs 8 bytes
// ahead: a movie box right behind is found, a last box of 8 bytes is not.
TEST(Mp4Demux, LargeMediaDataIsPassedExactly) {
  const Bytes mdat = SizedBox(1, "mdat", Bytes().Be64(16 + 40).Fill(40));
  EXPECT_TRUE(Opens(Ftyp("isom") + mdat + Moov({Track{}})));
}

TEST(Mp4Demux, PositionBehindALargeBoxIsCountedEightTooFar) {
  // After the large "mdat" the count stands at the end of the file although 8 bytes remain: the
  // bad fragment there is never seen. One byte more and it is.
  const Bytes mdat = SizedBox(1, "mdat", Bytes().Be64(16));
  const Bytes head = Ftyp("isom") + Moov({Track{}}) + mdat;
  const Bytes bad = SizedBox(4, "moof");
  ASSERT_EQ(bad.size(), 8u);
  EXPECT_TRUE(Opens(head + bad));
  EXPECT_FALSE(Opens(head + bad + Bytes{0}));
}

TEST(Mp4Demux, OtherLargeBoxesReceiveEightBytesTooMany) {
  // "free" of 16 + 8 bytes swallows the 8 bytes behind it as well.
  const Bytes large = SizedBox(1, "free", Bytes().Be64(24).Fill(8));
  EXPECT_TRUE(Opens(Ftyp("isom") + large + Bytes().Fill(8, 0xEE) + Moov({Track{}})));
}

TEST(Mp4Demux, LargeBoxThatStandsStillFails) {
  const Bytes head = Ftyp("isom") + Moov({Track{}});
  const Bytes still = SizedBox(1, "free", Bytes().Be64(0xFFFFFFFFFFFFFFF8u));
  EXPECT_FALSE(Opens(head + still + Bytes().Fill(32)));
  const Bytes back = SizedBox(1, "free", Bytes().Be64(0xFFFFFFFFFFFFFF00u));
  EXPECT_FALSE(Opens(head + back + Bytes().Fill(32)));
  const Bytes lowest = SizedBox(1, "free", Bytes().Be64(0x8000000000000000u));
  EXPECT_FALSE(Opens(head + lowest + Bytes().Fill(32)));
}

TEST(Mp4Demux, PositionPastTheLargestEndsTheScan) {
  const Bytes head = Ftyp("isom") + Moov({Track{}});
  const Bytes huge = SizedBox(1, "free", Bytes().Be64(0x7FFFFFFFFFFFFFFFu));
  EXPECT_TRUE(Opens(head + huge + Bytes().Fill(32)));
}

TEST(Mp4Demux, BoxHeaderAtTheLargestPositionIsRead) {
  // A file of the largest size there is, nearly all of it a hole, whose last box starts 4 bytes
  // before its end: the end of that header is past the largest position.
  constexpr long long kLargest = 0x7FFFFFFFFFFFFFFF;
  const Bytes head = Ftyp("isom") + Moov({Track{}});
  const auto begin = static_cast<long long>(head.size());
  const auto size = static_cast<std::uint64_t>(kLargest - 4 - begin - 8);
  const Bytes bytes = head + SizedBox(1, "free", Bytes().Be64(size));
  const int file = memfd_create("largest", 0);
  ASSERT_EQ(ftruncate(file, kLargest), 0);
  ASSERT_EQ(pwrite(file, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  Mp4Demux demux;
  EXPECT_TRUE(demux.Init((L"/proc/self/fd/" + std::to_wstring(file)).c_str()));
  EXPECT_EQ(demux.reader->GetPos(), kLargest - 4 - 4);
  close(file);
}

TEST(Mp4Demux, FragmentIsMergedAndKept) {
  const TempFile file(Ftyp("isom") + FragmentedMovie() + Fragment(3) + Fragment(2));
  Mp4Demux demux;
  ASSERT_TRUE(demux.Init(file.wide().c_str()));
  EXPECT_EQ(demux.fragments.size(), 2u);
  EXPECT_EQ(demux.GetContext()->GetTrackByIndex(0)->numSamples, 5);
}

TEST(Mp4Demux, FragmentBeforeTheMovieIsKeptUnmerged) {
  const TempFile file(Ftyp("isom") + Fragment(3) + FragmentedMovie());
  Mp4Demux demux;
  ASSERT_TRUE(demux.Init(file.wide().c_str()));
  EXPECT_EQ(demux.fragments.size(), 1u);
  EXPECT_EQ(demux.GetContext()->GetTrackByIndex(0)->numSamples, 0);
}

TEST(Mp4Demux, FailingFragmentFailsTheFile) {
  const Bytes head = Ftyp("isom") + Moov({Track{}});
  EXPECT_FALSE(Opens(head + SizedBox(4, "moof", Bytes().Fill(16))));
}

TEST(Mp4Demux, InitMayBeRepeated) {
  const TempFile good(Ftyp("isom") + Moov({Track{}}));
  const TempFile bad(Ftyp("isom"));
  Mp4Demux demux;
  EXPECT_TRUE(demux.Init(good.wide().c_str()));
  EXPECT_FALSE(demux.Init(bad.wide().c_str()));
  EXPECT_EQ(demux.movieBox, nullptr);
  EXPECT_TRUE(demux.Init(good.wide().c_str()));
  demux.Destroy();
  EXPECT_EQ(demux.GetContext(), nullptr);
  demux.Uninit();
  EXPECT_EQ(demux.reader, nullptr);
}

TEST(Mp4Demux, JudgingOpensTheSameFilesWithTheSameRecords) {
  Track audio{.id = 2, .format = "drms", .handler = "soun"};
  const TempFile file(Ftyp("isom") + Moov({Track{}, audio}) + Fragment(3));
  Mp4Demux demux;
  ASSERT_TRUE(demux.InitForJudgement(file.wide().c_str()));
  ASSERT_EQ(demux.GetContext()->GetTrackCount(), 2);
  EXPECT_EQ(demux.GetContext()->GetTrackByIndex(0)->format, mp4::FourCC("avc1"));
  EXPECT_EQ(demux.GetContext()->GetTrackByIndex(1)->format, mp4::FourCC("drms"));
  EXPECT_TRUE(demux.fragments.empty());
  EXPECT_EQ(demux.movieBox->tracks.at(2)->mediaBox, nullptr);
}

TEST(Mp4Demux, OpensAnyReaderLikeAFile) {
  const Bytes bytes = Ftyp("isom") + FragmentedMovie() + Fragment(3) + Box("free") + Fragment(2);
  const TempFile file(bytes);
  Mp4Demux fromFile;
  ASSERT_TRUE(fromFile.Init(file.wide().c_str()));
  mp4::MemorySource memory(bytes.data(), bytes.size());
  Mp4Demux fromMemory;
  ASSERT_TRUE(fromMemory.Init(std::make_unique<mp4::SourceReader>(&memory)));
  EXPECT_EQ(fromMemory.fragments.size(), 2u);
  EXPECT_EQ(fromMemory.GetContext()->GetTrackByIndex(0)->numSamples,
            fromFile.GetContext()->GetTrackByIndex(0)->numSamples);
  EXPECT_EQ(fromMemory.GetContext()->GetTrackByIndex(0)->numSamples, 5);
}

TEST(Mp4Demux, OpensAReaderThatKeepsNoAccount) {
  class Plain final : public mmBufReader {
   public:
    using mmBufReader::mmBufReader;
    mp4::ScanControl* Scan() override { return nullptr; }
  };
  const Bytes bytes = Ftyp("isom") + FragmentedMovie() + Fragment(3);
  Mp4Demux demux;
  EXPECT_TRUE(demux.Init(std::make_unique<Plain>(bytes.data(), bytes.size())));
  EXPECT_EQ(demux.fragments.size(), 1u);
}
