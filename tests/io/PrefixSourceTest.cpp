#include <gtest/gtest.h>

#include <cstring>

#include "io/CallbackSource.h"
#include "io/MemorySource.h"
#include "io/PrefixSource.h"
#include "tests/SourceFixtures.h"

using namespace mp4;

TEST(PrefixSource, EndsWhereItIsTold) {
  const Bytes bytes = CountingFromZero(100);
  MemorySource whole(bytes.data(), bytes.size());
  PrefixSource prefix(&whole, 40);
  EXPECT_EQ(prefix.Size(), 40u);
  unsigned char read[100] = {};
  EXPECT_EQ(prefix.ReadAt(30, read, 50), 10u);
  EXPECT_EQ(read[9], 39);
  EXPECT_EQ(read[10], 0);
  EXPECT_FALSE(prefix.Failed());
  EXPECT_EQ(prefix.InMemory(30, 10), bytes.data() + 30);
  EXPECT_EQ(prefix.InMemory(30, 11), nullptr);
  EXPECT_EQ(prefix.InMemory(41, 0), nullptr);
}

TEST(PrefixSource, IsNeverLongerThanWhatIsBelow) {
  const Bytes bytes = CountingFromZero(10);
  MemorySource whole(bytes.data(), bytes.size());
  EXPECT_EQ(PrefixSource(&whole, 11).Size(), 10u);
}

TEST(PrefixSource, PassesTroubleOn) {
  Caller caller{CountingFromZero(100)};
  caller.failFrom = 20;
  CallbackSource whole(Caller::Read, Caller::Size, &caller);
  PrefixSource prefix(&whole, 40);
  EXPECT_EQ(prefix.Pace(), ReadPace::kSlow);
  unsigned char read[10];
  EXPECT_EQ(prefix.ReadAt(20, read, 10), 0u);
  EXPECT_EQ(prefix.Trouble().fault, SourceFault::kReadFailed);
  EXPECT_EQ(prefix.Trouble().offset, 20u);
}
