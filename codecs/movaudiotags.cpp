#include "codecs/movaudiotags.h"

#include "io/FourCC.h"

namespace {

constexpr AVCodecTag Row(const char (&text)[5], int id) {
  return {static_cast<CodecID>(id), mp4::FourCC(text)};
}

constexpr AVCodecTag Row(unsigned int tag, int id) { return {static_cast<CodecID>(id), tag}; }

constexpr AVCodecTag kEnd = Row(0U, 0);

/// Folds 'a' to 'z' only, whatever the host's locale says.
constexpr unsigned int UpperByte(unsigned int byte) {
  return byte >= 'a' && byte <= 'z' ? byte - ('a' - 'A') : byte;
}

constexpr unsigned int UpperTag(unsigned int tag) {
  return UpperByte(tag & 0xFF) | UpperByte(tag >> 8 & 0xFF) << 8 |
         UpperByte(tag >> 16 & 0xFF) << 16 | UpperByte(tag >> 24) << 24;
}

}  // namespace

// Repeated tags are intended: "in32", "in24" and "sowt" look up their first row, and the later rows
// serve lookups by id.
const AVCodecTag codec_movaudio_tags[] = {
    Row("in32", 50004), Row("in32", 10002),
    Row("in24", 50005), Row("in24", 10001),
    Row("twos", 50000), Row("sowt", 10000),
    Row("lpcm", 10000), Row("sowt", 31),
    Row("raw ", 32),    Row("NONE", 32),
    Row("ulaw", 33),    Row("alaw", 34),
    Row("ima4", 35),    Row(0x0200736D, 37),  // "ms" and WAVE format 2
    Row("MAC3", 27),    Row("MAC6", 28),
    Row(".mp3", 5),     Row(0x6D730055, 5),
    Row(0x5500736D, 5),  // "ms" and WAVE format 0x55
    Row("mp4a", 91),    Row("samr", 59),
    Row("sawb", 50006), Row(0x0020736D, 7),
    Row("ac-3", 7),     Row("alac", 50007),
    Row("QDM2", 94),    Row("vdva", 50045),
    Row("dvca", 50045), kEnd,
};

const AVCodecTag codec_movvideo_tags[] = {
    Row("raw ", 2000),  Row("AVUI", 2000),  Row("2vuy", 2000),
    Row("jpeg", 8),     Row("mjpa", 8),     Row("AVDJ", 8),
    Row("dmb1", 8),     Row("mjpb", 9),     Row("SVQ1", 19),
    Row("svq1", 19),    Row("svqi", 19),    Row("SVQ3", 39),
    Row("mp4v", 10),    Row("DIVX", 10),    Row("XVID", 10),
    Row("3IV2", 10),    Row("h263", 2),     Row("s263", 2),
    Row("dvcp", 20),    Row("dvc ", 20),    Row("dvpp", 20),
    Row("dv5p", 20),    Row("dv5n", 20),    Row("AVdv", 20),
    Row("VP31", 48),    Row("rpza", 64),    Row("cvid", 47),
    Row("8BPS", 60),    Row("smc ", 50003), Row("rle ", 63),
    Row("WRLE", 52),    Row("qdrw", 50009), Row("avc1", 38),
    Row("mpeg", 1),     Row("hdv1", 49),    Row("hdv2", 49),
    Row("hdv3", 49),    Row("mx5n", 49),    Row("mx5p", 49),
    Row("mx3n", 49),    Row("mx3p", 49),    Row("xdv2", 49),
    Row("AVmp", 49),    Row("tga ", 50033), Row("tiff", 50041),
    Row("gif ", 50042), Row("png ", 81),    Row("vc-1", 50015),
    Row("AVdn", 50043), Row("sgi ", 50044), kEnd,
};

const AVCodecTag codec_wav_tags[] = {
    Row(0x0050, 4),     Row(0x0055, 5),     Row(0x2000, 7),     Row(0x2001, 90), Row(0x0001, 10000),
    Row(0x0001, 32),    Row(0x0001, 10001), Row(0x0001, 10002), Row(0x0006, 34), Row(0x0007, 33),
    Row(0x0002, 37),    Row(0x0011, 36),    Row(0x0020, 89),    Row(0x0045, 67), Row(0x0061, 69),
    Row(0x0062, 68),    Row(0x0160, 22),    Row(0x0161, 23),    Row(0x706D, 91), Row(0x00FF, 91),
    Row(0x566F, 6),     Row(0x2048, 10003), Row(0x2048, 10004), Row(0x0200, 80), Row(0x5346, 85),
    Row(0x0022, 99),    Row(0xF1AC, 76),    Row(0x0401, 50034), Row(0x0031, 79), Row(0x0270, 50035),
    Row(0x0075, 50036), Row("RAWA", 10000), Row("LAME", 5),     Row("MP3 ", 5),  kEnd,
};

// 0xE0 to 0xF3 are private object types, assigned by the host.
const AVCodecTag ff_mp4_obj_type[] = {
    Row(0x20, 10),
    Row(0x21, 38),
    Row(0x40, 91),
    Row(0x60, 49),
    Row(0x61, 49),
    Row(0x62, 49),
    Row(0x63, 49),
    Row(0x64, 49),
    Row(0x65, 49),
    Row(0x66, 91),
    Row(0x67, 91),
    Row(0x68, 91),
    Row(0x69, 5),
    Row(0x6A, 1),
    Row(0x6B, 5),
    Row(0x6C, 8),
    Row(0x6D, 81),
    Row(0x6E, 50031),
    Row(0xA3, 50015),
    Row(0xDD, 6),
    Row(0xE0, 10000),
    Row(0xE1, 50040),
    Row(0xE2, 7),
    Row(0xE3, 34),
    Row(0xE4, 33),
    Row(0xE6, 50000),
    Row(0xF2, 2),
    Row(0xF3, 62),
    kEnd,
};

CodecID codec_get_id(const AVCodecTag* table, unsigned int tag) {
  if (table == nullptr) return CodecID{0};
  for (const AVCodecTag* row = table; row->id != 0; ++row) {
    if (row->tag == tag) return row->id;
  }
  // Only now: an exact row further down wins over a row that matches by case folding.
  const unsigned int upper = UpperTag(tag);
  for (const AVCodecTag* row = table; row->id != 0; ++row) {
    if (UpperTag(row->tag) == upper) return row->id;
  }
  return CodecID{0};
}

unsigned int codec_get_tag(const AVCodecTag* table, int id) {
  if (table == nullptr) return 0;
  for (const AVCodecTag* row = table; row->id != 0; ++row) {
    if (row->id == id) return row->tag;
  }
  return 0;
}

int av_get_bits_per_sample(CodecID id) {
  switch (static_cast<int>(id)) {
    case 53:
      return 2;
    case 56:
      return 3;
    case 21:
    case 80:
      return 4;
    case 31:
    case 32:
    case 33:
    case 34:
      return 8;
    case 29:
    case 30:
    case 10000:
    case 50000:
      return 16;
    case 10001:
    case 50005:
    case 50046:
    case 50047:
    case 50048:
      return 24;
    case 10002:
    case 50004:
    case 50049:
    case 50050:
      return 32;
    default:
      return 0;
  }
}
