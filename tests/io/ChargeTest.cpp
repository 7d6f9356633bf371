#include <gtest/gtest.h>

#include "io/AttachedScan.h"
#include "io/Charge.h"
#include "io/mmBufReader.h"

namespace {

constexpr std::int64_t kMiB = 1024 * 1024;

TEST(Charge, ReaderWithoutAnAccountIsChargedNothing) {
  mmBufReader reader;
  EXPECT_TRUE(mp4::Charge(&reader, INT64_MAX, INT64_MAX));
  EXPECT_TRUE(mp4::ChargeStep(&reader));
}

TEST(Charge, TakesBytesAndMemory) {
  mmBufReader reader;
  mp4::ScanControl scan(0);
  const mp4::AttachedScan attached(&reader, &scan);
  EXPECT_TRUE(mp4::Charge(&reader, 16 * kMiB, 64 * kMiB));
  EXPECT_FALSE(scan.TakeBytes(1));
  EXPECT_FALSE(scan.TakeMemory(1));
}

TEST(Charge, IsRefusedForEither) {
  mmBufReader reader;
  mp4::ScanControl bytes(0);
  const mp4::AttachedScan attached(&reader, &bytes);
  EXPECT_FALSE(mp4::Charge(&reader, 16 * kMiB + 1, 0));
  mp4::ScanControl memory(0);
  const mp4::AttachedScan again(&reader, &memory);
  EXPECT_FALSE(mp4::Charge(&reader, 0, 64 * kMiB + 1));
}

TEST(Charge, RefusedBytesLeaveTheMemory) {
  mmBufReader reader;
  mp4::ScanControl scan(0);
  const mp4::AttachedScan attached(&reader, &scan);
  EXPECT_FALSE(mp4::Charge(&reader, 16 * kMiB + 1, 64 * kMiB));
  EXPECT_TRUE(scan.TakeMemory(64 * kMiB));
}

TEST(Charge, StepCostsAHeader) {
  mmBufReader reader;
  mp4::ScanControl scan(0);
  const mp4::AttachedScan attached(&reader, &scan);
  for (int i = 0; i < 512 * 1024; ++i) ASSERT_TRUE(mp4::ChargeStep(&reader));
  EXPECT_FALSE(mp4::ChargeStep(&reader));
}

TEST(AttachedScan, DetachesAtItsEnd) {
  mmBufReader reader;
  mp4::ScanControl scan(0);
  {
    const mp4::AttachedScan attached(&reader, &scan);
    EXPECT_EQ(reader.Scan(), &scan);
  }
  EXPECT_EQ(reader.Scan(), nullptr);
}

TEST(AttachedScan, DetachesWhenSomethingIsThrown) {
  mmBufReader reader;
  mp4::ScanControl scan(0);
  try {
    const mp4::AttachedScan attached(&reader, &scan);
    throw 7;
  } catch (int) {
  }
  EXPECT_EQ(reader.Scan(), nullptr);
}

}  // namespace
