// Sizes, nesting, files that change under the reader, and paths that name no file. Each test opens,
// plays and judges a whole file.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <filesystem>

#include "demux/FileInfoInterface.h"
#include "io/Mp4StreamReader.h"
#include "io/ScanControl.h"
#include "tests/HostileFiles.h"

namespace {

using namespace hostile;

constexpr const char* kTypes[] = {"ftyp",
                                  "moov",
                                  "mvhd",
                                  "trak",
                                  "tkhd",
                                  "edts",
                                  "elst",
                                  "mdia",
                                  "mdhd",
                                  "hdlr",
                                  "minf",
                                  "vmhd",
                                  "smhd",
                                  "dinf",
                                  "dref",
                                  "stbl",
                                  "stsd",
                                  "avc1",
                                  "avcC",
                                  "mp4a",
                                  "esds",
                                  "stts",
                                  "stsc",
                                  "stsz",
                                  "stco",
                                  "stss",
                                  "udta",
                                  "meta",
                                  "ilst",
                                  "mvex",
                                  "mehd",
                                  "trex",
                                  "moof",
                                  "mfhd",
                                  "traf",
                                  "tfhd",
                                  "trun",
                                  "data",
                                  "\xA9"
                                  "ART",
                                  "\xA9"
                                  "day"};

/// Where each box of a known type has its size.
std::vector<std::size_t> Boxes(const Bytes& bytes) {
  std::vector<std::size_t> found;
  for (std::size_t at = 0; at + 8 <= bytes.size(); ++at) {
    for (const char* type : kTypes) {
      if (std::memcmp(bytes.data() + at + 4, type, 4) == 0) found.push_back(at);
    }
  }
  return found;
}

Bytes ProtectedMovie() {
  return fixture::Ftyp("M4A ", {"mp42"}) + fixture::Moov({golden::Song("drms")});
}

}  // namespace

TEST(HostileSizes, ControlOpens) { EXPECT_TRUE(Opens(Movie())); }

TEST(HostileSizes, EveryBoxOfSizeOneToSeven) {
  const Bytes movie = Movie();
  for (const std::size_t at : Boxes(movie)) {
    for (std::uint32_t size = 1; size <= 7; ++size) Opens(Bytes(movie).PutBe32(at, size));
  }
}

TEST(HostileSizes, EveryBoxOfASizeThatWraps) {
  const Bytes movie = Movie();
  for (const std::size_t at : Boxes(movie)) {
    for (const std::uint32_t size : {0xFFFFFFFFu, 0xFFFFFFF8u, 0x80000000u, 0x7FFFFFFFu, 0u}) {
      Opens(Bytes(movie).PutBe32(at, size));
    }
  }
}

TEST(HostileSizes, EveryTableOfASizeBelowItsHeader) {
  const Bytes movie = Movie();
  for (const std::size_t at : Boxes(movie)) {
    for (std::uint32_t size = 8; size <= 20; ++size) Opens(Bytes(movie).PutBe32(at, size));
  }
}

// A 64-bit size of -8 makes the next box start where this one does, a smaller one before it.
TEST(HostileSizes, LargeSizeThatStandsStillOrRunsBackwards) {
  const Bytes movie = fixture::Ftyp("isom") + golden::Movie();
  for (const std::int64_t size : {-8LL, -9LL, -16LL, -1LL << 62, LLONG_MIN + 8, LLONG_MIN}) {
    const Bytes large = SizedBox(1, "free", Bytes().Be64(static_cast<std::uint64_t>(size)));
    EXPECT_FALSE(Opens(movie + large + Bytes().Fill(100))) << size;
    EXPECT_FALSE(Opens(large + movie)) << size;
  }
}

TEST(HostileSizes, LargeSizeThatMovesOnByAByte) {
  const Bytes movie = fixture::Ftyp("isom") + golden::Movie();
  const Bytes large = SizedBox(1, "free", Bytes().Be64(~std::uint64_t{0} - 6));
  EXPECT_TRUE(Opens(movie + large + Bytes().Fill(100)));
}

TEST(HostileSizes, LargeSizeThatWraps64Bits) {
  for (const std::uint64_t size :
       {std::uint64_t{0x7FFFFFFFFFFFFFFF}, std::uint64_t{0x7FFFFFFFFFFFFFF8},
        std::uint64_t{0x7FFFFFFFFFFFFF00}, std::uint64_t{1} << 62}) {
    for (const char* type : {"free", "mdat", "moov", "moof"}) {
      const Bytes large = SizedBox(1, type, Bytes().Be64(size));
      Opens(fixture::Ftyp("isom") + golden::Movie() + large + Bytes().Fill(100));
    }
  }
}

TEST(HostileSizes, HundredThousandNestedBoxes) {
  constexpr std::uint32_t kDepth = 100000;
  for (const char* type : {"moov", "trak", "mdia", "minf", "stbl", "stsd", "udta", "meta", "ilst",
                           "mvex", "moof", "traf", "wave", "cmov", "edts", "free"}) {
    Bytes nested;
    for (std::uint32_t left = kDepth; left > 0; --left) nested.Be32(left * 8).Text(type);
    Opens(fixture::Ftyp("isom") + fixture::Moov({golden::Film()}, nested));
    Opens(fixture::Ftyp("isom") + golden::Movie() + nested);
    Opens(nested);
  }
}

// A child that claims far more than its parent holds makes the parent step back by the difference,
// before the start of the file.
TEST(HostileSizes, SeeksBeforeTheStart) {
  const Bytes edits = SizedBox(0x7FFFFFFF, "edts", FullBox("elst", 0, 0, Bytes().Be32(0)));
  for (const char* parent : {"trak", "mdia", "minf", "stbl", "udta", "meta", "mvex"}) {
    const Bytes box = Box(parent, edits + Bytes().Fill(40));
    Opens(fixture::Ftyp("isom") + Box("moov", fixture::Mvhd() + box));
    Opens(Box("moov", fixture::Cmov(Box("moov", fixture::Mvhd() + box + Bytes().Fill(400)))));
  }
  const Bytes trak = fixture::Trak(golden::Film()) + edits;
  const Bytes longer = Bytes(trak).PutBe32(0, static_cast<std::uint32_t>(trak.size()));
  Opens(fixture::Ftyp("isom") + Box("moov", fixture::Mvhd() + longer + longer));
}

// Track boxes that each step back to where the last one began: the account ends it.
TEST(HostileSizes, ParentsThatStepBackOverTheirChildren) {
  Bytes storm;
  for (int i = 0; i < 20000; ++i) storm.Append(Box("udta", SizedBox(1u << 20, "meta")));
  Opens(fixture::Ftyp("isom") + Box("moov", fixture::Mvhd() + storm));
}

namespace {

/// Cuts its file when it is asked to read for the n-th time.
class ShrinkingReader : public Mp4StreamReader {
 public:
  ShrinkingReader(const TempFile& file, int reads, long long size)
      : path(file.path()), left(reads), size(size) {
    SetFilePath(file.wide().c_str());
  }
  unsigned char GetByte() override {
    Count();
    return Mp4StreamReader::GetByte();
  }
  unsigned int GetData(void* dst, unsigned int n) override {
    Count();
    return Mp4StreamReader::GetData(dst, n);
  }

 private:
  void Count() {
    if (left-- != 0) return;
    EXPECT_EQ(truncate(path.c_str(), size), 0);
  }

  std::string path;
  int left;
  long long size;
};

}  // namespace

TEST(HostileFiles, FileThatShrinksWhileItIsRead) {
  // Media in front of the movie's end, so that what is cut off was not read ahead.
  const Bytes moov = fixture::Moov({golden::Film(), golden::Song("mp4a")},
                                   Box("free", Bytes().Fill(30000)) + golden::UserData());
  for (int reads = 0; reads < 160; reads += 3) {
    for (const long long cut : {0LL, 7LL, 500LL, 1500LL}) {
      const TempFile file(moov);
      ShrinkingReader reader(file, reads, cut);
      mp4::ScanControl scan(reader.GetSize());
      reader.AttachScan(&scan);
      Mp4Context context;
      BoxMOOV box;
      reader.SetPos(8);
      box.ReadData(&reader, static_cast<long long>(moov.size()) - 8, &context);
      EXPECT_GE(reader.GetPos(), 0);
    }
  }
}

TEST(HostileFiles, FileThatShrinksAfterItWasOpened) {
  const TempFile file(Movie());
  Mp4Demux demux;
  ASSERT_TRUE(demux.Init(file.wide().c_str()));
  ASSERT_EQ(truncate(file.path().c_str(), 10), 0);
  Play(&demux);
  std::array<unsigned char, 100> block{};
  EXPECT_EQ(demux.reader->GetSize(), 10);
  demux.reader->SetPos(50000);
  EXPECT_EQ(demux.reader->GetData(block.data(), 100), 0u);
}

TEST(HostileFiles, SparseFileOfATebibyte) {
  const TempFile file(Movie());
  ASSERT_EQ(truncate(file.path().c_str(), 1LL << 40), 0);
  Mp4Demux demux;
  // The zeros behind the movie are one box that reaches the end.
  EXPECT_TRUE(demux.Init(file.wide().c_str()));
}

namespace {

class HostilePaths : public testing::Test {
 protected:
  HostilePaths() {
    std::string name = TempFile::Directory() + "/mp4judge-XXXXXX";
    folder = mkdtemp(name.data());
  }
  ~HostilePaths() override { std::filesystem::remove_all(folder); }

  static void ExpectRefused(const std::string& path) {
    const std::wstring wide(path.begin(), path.end());
    Mp4Demux demux;
    EXPECT_FALSE(demux.Init(wide.c_str())) << path;
    EXPECT_EQ(JudgeMP4HaveDRM(wide.c_str()), 0) << path;
  }

  std::string folder;
};

}  // namespace

TEST_F(HostilePaths, Directory) { ExpectRefused(folder); }

// Opening a pipe that nobody writes to would wait for ever.
TEST_F(HostilePaths, Pipe) {
  ASSERT_EQ(mkfifo((folder + "/pipe").c_str(), 0600), 0);
  ExpectRefused(folder + "/pipe");
}

TEST_F(HostilePaths, PipeWithAWriter) {
  const std::string path = folder + "/pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const int pipe = open(path.c_str(), O_RDWR | O_NONBLOCK);
  ASSERT_GE(pipe, 0);
  const Bytes movie = ProtectedMovie();
  ASSERT_EQ(write(pipe, movie.data(), movie.size()), static_cast<ssize_t>(movie.size()));
  ExpectRefused(path);
  close(pipe);
}

TEST_F(HostilePaths, CharacterDevice) {
  ExpectRefused("/dev/zero");
  ExpectRefused("/dev/null");
}

TEST_F(HostilePaths, LinkToItself) {
  ASSERT_EQ(symlink("self", (folder + "/self").c_str()), 0);
  ExpectRefused(folder + "/self");
}

TEST_F(HostilePaths, MissingEmptyAndNull) {
  ExpectRefused(folder + "/missing");
  ExpectRefused("");
  EXPECT_EQ(JudgeMP4HaveDRM(nullptr), 0);
}

// An administrator may read it all the same; nobody else.
TEST_F(HostilePaths, UnreadableFile) {
  const TempFile file(ProtectedMovie());
  ASSERT_EQ(chmod(file.path().c_str(), 0), 0);
  const int expected = access(file.path().c_str(), R_OK) == 0 ? 1 : 0;
  EXPECT_EQ(JudgeMP4HaveDRM(file.wide().c_str()), expected);
}

TEST_F(HostilePaths, FilesTooShortToHoldABox) {
  const Bytes movie = ProtectedMovie();
  for (std::size_t n = 0; n < 20; ++n) ExpectRefused(TempFile(Bytes(movie).Cut(n)).path());
}
