#include <gtest/gtest.h>

#include "door/HostCopy.h"
#include "io/CallbackSource.h"
#include "io/MemorySource.h"
#include "tests/SourceFixtures.h"
#include "tests/door/ReportFixtures.h"

using mp4::HostCopy;

namespace {

HostCopy CopyOf(const Bytes& bytes, std::uint64_t end = UINT64_MAX, std::uint64_t most = 1 << 20) {
  mp4::MemorySource memory(bytes.data(), bytes.size());
  mp4::CachedSource cache(&memory);
  return HostCopy::Of(&cache, end, most);
}

std::vector<unsigned char> AsVector(const Bytes& bytes) {
  return {bytes.data(), bytes.data() + bytes.size()};
}

}  // namespace

TEST(HostCopy, HoldsWhatTheHostReadsWhole) {
  const Bytes bytes = reports::ClearFile() + Box("moof", Bytes().Fill(30, 7));
  const HostCopy copy = CopyOf(bytes);
  EXPECT_TRUE(copy.whole);
  EXPECT_EQ(copy.bytes, AsVector(bytes));
}

TEST(HostCopy, CutsOtherBoxesToTheirHeaders) {
  const Bytes bytes = Box("mdat", Bytes().Fill(1000, 1)) + Box("moov", Bytes().Fill(4, 2));
  const HostCopy copy = CopyOf(bytes);
  EXPECT_EQ(
      copy.bytes,
      AsVector(Bytes().Be32(16).Text("mdat").Fill(8, 1).Append(Box("moov", Bytes().Fill(4, 2)))));
  EXPECT_EQ(copy.OffsetInSource(0), 0u);
  EXPECT_EQ(copy.OffsetInSource(15), 15u);
  EXPECT_EQ(copy.OffsetInSource(16), 1008u);
  EXPECT_EQ(copy.OffsetInSource(20), 1012u);
}

TEST(HostCopy, KeepsTheFormOfASize) {
  const Bytes wide = Bytes().Be32(1).Text("mdat").Be64(516).Fill(500);
  EXPECT_EQ(CopyOf(wide + Box("moov")).bytes,
            AsVector(Bytes().Be32(1).Text("mdat").Be64(16) + Box("moov")));
  const Bytes open = Bytes().Be32(0).Text("mdat").Fill(500);
  EXPECT_EQ(CopyOf(open).bytes, AsVector(Bytes().Be32(0).Text("mdat").Fill(8)));
}

TEST(HostCopy, ABoxThatWasCutStaysCut) {
  const Bytes cut = Bytes().Be32(5000).Text("mdat").Fill(100);
  EXPECT_EQ(CopyOf(cut).bytes, AsVector(Bytes().Be32(17).Text("mdat").Fill(8)));
}

TEST(HostCopy, KeepsTheBeginningOfWhatIsNoBox) {
  const Bytes bytes = Box("moov") + Bytes().Be32(3).Text("oddd").Fill(200, 9);
  const HostCopy copy = CopyOf(bytes);
  ASSERT_EQ(copy.bytes.size(), 8u + 64u);
  EXPECT_EQ(copy.bytes[8 + 3], 3);
}

TEST(HostCopy, EndsWhereItIsTold) {
  const Bytes bytes = Box("moov") + Box("moof") + Box("moof");
  EXPECT_EQ(CopyOf(bytes, 16).bytes, AsVector(Box("moov") + Box("moof")));
}

TEST(HostCopy, IsNotWholeBehindItsLimit) {
  const Bytes bytes = Box("moov", Bytes().Fill(92));
  EXPECT_TRUE(CopyOf(bytes, UINT64_MAX, 100).whole);
  EXPECT_FALSE(CopyOf(bytes, UINT64_MAX, 99).whole);
}

TEST(HostCopy, IsNotWholeWhenAReadFails) {
  Caller caller{Box("moov", Bytes().Fill(100))};
  caller.failFrom = 0;
  mp4::CallbackSource source(Caller::Read, Caller::Size, &caller);
  mp4::CachedSource cache(&source);
  EXPECT_FALSE(HostCopy::Of(&cache, UINT64_MAX, 1000).whole);
}

TEST(HostCopy, MayHoldEveryByte) {
  const Bytes bytes = Box("mdat", Bytes().Fill(90, 1)) + Bytes().Fill(100, 2);
  mp4::MemorySource memory(bytes.data(), bytes.size());
  mp4::CachedSource cache(&memory);
  const HostCopy copy = HostCopy::OfEveryByte(&cache, UINT64_MAX, 198);
  EXPECT_EQ(copy.bytes, AsVector(bytes));
  EXPECT_TRUE(copy.whole);
  EXPECT_EQ(copy.OffsetInSource(150), 150u);
  EXPECT_FALSE(HostCopy::OfEveryByte(&cache, UINT64_MAX, 197).whole);
  EXPECT_EQ(HostCopy::OfEveryByte(&cache, 100, 197).bytes.size(), 100u);
}
