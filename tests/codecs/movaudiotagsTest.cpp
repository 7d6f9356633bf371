#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

#include "codecs/movaudiotags.h"
#include "io/FourCC.h"

namespace {

struct Expected {
  Expected(const char (&text)[5], int id) : tag(mp4::FourCC(text)), id(id) {}
  Expected(unsigned tag, int id) : tag(tag), id(id) {}
  unsigned tag;
  int id;
};

void ExpectTable(const AVCodecTag* table, const std::vector<Expected>& rows) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].tag, table[i].tag) << "row " << i + 1;
    EXPECT_EQ(rows[i].id, table[i].id) << "row " << i + 1;
  }
  EXPECT_EQ(0, table[rows.size()].id);
  EXPECT_EQ(0U, table[rows.size()].tag);
}

}  // namespace

TEST(movaudiotags, RowsAreASigned32BitIdAndAnUnsigned32BitTag) {
  static_assert(std::is_same_v<std::underlying_type_t<CodecID>, int>);
  static_assert(std::is_convertible_v<CodecID, int>);
  static_assert(sizeof(AVCodecTag) == 8);
  const AVCodecTag row{static_cast<CodecID>(-1), 0xFFFFFFFF};
  EXPECT_LT(row.id, 0);
  EXPECT_GT(row.tag, 0U);
}

TEST(movaudiotags, ListsAudioFormats) {
  const std::vector<Expected> rows = {
      {"in32", 50004}, {"in32", 10002}, {"in24", 50005}, {"in24", 10001},  {"twos", 50000},
      {"sowt", 10000}, {"lpcm", 10000}, {"sowt", 31},    {"raw ", 32},     {"NONE", 32},
      {"ulaw", 33},    {"alaw", 34},    {"ima4", 35},    {0x0200736D, 37}, {"MAC3", 27},
      {"MAC6", 28},    {".mp3", 5},     {0x6D730055, 5}, {0x5500736D, 5},  {"mp4a", 91},
      {"samr", 59},    {"sawb", 50006}, {0x0020736D, 7}, {"ac-3", 7},      {"alac", 50007},
      {"QDM2", 94},    {"vdva", 50045}, {"dvca", 50045}};
  ASSERT_EQ(28U, rows.size());
  ExpectTable(codec_movaudio_tags, rows);
  EXPECT_EQ(0x6134706DU, codec_movaudio_tags[19].tag);
}

TEST(movaudiotags, ListsVisualFormats) {
  const std::vector<Expected> rows = {
      {"raw ", 2000},  {"AVUI", 2000},  {"2vuy", 2000},  {"jpeg", 8},     {"mjpa", 8},
      {"AVDJ", 8},     {"dmb1", 8},     {"mjpb", 9},     {"SVQ1", 19},    {"svq1", 19},
      {"svqi", 19},    {"SVQ3", 39},    {"mp4v", 10},    {"DIVX", 10},    {"XVID", 10},
      {"3IV2", 10},    {"h263", 2},     {"s263", 2},     {"dvcp", 20},    {"dvc ", 20},
      {"dvpp", 20},    {"dv5p", 20},    {"dv5n", 20},    {"AVdv", 20},    {"VP31", 48},
      {"rpza", 64},    {"cvid", 47},    {"8BPS", 60},    {"smc ", 50003}, {"rle ", 63},
      {"WRLE", 52},    {"qdrw", 50009}, {"avc1", 38},    {"mpeg", 1},     {"hdv1", 49},
      {"hdv2", 49},    {"hdv3", 49},    {"mx5n", 49},    {"mx5p", 49},    {"mx3n", 49},
      {"mx3p", 49},    {"xdv2", 49},    {"AVmp", 49},    {"tga ", 50033}, {"tiff", 50041},
      {"gif ", 50042}, {"png ", 81},    {"vc-1", 50015}, {"AVdn", 50043}, {"sgi ", 50044}};
  ASSERT_EQ(50U, rows.size());
  ExpectTable(codec_movvideo_tags, rows);
}

TEST(movaudiotags, ListsWaveFormats) {
  const std::vector<Expected> rows = {
      {0x0050, 4},     {0x0055, 5},     {0x2000, 7},     {0x2001, 90}, {0x0001, 10000},
      {0x0001, 32},    {0x0001, 10001}, {0x0001, 10002}, {0x0006, 34}, {0x0007, 33},
      {0x0002, 37},    {0x0011, 36},    {0x0020, 89},    {0x0045, 67}, {0x0061, 69},
      {0x0062, 68},    {0x0160, 22},    {0x0161, 23},    {0x706D, 91}, {0x00FF, 91},
      {0x566F, 6},     {0x2048, 10003}, {0x2048, 10004}, {0x0200, 80}, {0x5346, 85},
      {0x0022, 99},    {0xF1AC, 76},    {0x0401, 50034}, {0x0031, 79}, {0x0270, 50035},
      {0x0075, 50036}, {"RAWA", 10000}, {"LAME", 5},     {"MP3 ", 5}};
  ASSERT_EQ(34U, rows.size());
  ExpectTable(codec_wav_tags, rows);
}

TEST(movaudiotags, ListsObjectTypes) {
  const std::vector<Expected> rows = {
      {0x20, 10},    {0x21, 38},    {0x40, 91},    {0x60, 49},    {0x61, 49}, {0x62, 49},
      {0x63, 49},    {0x64, 49},    {0x65, 49},    {0x66, 91},    {0x67, 91}, {0x68, 91},
      {0x69, 5},     {0x6A, 1},     {0x6B, 5},     {0x6C, 8},     {0x6D, 81}, {0x6E, 50031},
      {0xA3, 50015}, {0xDD, 6},     {0xE0, 10000}, {0xE1, 50040}, {0xE2, 7},  {0xE3, 34},
      {0xE4, 33},    {0xE6, 50000}, {0xF2, 2},     {0xF3, 62}};
  ASSERT_EQ(28U, rows.size());
  ExpectTable(ff_mp4_obj_type, rows);
}

TEST(movaudiotags, FindsTheFirstRowOfARepeatedTag) {
  EXPECT_EQ(50004, codec_get_id(codec_movaudio_tags, mp4::FourCC("in32")));
  EXPECT_EQ(50005, codec_get_id(codec_movaudio_tags, mp4::FourCC("in24")));
  EXPECT_EQ(10000, codec_get_id(codec_movaudio_tags, mp4::FourCC("sowt")));
  EXPECT_EQ(10000, codec_get_id(codec_wav_tags, 1));
  EXPECT_EQ(10003, codec_get_id(codec_wav_tags, 0x2048));
}

TEST(movaudiotags, FoldsCaseWhenNoRowIsExact) {
  EXPECT_EQ(91, codec_get_id(codec_movaudio_tags, mp4::FourCC("MP4A")));
  EXPECT_EQ(10, codec_get_id(codec_movvideo_tags, mp4::FourCC("Mp4V")));
  EXPECT_EQ(19, codec_get_id(codec_movvideo_tags, mp4::FourCC("svq1")));
  EXPECT_EQ(39, codec_get_id(codec_movvideo_tags, mp4::FourCC("SvQ3")));
}

TEST(movaudiotags, PrefersAnExactRowFurtherDown) {
  const AVCodecTag table[] = {{static_cast<CodecID>(7), mp4::FourCC("ABCD")},
                              {static_cast<CodecID>(8), mp4::FourCC("abcd")},
                              {static_cast<CodecID>(0), 0}};
  EXPECT_EQ(8, codec_get_id(table, mp4::FourCC("abcd")));
  EXPECT_EQ(7, codec_get_id(table, mp4::FourCC("ABCD")));
  EXPECT_EQ(7, codec_get_id(table, mp4::FourCC("aBcD")));
}

TEST(movaudiotags, FoldsAsciiLettersOnly) {
  const AVCodecTag table[] = {{static_cast<CodecID>(7), 0xE07A617BU}, {static_cast<CodecID>(0), 0}};
  EXPECT_EQ(7, codec_get_id(table, 0xE05A417BU));  // 'Z' and 'A'
  EXPECT_EQ(0, codec_get_id(table, 0xC07A617BU));  // 0xE0 is a letter in some locales only
  EXPECT_EQ(0, codec_get_id(table, 0xE07A615BU));  // '{' is no letter
  EXPECT_EQ(0, codec_get_id(table, 0xE07A605BU));
}

TEST(movaudiotags, MatchesTagsThatAreNoText) {
  EXPECT_EQ(37, codec_get_id(codec_movaudio_tags, 0x0200736D));
  EXPECT_EQ(5, codec_get_id(codec_movaudio_tags, 0x6D730055));
  EXPECT_EQ(5, codec_get_id(codec_movaudio_tags, 0x5500736D));
  EXPECT_EQ(7, codec_get_id(codec_movaudio_tags, 0x0020736D));
}

TEST(movaudiotags, KnowsObjectTypes) {
  EXPECT_EQ(91, codec_get_id(ff_mp4_obj_type, 0x40));
  EXPECT_EQ(5, codec_get_id(ff_mp4_obj_type, 0x69));
  EXPECT_EQ(0, codec_get_id(ff_mp4_obj_type, 0xFF));
}

TEST(movaudiotags, FindsNothingForUnknownTags) {
  EXPECT_EQ(0, codec_get_id(codec_movaudio_tags, mp4::FourCC("drms")));
  EXPECT_EQ(0, codec_get_id(codec_movaudio_tags, 0));
}

TEST(movaudiotags, EndsATableByItsIdAlone) {
  const AVCodecTag empty[] = {{static_cast<CodecID>(0), 0x1234}};
  EXPECT_EQ(0, codec_get_id(empty, 0x1234));
  EXPECT_EQ(0U, codec_get_tag(empty, 0));
  const AVCodecTag zeroTag[] = {{static_cast<CodecID>(3), 0}, {static_cast<CodecID>(0), 9}};
  EXPECT_EQ(3, codec_get_id(zeroTag, 0));
}

TEST(movaudiotags, FindsTagsById) {
  EXPECT_EQ(1U, codec_get_tag(codec_wav_tags, 10000));
  EXPECT_EQ(1U, codec_get_tag(codec_wav_tags, 10002));
  EXPECT_EQ(0x2048U, codec_get_tag(codec_wav_tags, 10004));
  EXPECT_EQ(mp4::FourCC("sowt"), codec_get_tag(codec_movaudio_tags, 31));
  EXPECT_EQ(mp4::FourCC("in32"), codec_get_tag(codec_movaudio_tags, 10002));
  EXPECT_EQ(mp4::FourCC("in24"), codec_get_tag(codec_movaudio_tags, 10001));
  EXPECT_EQ(0U, codec_get_tag(codec_movaudio_tags, 12345));
}

TEST(movaudiotags, FindsNoTagForIdZero) {
  for (const AVCodecTag* table :
       {codec_movaudio_tags, codec_movvideo_tags, codec_wav_tags, ff_mp4_obj_type}) {
    EXPECT_EQ(0U, codec_get_tag(table, 0));
  }
}

TEST(movaudiotags, GivesNothingForANullTable) {
  EXPECT_EQ(0, codec_get_id(nullptr, 1));
  EXPECT_EQ(0U, codec_get_tag(nullptr, 1));
}

TEST(movaudiotags, KnowsTheBitsOfPcmLikeCodecs) {
  const struct {
    int id;
    int bits;
  } known[] = {{21, 4},     {29, 16},    {30, 16},    {31, 8},     {32, 8},     {33, 8},
               {34, 8},     {53, 2},     {56, 3},     {80, 4},     {10000, 16}, {10001, 24},
               {10002, 32}, {50000, 16}, {50004, 32}, {50005, 24}, {50046, 24}, {50047, 24},
               {50048, 24}, {50049, 32}, {50050, 32}};
  for (const auto& row : known) {
    EXPECT_EQ(row.bits, av_get_bits_per_sample(static_cast<CodecID>(row.id))) << row.id;
  }
}

TEST(movaudiotags, KnowsNoBitsOfOtherCodecs) {
  for (const int id : {0,    20,    22,    28,    35,    52,    54,    55,    57,    79, 81, 91,
                       9999, 10003, 10004, 49999, 50001, 50003, 50006, 50045, 50051, -1, -31}) {
    EXPECT_EQ(0, av_get_bits_per_sample(static_cast<CodecID>(id))) << id;
  }
}

TEST(movaudiotags, FoldsEachByteByItself) {
  const AVCodecTag table[] = {{static_cast<CodecID>(7), mp4::FourCC("abcd")},
                              {static_cast<CodecID>(0), 0}};
  EXPECT_EQ(7, codec_get_id(table, mp4::FourCC("ABCD")));
  for (unsigned int bit = 0; bit < 32; ++bit) {
    const bool isCase = bit % 8 == 5;
    EXPECT_EQ(isCase ? 7 : 0, codec_get_id(table, mp4::FourCC("abcd") ^ 1U << bit)) << bit;
  }
  // No byte covers a bit of its neighbour.
  const AVCodecTag full[] = {{static_cast<CodecID>(7), 0xFFFFFFFF}, {static_cast<CodecID>(0), 0}};
  for (unsigned int bit = 0; bit < 32; ++bit) {
    EXPECT_EQ(0, codec_get_id(full, 0xFFFFFFFF ^ 1U << bit)) << bit;
  }
}
