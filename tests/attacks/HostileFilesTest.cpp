// Sizes, nesting, files that change under the reader, and paths that name no file. Each test opens,
// plays and judges a whole file.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <filesystem>
#include <iterator>

#include "demux/FileInfoInterface.h"
#include "io/Mp4StreamReader.h"
#include "io/ScanControl.h"
#include "tests/HostileFiles.h"

namespace {

using namespace hostile;

/// What becomes of Movie() when a box says another size: '+' it opens, '-' it is refused.
struct Outcomes {
  const char* type;
  const char* tiny;   ///< sizes 1 to 7
  bool reachesPast;   ///< sizes up to and past the end of the file
  const char* small;  ///< sizes 8 to 20
};

// A size below the header's is refused wherever a box is read by it: not in front of what is read
// as if the size were right (an edit list, a sample entry), nor inside user data and track
// fragments, whose failures are passed by. A fragment of size 1 has a 64-bit size, which reaches
// past the end.
//
// A box that reaches past the end takes with it what stands behind it. That fails the opening where
// the movie cannot do without: tracks behind a movie header, the media behind a track header, ...
//
// A box that ends too early has its remains read as the next box. In a table's place that is one
// that nobody knows; in front of something that is needed, it takes that with it. Payloads of 0
// bytes are refused by the tables that start with a count and by nobody else. One size in a row is
// the right one: of "ftyp" and "vmhd" 20, of "smhd" 16; a "dinf" of 8 bytes is an empty one.
constexpr Outcomes kOutcomes[] = {
    {"ftyp", "-------", false, "------------+"},     {"moov", "-------", true, "-------------"},
    {"mvhd", "-------", false, "-------------"},     {"trak", "-------", true, "-------------"},
    {"tkhd", "-------", false, "-------------"},     {"edts", "+++++++", false, "+++++++++++++"},
    {"elst", "+++++++", true, "+++++++++++++"},      {"mdia", "-------", true, "-------------"},
    {"mdhd", "-------", false, "-------------"},     {"hdlr", "-------", false, "-------------"},
    {"minf", "-------", true, "-------------"},      {"vmhd", "-------", false, "------------+"},
    {"smhd", "-------", false, "--------+----"},     {"dinf", "-------", false, "+------------"},
    {"dref", "+++++++", true, "+++++++++++++"},      {"stbl", "-------", true, "+++++++++++++"},
    {"stsd", "-------", true, "-++++++++++++"},      {"avc1", "+++++++", true, "+++++++++++++"},
    {"avcC", "+++++++", true, "+++++++++++++"},      {"mp4a", "+++++++", true, "+++++++++++++"},
    {"esds", "+++++++", true, "+++++++++++++"},      {"stts", "-------", true, "-++++++++++++"},
    {"stsc", "-------", true, "-++++++++++++"},      {"stsz", "-------", true, "-++++++++++++"},
    {"stco", "-------", true, "+++++++++++++"},      {"stss", "-------", true, "+++++++++++++"},
    {"udta", "-------", true, "+++++++++++++"},      {"\251ART", "+++++++", true, "+++++++++++++"},
    {"\251day", "+++++++", true, "+++++++++++++"},   {"meta", "+++++++", true, "+++++++++++++"},
    {"meta hdlr", "+++++++", true, "+++++++++++++"}, {"ilst", "+++++++", true, "+++++++++++++"},
    {"data", "+++++++", true, "+++++++++++++"},      {"mvex", "-------", true, "+++++++++++++"},
    {"mehd", "-------", true, "+++++++++++++"},      {"trex", "-------", true, "+++++++++++++"},
    {"moof", "+------", true, "+++++++++++++"},      {"mfhd", "-------", true, "+++++++++++++"},
    {"traf", "+++++++", true, "+++++++++++++"},      {"tfhd", "-------", true, "+++++++++++++"},
    {"trun", "-------", true, "+++++++++++++"},
};

const Outcomes* OutcomesOf(const Bytes& movie, std::size_t at) {
  const std::string type(reinterpret_cast<const char*>(movie.data()) + at + 4, 4);
  const std::string name = type == "hdlr" && at > FindBox(movie, "meta") ? "meta hdlr" : type;
  const auto* const found = std::find_if(std::begin(kOutcomes), std::end(kOutcomes),
                                         [&](const Outcomes& row) { return name == row.type; });
  return found != std::end(kOutcomes) ? found : nullptr;
}

/// Hands every box of Movie() to `check`, with its place.
template <class Check>
void ForEachBox(Check&& check) {
  const Bytes movie = Movie();
  int boxes = 0;
  for (std::size_t at = 0; at + 8 <= movie.size(); ++at) {
    const Outcomes* expected = OutcomesOf(movie, at);
    if (expected == nullptr) continue;
    SCOPED_TRACE(testing::Message() << expected->type << " at " << at);
    check(movie, at, *expected);
    ++boxes;
  }
  EXPECT_EQ(boxes, 74);
}

Bytes ProtectedMovie() {
  return fixture::Ftyp("M4A ", {"mp42"}) + fixture::Moov({golden::Song("drms")});
}

}  // namespace

TEST(HostileSizes, ControlOpens) { EXPECT_TRUE(Opens(Movie())); }

TEST(HostileSizes, EveryBoxOfSizeOneToSeven) {
  ForEachBox([](const Bytes& movie, std::size_t at, const Outcomes& expected) {
    for (std::uint32_t size = 1; size <= 7; ++size) {
      EXPECT_EQ(Opens(Bytes(movie).PutBe32(at, size)), expected.tiny[size - 1] == '+') << size;
    }
  });
}

TEST(HostileSizes, EveryBoxThatReachesPastTheEnd) {
  ForEachBox([](const Bytes& movie, std::size_t at, const Outcomes& expected) {
    for (const std::uint32_t size : {0xFFFFFFFFu, 0xFFFFFFF8u, 0x80000000u, 0x7FFFFFFFu, 0u}) {
      EXPECT_EQ(Opens(Bytes(movie).PutBe32(at, size)), expected.reachesPast) << size;
    }
  });
}

TEST(HostileSizes, EveryBoxOfSizeEightToTwenty) {
  ForEachBox([](const Bytes& movie, std::size_t at, const Outcomes& expected) {
    for (std::uint32_t size = 8; size <= 20; ++size) {
      EXPECT_EQ(Opens(Bytes(movie).PutBe32(at, size)), expected.small[size - 8] == '+') << size;
    }
  });
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

// Whatever it is, it ends the scan; a second movie box replaces the first and has no header.
TEST(HostileSizes, LargeSizeThatWraps64Bits) {
  for (const std::uint64_t size :
       {std::uint64_t{0x7FFFFFFFFFFFFFFF}, std::uint64_t{0x7FFFFFFFFFFFFFF8},
        std::uint64_t{0x7FFFFFFFFFFFFF00}, std::uint64_t{1} << 62}) {
    for (const std::string type : {"free", "mdat", "moov", "moof"}) {
      const Bytes large = SizedBox(1, type, Bytes().Be64(size));
      EXPECT_EQ(Opens(fixture::Ftyp("isom") + golden::Movie() + large + Bytes().Fill(100)),
                type != "moov")
          << type << " " << size;
    }
  }
}

// Inside a movie only tracks and compressed movies are read so that their failure counts; behind it
// only movie boxes are, since a fragment passes its failing children by.
TEST(HostileSizes, HundredThousandNestedBoxes) {
  constexpr std::uint32_t kDepth = 100000;
  for (const std::string type : {"moov", "trak", "mdia", "minf", "stbl", "stsd", "udta", "meta",
                                 "ilst", "mvex", "moof", "traf", "wave", "cmov", "edts", "free"}) {
    SCOPED_TRACE(type);
    Bytes nested;
    for (std::uint32_t left = kDepth; left > 0; --left) nested.Be32(left * 8).Text(type);
    EXPECT_EQ(Opens(fixture::Ftyp("isom") + fixture::Moov({golden::Film()}, nested)),
              type != "trak" && type != "cmov");
    EXPECT_EQ(Opens(fixture::Ftyp("isom") + golden::Movie() + nested), type != "moov");
    EXPECT_FALSE(Opens(nested));
  }
}

// A child that claims far more than its parent holds makes the parent step back by the difference,
// before the start of the file. Most parents then stand where the child was passed over to and are
// realigned by their own; a movie-extends box enters its children instead, so that it is followed
// by whatever the header behind its child's says, and a film there is not found.
TEST(HostileSizes, SeeksBeforeTheStart) {
  const Bytes edits = SizedBox(0x7FFFFFFF, "edts", FullBox("elst", 0, 0, Bytes().Be32(0)));
  const Bytes film = fixture::Trak(golden::Film());
  const auto inFile = [](const Bytes& children) {
    return Opens(fixture::Ftyp("isom") + Box("moov", fixture::Mvhd() + children));
  };
  const auto compressed = [](const Bytes& children) {
    const Bytes movie = Box("moov", fixture::Mvhd() + children + Bytes().Fill(400));
    return Opens(Box("moov", fixture::Cmov(movie)));
  };
  for (const std::string parent : {"trak", "mdia", "minf", "stbl", "udta", "meta", "mvex"}) {
    SCOPED_TRACE(parent);
    const Bytes box = Box(parent, edits + Bytes().Fill(40));
    // A track without media fails the movie, but not one that was compressed.
    EXPECT_EQ(inFile(film + box), parent != "trak");
    EXPECT_TRUE(compressed(film + box));
    const bool filmIsFound = parent != "trak" && parent != "mvex";
    EXPECT_EQ(inFile(box + film), filmIsFound);
    EXPECT_EQ(compressed(box + film), filmIsFound);
  }
}

TEST(HostileSizes, TrackThatStepsBackBeforeTheStart) {
  const Bytes edits = SizedBox(0x7FFFFFFF, "edts", FullBox("elst", 0, 0, Bytes().Be32(0)));
  const Bytes trak = fixture::Trak(golden::Film()) + edits;
  const Bytes longer = Bytes(trak).PutBe32(0, static_cast<std::uint32_t>(trak.size()));
  EXPECT_TRUE(Opens(fixture::Ftyp("isom") + Box("moov", fixture::Mvhd() + longer + longer)));
}

// Each box reads all those behind it as children of its own and steps back to its end: n boxes cost
// n (n - 1) / 2 headers, of which an opening reads 2^19 and one for every 8 bytes. Only the account
// can end it: the boxes are sound as far as their parents are concerned, and the movie has a track.
TEST(HostileSizes, ParentsThatStepBackOverTheirChildren) {
  const auto opens = [](std::size_t boxes) {
    Bytes movie = fixture::Mvhd() + fixture::Trak(golden::Film());
    for (std::size_t i = 0; i < boxes; ++i) {
      movie.Append(Box("udta", SizedBox(30000, "meta", Bytes().Fill(4))));
    }
    const Bytes behind = Box("free", Bytes().Fill(30000));
    return Opens(fixture::Ftyp("isom") + Box("moov", movie) + behind);
  };
  EXPECT_TRUE(opens(1000));
  EXPECT_FALSE(opens(1050));
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
