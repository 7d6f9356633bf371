#include <gtest/gtest.h>

#include "io/mmStreamReader.h"
#include "tests/ReaderFixtures.h"

namespace {

/// A reader with nothing of its own but its bytes 1, 2, 3, ...
class Bare : public mmStreamReader {
 public:
  unsigned char GetByte() override { return ++last_; }
  unsigned int GetData(void*, unsigned int) override { return 0; }
  long long GetPos() override { return last_; }
  long long SetPos(long long) override { return 0; }
  long long GetSize() override { return 0; }
  long long Skip(long long) override { return 0; }
  bool IsEnd() override { return false; }

 private:
  unsigned char last_ = 0;
};

/// A reader whose 16-bit numbers are its own.
class Halves : public Bare {
 public:
  unsigned int GetLe16() override { return 0x1234; }
  unsigned int GetBe16() override { return 0x5678; }
};

}  // namespace

TEST(mmStreamReader, NumbersAreComposedOfSingleBytes) {
  Bare reader;
  ExpectComposedGetters(reader);
  EXPECT_EQ(reader.GetPos(), 2 + 2 + 3 + 3 + 4 + 4 + 8 + 8);
}

TEST(mmStreamReader, LargeNumbersAreComposedOfSmallerOnes) {
  Halves reader;
  EXPECT_EQ(reader.GetLe24(), 0x123401u);
  EXPECT_EQ(reader.GetBe24(), 0x025678u);
  EXPECT_EQ(reader.GetLe32(), 0x12341234u);
  EXPECT_EQ(reader.GetBe32(), 0x56785678u);
  EXPECT_EQ(reader.GetLe64(), 0x1234123412341234u);
  EXPECT_EQ(reader.GetBe64(), 0x5678567856785678u);
  EXPECT_EQ(reader.GetPos(), 2) << "only the odd bytes of the 24-bit numbers";
}

TEST(mmStreamReader, CarriesNoAccountByItself) { EXPECT_EQ(Bare().Scan(), nullptr); }
