#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "io/Mp4StreamReader.h"
#include "tests/ReaderFixtures.h"

namespace {

std::wstring Wide(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

/// A directory that exists, with its files, while the object lives.
class TempDirectory {
 public:
  TempDirectory() {
    path_ = TempFile::Directory() + "/mp4judge-XXXXXX";
    if (mkdtemp(path_.data()) == nullptr) std::abort();
  }
  ~TempDirectory() {
    for (const std::string& name : names_) std::remove(name.c_str());
    rmdir(path_.c_str());
  }
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;

  /// Makes a file of this name that holds its own name.
  void Add(const std::string& name) {
    const std::string whole = path_ + "/" + name;
    FILE* file = std::fopen(whole.c_str(), "wb");
    if (file == nullptr) std::abort();
    std::fwrite(name.data(), 1, name.size(), file);
    std::fclose(file);
    names_.push_back(whole);
  }
  void AddPipe(const std::string& name) {
    const std::string whole = path_ + "/" + name;
    if (mkfifo(whole.c_str(), 0600) != 0) std::abort();
    names_.push_back(whole);
  }

  const std::string& path() const { return path_; }
  /// A path to `name` of exactly `length` bytes, padded with slashes.
  std::wstring PathOfLength(std::size_t length, const std::string& name) const {
    return Wide(path_ + std::string(length - path_.size() - name.size(), '/') + name);
  }

 private:
  std::string path_;
  std::vector<std::string> names_;
};

/// What a reader delivers from the start.
std::string Content(Mp4StreamReader& reader) {
  char text[64] = {};
  return std::string(text, reader.GetData(text, sizeof text));
}

std::string ContentAt(const std::wstring& path) {
  Mp4StreamReader reader;
  return reader.SetFilePath(path.c_str()) ? Content(reader) : "not opened";
}

void ExpectHarmless(Mp4StreamReader& reader) {
  unsigned char byte = 0xEE;
  EXPECT_EQ(reader.GetSize(), 0);
  EXPECT_EQ(reader.GetPos(), 0);
  EXPECT_EQ(reader.GetByte(), 0);
  EXPECT_EQ(reader.GetBe16(), 0u);
  EXPECT_EQ(reader.GetLe24(), 0u);
  EXPECT_EQ(reader.GetLe32(), 0u);
  EXPECT_EQ(reader.GetBe64(), 0u);
  EXPECT_EQ(reader.GetData(&byte, 1), 0u);
  EXPECT_EQ(byte, 0xEE);
  EXPECT_NE(reader.SetPos(0), 0);
  EXPECT_NE(reader.Skip(0), 0);
  EXPECT_NE(reader.Skip(5), 0);
  EXPECT_EQ(reader.GetPos(), 0);
  std::vector<unsigned char> large(100000);
  EXPECT_EQ(reader.GetData(large.data(), 100000), 0u);
}

/// Where a virtual operation stands in the table that both readers share.
template <class Operation>
std::intptr_t Slot(Operation operation) {
  std::intptr_t words[2];
  static_assert(sizeof operation == sizeof words);
  std::memcpy(words, &operation, sizeof words);
  return words[0] / static_cast<std::intptr_t>(sizeof(void*));
}

}  // namespace

TEST(Mp4StreamReader, ComposedGettersReadTheFilesBytes) {
  FileReader file(CountingFromOne(34));
  ExpectComposedGetters(file.reader);
  EXPECT_EQ(file.reader.GetPos(), 34);
}

TEST(Mp4StreamReader, ComposedGettersKeepTheHighBits) {
  FileReader file(Bytes().Fill(34, 0xFF));
  EXPECT_EQ(file.reader.GetLe16(), 0xFFFFu);
  EXPECT_EQ(file.reader.GetBe16(), 0xFFFFu);
  EXPECT_EQ(file.reader.GetLe24(), 0xFFFFFFu);
  EXPECT_EQ(file.reader.GetBe24(), 0xFFFFFFu);
  EXPECT_EQ(file.reader.GetLe32(), 0xFFFFFFFFu);
  EXPECT_EQ(file.reader.GetBe32(), 0xFFFFFFFFu);
  EXPECT_EQ(file.reader.GetLe64(), 0xFFFFFFFFFFFFFFFFull);
  EXPECT_EQ(file.reader.GetBe64(), 0xFFFFFFFFFFFFFFFFull);
}

TEST(Mp4StreamReader, Three24BitBytes) {
  FileReader file(Bytes{1, 2, 3, 1, 2, 3});
  EXPECT_EQ(file.reader.GetLe24(), 0x030201u);
  EXPECT_EQ(file.reader.GetBe24(), 0x010203u);
}

TEST(Mp4StreamReader, OverridingGetByteChangesEveryComposedGetter) {
  CountingReader<Mp4StreamReader> reader;
  ExpectComposedGetters(reader);
}

TEST(Mp4StreamReader, BoxTypeHoldsItsFirstCharacterInTheLowestByte) {
  FileReader file(Bytes().Text("moov"));
  EXPECT_EQ(file.reader.GetLe32(), 0x766F6F6Du);
}

TEST(Mp4StreamReader, OperationsKeepTheirOrder) {
  // Two slots for the destructor, then the getters as declared.
  using R = mmStreamReader;
  const std::intptr_t first = Slot(&R::GetLe64);
  EXPECT_EQ(first, 2);
  EXPECT_EQ(Slot(&R::GetBe64), first + 1);
  EXPECT_EQ(Slot(&R::GetLe32), first + 2);
  EXPECT_EQ(Slot(&R::GetBe32), first + 3);
  EXPECT_EQ(Slot(&R::GetLe24), first + 4);
  EXPECT_EQ(Slot(&R::GetBe24), first + 5);
  EXPECT_EQ(Slot(&R::GetLe16), first + 6);
  EXPECT_EQ(Slot(&R::GetBe16), first + 7);
  EXPECT_EQ(Slot(&R::GetByte), first + 8);
  EXPECT_EQ(Slot(&R::GetData), first + 9);
  EXPECT_EQ(Slot(&R::GetPos), first + 10);
  EXPECT_EQ(Slot(&R::SetPos), first + 11);
  EXPECT_EQ(Slot(&R::GetSize), first + 12);
  EXPECT_EQ(Slot(&R::Skip), first + 13);
  EXPECT_EQ(Slot(&R::IsEnd), first + 14);
}

TEST(Mp4StreamReader, BytesBeyondTheEndAreZeroAndDoNotMove) {
  FileReader file(Bytes{0xAA, 0xBB});
  EXPECT_EQ(file.reader.GetBe32(), 0xAABB0000u);
  EXPECT_EQ(file.reader.GetPos(), 2);
  EXPECT_EQ(file.reader.GetByte(), 0);
  EXPECT_EQ(file.reader.GetPos(), 2);
}

TEST(Mp4StreamReader, DataIsShortAtTheEnd) {
  FileReader file(Bytes{1, 2, 3});
  unsigned char bytes[5] = {9, 9, 9, 9, 9};
  EXPECT_EQ(file.reader.GetData(bytes, 0), 0u);
  EXPECT_EQ(file.reader.GetData(bytes, 2), 2u);
  EXPECT_EQ(file.reader.GetData(bytes + 2, 3), 1u);
  EXPECT_EQ(bytes[0], 1);
  EXPECT_EQ(bytes[2], 3);
  EXPECT_EQ(bytes[3], 9);
  EXPECT_EQ(file.reader.GetPos(), 3);
  EXPECT_EQ(file.reader.GetData(bytes, 5), 0u);
}

TEST(Mp4StreamReader, SetPosReturnsAStatus) {
  FileReader file(CountingFromOne(10));
  EXPECT_EQ(file.reader.SetPos(7), 0);
  EXPECT_EQ(file.reader.GetPos(), 7);
  EXPECT_EQ(file.reader.GetByte(), 8);
}

TEST(Mp4StreamReader, SkipReturnsAStatusAndGoesBothWays) {
  FileReader file(CountingFromOne(10));
  EXPECT_EQ(file.reader.Skip(5), 0);
  EXPECT_EQ(file.reader.GetPos(), 5);
  EXPECT_EQ(file.reader.Skip(-3), 0);
  EXPECT_EQ(file.reader.GetPos(), 2);
  EXPECT_EQ(file.reader.GetByte(), 3);
  EXPECT_EQ(file.reader.Skip(-3), 0);
  EXPECT_EQ(file.reader.GetPos(), 0);
}

TEST(Mp4StreamReader, SeekBeforeTheStartFailsAndMovesNothing) {
  FileReader file(CountingFromOne(10));
  file.reader.SetPos(4);
  EXPECT_EQ(file.reader.SetPos(-1), -1);
  EXPECT_EQ(file.reader.GetPos(), 4);
  EXPECT_EQ(file.reader.Skip(-5), -1);
  EXPECT_EQ(file.reader.Skip(LLONG_MIN), -1);
  EXPECT_EQ(file.reader.GetPos(), 4);
  EXPECT_EQ(file.reader.GetByte(), 5);
}

TEST(Mp4StreamReader, SeekMayGoPastTheEndWhereReadingGivesZeros) {
  FileReader file(CountingFromOne(10));
  EXPECT_EQ(file.reader.Skip(1000), 0);
  EXPECT_EQ(file.reader.GetPos(), 1000);
  EXPECT_EQ(file.reader.GetBe32(), 0u);
  unsigned char bytes[4];
  EXPECT_EQ(file.reader.GetData(bytes, 4), 0u);
  EXPECT_EQ(file.reader.GetPos(), 1000);
  EXPECT_EQ(file.reader.Skip(-991), 0);
  EXPECT_EQ(file.reader.GetByte(), 10);
}

TEST(Mp4StreamReader, SkipBeyondTheLargestPositionFails) {
  FileReader file(CountingFromOne(10));
  file.reader.SetPos(1);
  EXPECT_EQ(file.reader.Skip(LLONG_MAX), -1);
  EXPECT_EQ(file.reader.GetPos(), 1);
}

TEST(Mp4StreamReader, GetSizeLeavesThePosition) {
  FileReader file(CountingFromOne(10));
  EXPECT_EQ(file.reader.GetSize(), 10);
  EXPECT_EQ(file.reader.GetPos(), 0);
  file.reader.SetPos(3);
  EXPECT_EQ(file.reader.GetSize(), 10);
  EXPECT_EQ(file.reader.GetByte(), 4);
  file.reader.SetPos(500);
  EXPECT_EQ(file.reader.GetSize(), 10);
  EXPECT_EQ(file.reader.GetPos(), 500);
}

TEST(Mp4StreamReader, EndIsExactlyTheSize) {
  FileReader file(CountingFromOne(10));
  EXPECT_FALSE(file.reader.IsEnd());
  file.reader.SetPos(9);
  EXPECT_FALSE(file.reader.IsEnd());
  file.reader.SetPos(10);
  EXPECT_TRUE(file.reader.IsEnd());
  file.reader.SetPos(11);
  EXPECT_FALSE(file.reader.IsEnd());
}

TEST(Mp4StreamReader, EmptyFileIsAtItsEnd) {
  FileReader file(Bytes{});
  EXPECT_EQ(file.reader.GetSize(), 0);
  EXPECT_TRUE(file.reader.IsEnd());
  EXPECT_EQ(file.reader.GetBe32(), 0u);
  EXPECT_EQ(file.reader.GetPos(), 0);
}

TEST(Mp4StreamReader, WithoutAnOpenFileEverythingIsHarmless) {
  Mp4StreamReader reader;
  ExpectHarmless(reader);
}

TEST(Mp4StreamReader, FilesThatCannotBeOpenedAreReported) {
  const TempDirectory directory;
  Mp4StreamReader reader;
  EXPECT_FALSE(reader.SetFilePath(nullptr));
  ExpectHarmless(reader);
  EXPECT_FALSE(reader.SetFilePath(L""));
  ExpectHarmless(reader);
  EXPECT_FALSE(reader.SetFilePath(Wide(directory.path() + "/missing").c_str()));
  ExpectHarmless(reader);
}

TEST(Mp4StreamReader, DirectoryIsNoFile) {
  const TempDirectory directory;
  Mp4StreamReader reader;
  EXPECT_FALSE(reader.SetFilePath(Wide(directory.path()).c_str()));
  ExpectHarmless(reader);
}

TEST(Mp4StreamReader, PipeIsRefusedWithoutWaitingForAWriter) {
  TempDirectory directory;
  directory.AddPipe("pipe");
  Mp4StreamReader reader;
  EXPECT_FALSE(reader.SetFilePath(Wide(directory.path() + "/pipe").c_str()));
  ExpectHarmless(reader);
}

TEST(Mp4StreamReader, SecondPathClosesTheFirstFile) {
  FileReader file(CountingFromOne(10));
  file.reader.SetPos(6);
  file.reader.GetByte();
  const TempFile other(Bytes{0x77, 0x78});
  ASSERT_TRUE(file.reader.SetFilePath(other.wide().c_str()));
  EXPECT_EQ(file.reader.GetPos(), 0);
  EXPECT_EQ(file.reader.GetSize(), 2);
  EXPECT_EQ(file.reader.GetBe16(), 0x7778u);
  EXPECT_FALSE(file.reader.SetFilePath(nullptr));
  ExpectHarmless(file.reader);
}

TEST(Mp4StreamReader, FilesAreClosedOnReopeningAndDestruction) {
  const auto nextDescriptor = [] {
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(fd);
    return fd;
  };
  const int before = nextDescriptor();
  {
    FileReader file(CountingFromOne(10));
    ASSERT_TRUE(file.reader.SetFilePath(file.file.wide().c_str()));
    EXPECT_EQ(nextDescriptor(), before + 1);
  }
  EXPECT_EQ(nextDescriptor(), before);
}

TEST(Mp4StreamReader, NamesOfEveryUtf8LengthOpen) {
  TempDirectory directory;
  const std::string name = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xB5";
  directory.Add(name);
  std::wstring path = Wide(directory.path()) + L"/a";
  path += {static_cast<wchar_t>(0xE9), static_cast<wchar_t>(0x20AC), static_cast<wchar_t>(0x1F3B5)};
  EXPECT_EQ(ContentAt(path), name);
}

TEST(Mp4StreamReader, CodePointAboveTheLastOneOpensTheReplacementCharacter) {
  TempDirectory directory;
  directory.Add("a\xEF\xBF\xBDz");
  for (const unsigned c : {0x110000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    std::wstring path = Wide(directory.path()) + L"/a";
    path += {static_cast<wchar_t>(c), L'z'};
    EXPECT_EQ(ContentAt(path), "a\xEF\xBF\xBDz") << c;
  }
}

TEST(Mp4StreamReader, PathOf2047BytesWithItsTerminatorOpens) {
  TempDirectory directory;
  directory.Add("abc");
  EXPECT_EQ(ContentAt(directory.PathOfLength(2046, "abc")), "abc");
}

TEST(Mp4StreamReader, PathOf2047BytesWithoutItsTerminatorOpensWhole) {
  TempDirectory directory;
  directory.Add("ab");
  directory.Add("abc");
  EXPECT_EQ(ContentAt(directory.PathOfLength(2047, "abc")), "abc");
}

TEST(Mp4StreamReader, LongerPathIsCutBeforeTheCharacterThatCrossesTheLimit) {
  TempDirectory directory;
  directory.Add("ab");
  directory.Add("abc");
  EXPECT_EQ(ContentAt(directory.PathOfLength(2048, "abc")), "ab");
  EXPECT_EQ(ContentAt(directory.PathOfLength(2047, "abc") + L"d.mp4"), "abc");
  // A character of two bytes whose second would be byte 2,048 goes as a whole.
  EXPECT_EQ(ContentAt(directory.PathOfLength(2046, "ab") + static_cast<wchar_t>(0xE9) + L"c"),
            "ab");
}

TEST(Mp4StreamReader, PositionsAndBytesAreThoseOfCStdio) {
  constexpr std::size_t kSize = 100 * 1024;
  std::mt19937 random(20240611);
  Bytes bytes;
  for (std::size_t i = 0; i < kSize; ++i) bytes.Byte(random());
  FileReader file(bytes);
  FILE* stdio = std::fopen(file.file.path().c_str(), "rb");
  ASSERT_NE(stdio, nullptr);
  std::vector<unsigned char> ours(60000), theirs(60000);
  const auto below = [&](unsigned n) { return random() % n; };
  for (int step = 0; step < 40000; ++step) {
    switch (below(8)) {
      case 0: {
        const long long target = static_cast<long long>(below(kSize + 3000)) - 1000;
        ASSERT_EQ(file.reader.SetPos(target), fseeko(stdio, target, SEEK_SET));
        break;
      }
      case 1:
      case 2: {
        const long long reach = step % 5 == 0 ? 40000 : 40;
        const long long move = static_cast<long long>(below(unsigned(2 * reach))) - reach;
        ASSERT_EQ(file.reader.Skip(move), fseeko(stdio, move, SEEK_CUR));
        break;
      }
      case 3: {
        const unsigned n = below(step % 7 == 0 ? 60000 : 50);
        std::fill(ours.begin(), ours.begin() + n, 0x5A);
        std::fill(theirs.begin(), theirs.begin() + n, 0x5A);
        ASSERT_EQ(file.reader.GetData(ours.data(), n), std::fread(theirs.data(), 1, n, stdio));
        ASSERT_EQ(std::memcmp(ours.data(), theirs.data(), n), 0);
        break;
      }
      case 4: {
        unsigned char four[4] = {};
        for (unsigned char& byte : four) {
          if (std::fread(&byte, 1, 1, stdio) != 1) byte = 0;
        }
        ASSERT_EQ(file.reader.GetBe32(),
                  static_cast<unsigned>(four[0]) << 24 | four[1] << 16 | four[2] << 8 | four[3]);
        break;
      }
      case 5:
        ASSERT_EQ(file.reader.GetSize(), static_cast<long long>(kSize));
        break;
      default: {
        unsigned char byte = 0;
        if (std::fread(&byte, 1, 1, stdio) != 1) byte = 0;
        ASSERT_EQ(file.reader.GetByte(), byte);
        break;
      }
    }
    ASSERT_EQ(file.reader.GetPos(), ftello(stdio)) << step;
    ASSERT_EQ(file.reader.IsEnd(), ftello(stdio) == static_cast<long long>(kSize));
  }
  std::fclose(stdio);
}
