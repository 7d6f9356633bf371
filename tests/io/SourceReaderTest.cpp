#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "io/CallbackSource.h"
#include "io/MemorySource.h"
#include "io/Mp4StreamReader.h"
#include "io/SourceReader.h"
#include "tests/Bytes.h"
#include "tests/Fixtures.h"
#include "tests/SourceFixtures.h"

TEST(SourceReader, ReadsWhatTheSourceHas) {
  const Bytes bytes({1, 2, 3, 4, 5});
  mp4::MemorySource source(bytes.data(), bytes.size());
  mp4::SourceReader reader(&source);
  EXPECT_EQ(reader.GetSize(), 5);
  EXPECT_EQ(reader.GetBe32(), 0x01020304u);
  EXPECT_FALSE(reader.IsEnd());
  EXPECT_EQ(reader.GetByte(), 5);
  EXPECT_TRUE(reader.IsEnd());
  EXPECT_EQ(reader.GetByte(), 0);
  EXPECT_EQ(reader.GetPos(), 5);
}

TEST(SourceReader, WithoutASourceNothingIsOpen) {
  mp4::SourceReader reader(nullptr);
  EXPECT_EQ(reader.GetSize(), 0);
  EXPECT_EQ(reader.GetByte(), 0);
  EXPECT_EQ(reader.SetPos(0), -1);
  EXPECT_EQ(reader.Skip(1), -1);
  EXPECT_EQ(reader.GetPos(), 0);
}

TEST(SourceReader, GoesWhereTheFileReaderGoes) {
  const Bytes bytes = CountingFromZero(70000);
  const TempFile file(bytes);
  mp4::MemorySource memory(bytes.data(), bytes.size());
  mp4::SourceReader ours(&memory);
  Mp4StreamReader theirs;
  ASSERT_TRUE(theirs.SetFilePath(file.wide().c_str()));
  std::mt19937 random(7);
  std::vector<unsigned char> a(40000), b(40000);
  for (int i = 0; i < 20000; ++i) {
    const long long n = static_cast<long long>(random() % 90000) - 10000;
    const auto count = static_cast<unsigned>(random() % (i % 50 == 0 ? 40000 : 60));
    switch (random() % 6) {
      case 0:
        ASSERT_EQ(ours.SetPos(n), theirs.SetPos(n));
        break;
      case 1:
        ASSERT_EQ(ours.Skip(n / 8), theirs.Skip(n / 8));
        break;
      case 2:
        ASSERT_EQ(ours.GetBe64(), theirs.GetBe64());
        break;
      case 3:
        ASSERT_EQ(ours.GetLe24(), theirs.GetLe24());
        break;
      case 4:
        ASSERT_EQ(ours.IsEnd(), theirs.IsEnd());
        break;
      default:
        ASSERT_EQ(ours.GetData(a.data(), count), theirs.GetData(b.data(), count));
        ASSERT_EQ(std::memcmp(a.data(), b.data(), count), 0);
    }
    ASSERT_EQ(ours.GetPos(), theirs.GetPos()) << i;
  }
}

TEST(SourceReader, ASourceThatFailsReadsAsItsEnd) {
  Caller caller{CountingFromZero(1000)};
  caller.failFrom = 0;
  mp4::CallbackSource source(Caller::Read, Caller::Size, &caller);
  mp4::SourceReader reader(&source);
  EXPECT_EQ(reader.GetBe32(), 0u);
  EXPECT_EQ(reader.GetPos(), 0);
  EXPECT_TRUE(source.Failed());
}
