#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "boxes/base/Mp4Context.h"
#include "boxes/movie/BoxFTYP.h"
#include "io/Mp4StreamReader.h"
#include "tests/Bytes.h"
#include "tests/Fixtures.h"

namespace {

Bytes Payload(const char* major, std::initializer_list<const char*> compatible) {
  Bytes payload = Bytes().Text(major).Be32(0x200);
  for (const char* brand : compatible) payload.Text(brand);
  return payload;
}

/// Reads the payload from memory and says how far the reader came.
long long Read(const Bytes& payload, Mp4Context* context) {
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_TRUE(BoxFTYP().ReadData(&reader, static_cast<long long>(payload.size()), context));
  return reader.GetPos();
}

MP4_FILE_MODE ModeOf(const Bytes& payload) {
  Mp4Context context;
  EXPECT_EQ(Read(payload, &context), static_cast<long long>(payload.size()));
  return context.GetFileMode();
}

/// Remembers how far it was read, apart from skips.
class ReadTracker : public mmBufReader {
 public:
  explicit ReadTracker(const Bytes& bytes) : mmBufReader(bytes.data(), bytes.size()) {}
  unsigned char GetByte() override {
    lastRead = pos;
    return mmBufReader::GetByte();
  }
  int lastRead = -1;
};

}  // namespace

TEST(BoxFTYP, MajorBrandsDecideTheMode) {
  const std::pair<const char*, MP4_FILE_MODE> brands[] = {
      {"mp41", MP4_FILE_MODE_MP4}, {"mp42", MP4_FILE_MODE_MP4}, {"isom", MP4_FILE_MODE_MP4},
      {"qt  ", MP4_FILE_MODE_MOV}, {"3gp4", MP4_FILE_MODE_3GP}, {"MSNV", MP4_FILE_MODE_PSP},
      {"3g2a", MP4_FILE_MODE_3G2}};
  for (const auto& [brand, mode] : brands) {
    EXPECT_EQ(ModeOf(Payload(brand, {"zzzz"})), mode) << brand;
    EXPECT_EQ(ModeOf(Payload("zzzz", {brand})), mode) << brand;
  }
}

TEST(BoxFTYP, BrandsAreComparedExactly) {
  for (const char* brand : {"QT  ", "Isom", "MP42", "msnv", "3gp5", "3g2b", "iso2"}) {
    EXPECT_EQ(ModeOf(Payload(brand, {brand})), MP4_FILE_MODE_UNKNOWN) << brand;
  }
}

TEST(BoxFTYP, MajorBrandIsKeptAsRead) {
  Mp4Context context;
  Read(Payload("M4A ", {"mp42"}), &context);
  EXPECT_EQ(context.majorBrand, 0x2041344Du);
}

TEST(BoxFTYP, FirstKnownCompatibleBrandDecidesAndLaterOnesAreNotRead) {
  const Bytes payload = Payload("dash", {"iso6", "mp42", "isom"});
  Mp4Context context;
  ReadTracker reader(payload);
  ASSERT_TRUE(BoxFTYP().ReadData(&reader, 20, &context));
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_MP4);
  EXPECT_EQ(reader.lastRead, 15);
  EXPECT_EQ(reader.GetPos(), 20);
}

TEST(BoxFTYP, KnownMajorBrandLeavesCompatibleBrandsUnread) {
  const Bytes payload = Payload("qt  ", {"isom", "mp42"});
  Mp4Context context;
  ReadTracker reader(payload);
  ASSERT_TRUE(BoxFTYP().ReadData(&reader, 16, &context));
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_MOV);
  EXPECT_EQ(reader.lastRead, 7);
  EXPECT_EQ(reader.GetPos(), 16);
}

TEST(BoxFTYP, LaterThirdGenerationBrandCountsThroughItsCompatibleBrands) {
  EXPECT_EQ(ModeOf(Payload("3gp6", {"isom", "3gp4"})), MP4_FILE_MODE_MP4);
}

TEST(BoxFTYP, MajorBrandOverwritesAnEarlierMode) {
  Mp4Context context;
  context.SetMovMode();
  Read(Payload("zzzz", {"yyyy"}), &context);
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_UNKNOWN);
}

TEST(BoxFTYP, UnknownBrandsSucceedWithUnknownMode) {
  EXPECT_EQ(ModeOf(Payload("zzzz", {"yyyy", "xxxx"})), MP4_FILE_MODE_UNKNOWN);
}

TEST(BoxFTYP, ElevenBytesFailTwelveSucceed) {
  const Bytes payload = Payload("isom", {"isom"});
  Mp4Context context;
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_FALSE(BoxFTYP().ReadData(&reader, 11, &context));
  EXPECT_EQ(reader.GetPos(), 0);
  EXPECT_TRUE(BoxFTYP().ReadData(&reader, 12, &context));
}

TEST(BoxFTYP, NullReaderOrContextFails) {
  const Bytes payload = Payload("isom", {"isom"});
  Mp4Context context;
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_FALSE(BoxFTYP().ReadData(nullptr, 12, &context));
  EXPECT_FALSE(BoxFTYP().ReadData(&reader, 12, nullptr));
}

TEST(BoxFTYP, BrandCutShortByTheBoxIsReadWholeAndSteppedBackOver) {
  // 14 bytes of payload: the second brand lies across its end and still decides.
  const Bytes payload = Payload("zzzz", {"yyyy", "mp41"});
  Mp4Context context;
  mmBufReader reader(payload.data(), payload.size());
  ASSERT_TRUE(BoxFTYP().ReadData(&reader, 14, &context));
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_MP4);
  EXPECT_EQ(reader.GetPos(), 14);
}

TEST(BoxFTYP, BrandsBehindTheEndOfMemoryAdvance) {
  const Bytes payload = Payload("zzzz", {"yyyy"});
  Mp4Context context;
  mmBufReader reader(payload.data(), payload.size());
  ASSERT_TRUE(BoxFTYP().ReadData(&reader, 1000000002, &context));
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_UNKNOWN);
  EXPECT_EQ(reader.GetPos(), 1000000002);
}

TEST(BoxFTYP, BrandsBehindTheEndOfAFileStayAtItsEnd) {
  // 12 bytes exist of 22: the brands count up to 24, then 2 are stepped back over.
  const TempFile file(Payload("zzzz", {"yyyy"}));
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  Mp4Context context;
  ASSERT_TRUE(BoxFTYP().ReadData(&reader, 22, &context));
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_UNKNOWN);
  EXPECT_EQ(reader.GetPos(), 10);
}

TEST(BoxFTYP, LargestSizeNeitherOverflowsNorRunsOn) {
  const Bytes payload = Payload("zzzz", {"yyyy"});
  Mp4Context context;
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_TRUE(BoxFTYP().ReadData(&reader, INT64_MAX, &context));
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_UNKNOWN);
}
