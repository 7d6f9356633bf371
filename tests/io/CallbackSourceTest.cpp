#include <gtest/gtest.h>

#include "io/CallbackSource.h"
#include "tests/SourceFixtures.h"

TEST(CallbackSource, AsksAgainForWhatWasNotDelivered) {
  Caller caller{CountingFromZero(100)};
  caller.most = 7;
  mp4::CallbackSource source(Caller::Read, Caller::Size, &caller);
  unsigned char got[20];
  EXPECT_EQ(source.ReadAt(80, got, 20), 20u);
  EXPECT_EQ(got[19], 99);
  EXPECT_EQ(caller.calls, 3);
}

TEST(CallbackSource, AFailureKeepsTheCallersNumber) {
  Caller caller{CountingFromZero(100)};
  caller.failFrom = 40;
  caller.most = 10;
  mp4::CallbackSource source(Caller::Read, Caller::Size, &caller);
  unsigned char got[30];
  EXPECT_EQ(source.ReadAt(20, got, 30), 20u);
  EXPECT_EQ(source.Trouble().fault, mp4::SourceFault::kReadFailed);
  EXPECT_EQ(source.Trouble().offset, 40u);
  EXPECT_EQ(source.Trouble().error, -5);
}

TEST(CallbackSource, NothingBelowTheSizeIsAFailure) {
  Caller caller{CountingFromZero(100)};
  caller.failFrom = 0;
  caller.failure = 0;
  mp4::CallbackSource source(Caller::Read, Caller::Size, &caller);
  unsigned char got[1];
  EXPECT_EQ(source.ReadAt(99, got, 1), 0u);
  EXPECT_TRUE(source.Failed());
}

TEST(CallbackSource, MoreThanAskedForIsAFailure) {
  Caller caller{CountingFromZero(100)};
  caller.failFrom = 0;
  caller.failure = 11;
  mp4::CallbackSource source(Caller::Read, Caller::Size, &caller);
  unsigned char got[10];
  EXPECT_EQ(source.ReadAt(0, got, 10), 0u);
  EXPECT_TRUE(source.Failed());
}

TEST(CallbackSource, ASizeThatFailsIsTrouble) {
  Caller caller{CountingFromZero(100)};
  mp4::CallbackSource failing(Caller::Read, Caller::NoSize, &caller);
  EXPECT_EQ(failing.Size(), 0u);
  EXPECT_EQ(failing.Trouble().error, -7);
  EXPECT_TRUE(mp4::CallbackSource(nullptr, Caller::Size, &caller).Failed());
  EXPECT_TRUE(mp4::CallbackSource(Caller::Read, nullptr, &caller).Failed());
}
