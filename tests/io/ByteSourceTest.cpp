#include <gtest/gtest.h>

#include <vector>

#include "io/ByteSource.h"

namespace {

using mp4::SourceFault;

/// Ten bytes 0 to 9 that notes what it is asked for.
class Ten : public mp4::ByteSource {
 public:
  Ten() { SetSize(10); }
  using ByteSource::ForgetTrouble;

  int calls = 0;

 private:
  std::size_t Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) override {
    ++calls;
    for (std::size_t i = 0; i < n; ++i) bytes[i] = static_cast<unsigned char>(offset + i);
    return n;
  }
};

std::vector<unsigned char> Read(Ten* source, std::uint64_t offset, std::size_t n) {
  std::vector<unsigned char> bytes(n);
  bytes.resize(source->ReadAt(offset, bytes.data(), n));
  return bytes;
}

using Bytes = std::vector<unsigned char>;

}  // namespace

TEST(ByteSource, DeliversUpToItsEnd) {
  Ten source;
  EXPECT_EQ(source.Size(), 10u);
  EXPECT_EQ(Read(&source, 2, 3), (Bytes{2, 3, 4}));
  EXPECT_EQ(Read(&source, 7, 3), (Bytes{7, 8, 9}));
  EXPECT_EQ(Read(&source, 7, 4), (Bytes{7, 8, 9}));
  EXPECT_EQ(Read(&source, 9, 100), (Bytes{9}));
}

TEST(ByteSource, AsksForNothingThatIsNotThere) {
  Ten source;
  EXPECT_EQ(Read(&source, 10, 1), Bytes{});
  EXPECT_EQ(Read(&source, ~std::uint64_t{0}, 5), Bytes{});
  EXPECT_EQ(Read(&source, 3, 0), Bytes{});
  EXPECT_EQ(source.ReadAt(0, nullptr, 5), 0u);
  EXPECT_EQ(source.calls, 0);
  EXPECT_FALSE(source.Failed()) << "an end is no fault";
}

TEST(ByteSource, KeepsItsFirstFault) {
  Ten source;
  EXPECT_EQ(source.Trouble().fault, SourceFault::kNone);
  source.Report({SourceFault::kReadFailed, 5, 2, 7});
  source.Report({SourceFault::kNoMemory, 1, 1, 1});
  EXPECT_TRUE(source.Failed());
  EXPECT_EQ(source.Trouble().fault, SourceFault::kReadFailed);
  EXPECT_EQ(source.Trouble().offset, 5u);
  EXPECT_EQ(source.Trouble().size, 2u);
  EXPECT_EQ(source.Trouble().error, 7);
  EXPECT_EQ(Read(&source, 1, 1), Bytes{1}) << "a later read may succeed";
  EXPECT_TRUE(source.Failed());
  source.ForgetTrouble();
  EXPECT_FALSE(source.Failed());
}

TEST(ByteSource, HasNothingInMemoryAndReadsQuicklyByItself) {
  Ten source;
  EXPECT_EQ(source.InMemory(0, 1), nullptr);
  EXPECT_EQ(source.Pace(), mp4::ReadPace::kQuick);
}
