#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "boxes/base/Mp4Context.h"

namespace {

template <class T>
bool IsAllZero(const T& record) {
  unsigned char zeros[sizeof(T)] = {};
  return std::memcmp(&record, zeros, sizeof zeros) == 0;
}

}  // namespace

TEST(Mp4Context, NewContextIsEmpty) {
  Mp4Context context;
  EXPECT_EQ(context.GetTimescale(), 1000);
  EXPECT_EQ(context.GetDuration(), 0);
  EXPECT_EQ(context.GetTrackCount(), 0);
  EXPECT_EQ(context.GetCurrentTrack(), nullptr);
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_UNKNOWN);
  EXPECT_EQ(context.majorBrand, 0u);
  EXPECT_EQ(context.currentTrack, -1);
  EXPECT_TRUE(IsAllZero(context.metadata));
}

TEST(Mp4Context, MetadataIsTheFirstMember) {
  static_assert(!std::is_polymorphic_v<Mp4Context>);
  static_assert(sizeof(Mp4Context::METADATA) == 6 * 260 * sizeof(wchar_t) + 2080);
  static_assert(offsetof(Mp4Context::METADATA, genre) == 5 * 260 * sizeof(wchar_t));
  Mp4Context context;
  EXPECT_EQ(static_cast<void*>(&context.metadata), static_cast<void*>(&context));
}

TEST(Mp4Context, AddedTrackIsZeroButForItsId) {
  Mp4Context context;
  const Mp4Context::TRACK* track = context.AddTrack(7);
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->trackId, 7u);
  EXPECT_EQ(track->handlerType, 0u);
  EXPECT_EQ(track->format, 0u);
  EXPECT_EQ(track->language, 0);
  EXPECT_EQ(track->syncTableState, 0);
  EXPECT_TRUE(IsAllZero(track->compressorName));
  EXPECT_EQ(track->timescale, 0);
  EXPECT_EQ(track->duration, 0);
  EXPECT_EQ(track->numSamples, 0);
  EXPECT_EQ(track->hasEditList, 0);
  EXPECT_EQ(track->movieTimescale, 0);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(track->extraData[i], nullptr);
    EXPECT_EQ(track->extraDataSize[i], 0u);
  }
  EXPECT_TRUE(track->timeToSampleTable.empty() && track->sampleSizeTable.empty());
  EXPECT_TRUE(track->chunkOffsetTable.empty() && track->sampleToChunkTable.empty());
  EXPECT_TRUE(track->editList.empty());
}

TEST(Mp4Context, AddingDoesNotMakeCurrent) {
  Mp4Context context;
  context.AddTrack(1);
  EXPECT_EQ(context.GetCurrentTrack(), nullptr);
}

TEST(Mp4Context, TracksKeepTheirOrder) {
  Mp4Context context;
  context.AddTrack(9);
  context.AddTrack(2);
  EXPECT_EQ(context.GetTrackCount(), 2);
  EXPECT_EQ(context.GetTrackID(0), 9);
  EXPECT_EQ(context.GetTrackID(1), 2);
  EXPECT_EQ(context.GetTrackByIndex(1), context.GetTrack(2));
}

TEST(Mp4Context, FirstRecordOfARepeatedIdIsTheOneFound) {
  Mp4Context context;
  Mp4Context::TRACK* first = context.AddTrack(5);
  Mp4Context::TRACK* second = context.AddTrack(5);
  EXPECT_NE(first, second);
  EXPECT_EQ(context.GetTrackCount(), 2);
  EXPECT_EQ(context.GetTrack(5), first);
  context.SetCurrentTrack(5);
  EXPECT_EQ(context.GetCurrentTrack(), first);
}

TEST(Mp4Context, UnknownIdLeavesTheCurrentTrack) {
  Mp4Context context;
  context.SetCurrentTrack(3);
  EXPECT_EQ(context.GetCurrentTrack(), nullptr);
  Mp4Context::TRACK* track = context.AddTrack(3);
  context.SetCurrentTrack(3);
  context.SetCurrentTrack(4);
  EXPECT_EQ(context.GetCurrentTrack(), track);
  EXPECT_EQ(context.GetTrack(4), nullptr);
}

TEST(Mp4Context, NegativeIdsAreIds) {
  Mp4Context context;
  Mp4Context::TRACK* track = context.AddTrack(-1);
  EXPECT_EQ(track->trackId, 0xFFFFFFFFu);
  EXPECT_EQ(context.GetTrack(-1), track);
  EXPECT_EQ(context.GetTrackID(0), -1);
}

TEST(Mp4Context, IndexOutOfRangeGivesNothing) {
  Mp4Context context;
  context.AddTrack(3);
  for (const int index : {-1, 1, 1000}) {
    EXPECT_EQ(context.GetTrackByIndex(index), nullptr);
    EXPECT_EQ(context.GetTrackID(index), 0);
  }
  context.currentTrack = 1;
  EXPECT_EQ(context.GetCurrentTrack(), nullptr);
}

TEST(Mp4Context, ClearDropsTracksAndTextsOnly) {
  Mp4Context context;
  context.AddTrack(3)->extraData[0] = std::make_unique<unsigned char[]>(16);
  context.SetCurrentTrack(3);
  context.SetMovMode();
  context.majorBrand = 77;
  context.SetTimescale(600);
  context.SetDuration(1234);
  context.metadata.name[0] = L'x';
  context.metadata.reserved[5] = 1;
  context.Clear();
  EXPECT_EQ(context.GetTrackCount(), 0);
  EXPECT_EQ(context.GetCurrentTrack(), nullptr);
  EXPECT_TRUE(IsAllZero(context.metadata));
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_MOV);
  EXPECT_EQ(context.majorBrand, 77u);
  EXPECT_EQ(context.GetTimescale(), 600);
  EXPECT_EQ(context.GetDuration(), 1234);
  EXPECT_EQ(context.currentTrack, 0);
}

TEST(Mp4Context, MovieModeIsSetUnconditionally) {
  Mp4Context context;
  context.SetMajorBrand(0x6D6F7369);
  context.SetMovMode();
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_MOV);
}

TEST(Mp4Context, MajorBrandStoresBrandAndMode) {
  Mp4Context context;
  EXPECT_TRUE(context.SetMajorBrand(0x20207471));
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_MOV);
  EXPECT_EQ(context.majorBrand, 0x20207471u);
  EXPECT_FALSE(context.SetMajorBrand(0x12345678));
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_UNKNOWN);
  EXPECT_EQ(context.majorBrand, 0x12345678u);
}

TEST(Mp4Context, BrandValuesAreThoseOfALittleEndianRead) {
  const std::pair<unsigned int, MP4_FILE_MODE> brands[] = {
      {0x3134706D, MP4_FILE_MODE_MP4}, {0x3234706D, MP4_FILE_MODE_MP4},
      {0x6D6F7369, MP4_FILE_MODE_MP4}, {0x20207471, MP4_FILE_MODE_MOV},
      {0x34706733, MP4_FILE_MODE_3GP}, {0x564E534D, MP4_FILE_MODE_PSP},
      {0x61326733, MP4_FILE_MODE_3G2}};
  for (const auto& [brand, mode] : brands) {
    Mp4Context context;
    EXPECT_TRUE(context.SetMajorBrand(brand));
    EXPECT_EQ(context.GetFileMode(), mode);
  }
}

TEST(Mp4Context, CompatibleBrandDecidesOnlyWhileTheModeIsUnknown) {
  Mp4Context context;
  EXPECT_FALSE(context.SetCompatibleBrand(0x12345678));
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_UNKNOWN);
  EXPECT_TRUE(context.SetCompatibleBrand(0x34706733));
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_3GP);
  EXPECT_TRUE(context.SetCompatibleBrand(0x6D6F7369));
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_3GP);
  EXPECT_TRUE(context.SetCompatibleBrand(0x12345678));
  EXPECT_EQ(context.majorBrand, 0u);
}

TEST(Mp4Context, MinorVersionIsNotKept) {
  Mp4Context context;
  context.SetMinorVersion(0x200);
  EXPECT_EQ(context.GetFileMode(), MP4_FILE_MODE_UNKNOWN);
  EXPECT_EQ(context.majorBrand, 0u);
}

TEST(Mp4Context, FileModesKeepTheirNumbers) {
  static_assert(sizeof(MP4_FILE_MODE) == 4);
  EXPECT_EQ(MP4_FILE_MODE_UNKNOWN, 0);
  EXPECT_EQ(MP4_FILE_MODE_MP4, 1);
  EXPECT_EQ(MP4_FILE_MODE_MOV, 2);
  EXPECT_EQ(MP4_FILE_MODE_3GP, 3);
  EXPECT_EQ(MP4_FILE_MODE_PSP, 4);
  EXPECT_EQ(MP4_FILE_MODE_3G2, 5);
}
