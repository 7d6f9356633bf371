#include "inspect/CodecNames.h"

namespace mp4 {

namespace {

std::string Numbered(const char* what, unsigned number) {
  return std::string(what).append(" ").append(std::to_string(number));
}

}  // namespace

std::string AvcProfile(std::uint8_t profile, std::uint8_t constraints) {
  switch (profile) {
    case 44:
      return "CAVLC 4:4:4 Intra";
    case 66:
      return (constraints & 0x40) != 0 ? "Constrained Baseline" : "Baseline";
    case 77:
      return "Main";
    case 83:
      return "Scalable Baseline";
    case 86:
      return "Scalable High";
    case 88:
      return "Extended";
    case 100:
      return "High";
    case 110:
      return (constraints & 0x10) != 0 ? "High 10 Intra" : "High 10";
    case 118:
      return "Multiview High";
    case 122:
      return (constraints & 0x10) != 0 ? "High 4:2:2 Intra" : "High 4:2:2";
    case 128:
      return "Stereo High";
    case 244:
      return (constraints & 0x10) != 0 ? "High 4:4:4 Intra" : "High 4:4:4 Predictive";
    default:
      return Numbered("profile", profile);
  }
}

/// Level 1b shares its number with 1.1 in the older profiles.
std::string AvcLevel(std::uint8_t level, std::uint8_t constraints) {
  if (level == 9 || (level == 11 && (constraints & 0x10) != 0)) return "1b";
  const std::string whole = std::to_string(level / 10);
  return level % 10 == 0 ? whole : whole + "." + std::to_string(level % 10);
}

std::string HevcProfile(std::uint8_t profile) {
  switch (profile) {
    case 1:
      return "Main";
    case 2:
      return "Main 10";
    case 3:
      return "Main Still Picture";
    case 4:
      return "Range Extensions";
    case 5:
      return "High Throughput";
    case 6:
      return "Multiview Main";
    case 7:
      return "Scalable Main";
    case 8:
      return "3D Main";
    case 9:
      return "Screen-Extended Main";
    case 10:
      return "Scalable Range Extensions";
    case 11:
      return "High Throughput Screen-Extended Main";
    default:
      return Numbered("profile", profile);
  }
}

std::string Av1Profile(std::uint8_t profile) {
  switch (profile) {
    case 0:
      return "Main";
    case 1:
      return "High";
    case 2:
      return "Professional";
    default:
      return Numbered("profile", profile);
  }
}

std::string Av1Level(std::uint8_t index) {
  if (index == 31) return "maximum";
  return std::to_string(2 + index / 4) + "." + std::to_string(index % 4);
}

std::string Mpeg4VisualProfile(std::uint8_t indication) {
  const auto level = [&](const char* name) {
    return name + ("@L" + std::to_string(indication & 15));
  };
  if (indication == 8) return "Simple@L0";
  if (indication >= 1 && indication <= 6) return level("Simple");
  if (indication >= 0xF0 && indication <= 0xF7) return level("Advanced Simple");
  return Numbered("profile", indication);
}

std::string ObjectTypeName(std::uint8_t type) {
  switch (type) {
    case 0x01:
    case 0x02:
      return "MPEG-4 Systems";
    case 0x20:
      return "MPEG-4 Visual";
    case 0x21:
      return "H.264/AVC";
    case 0x23:
      return "H.265/HEVC";
    case 0x40:
      return "MPEG-4 Audio";
    case 0x60:
    case 0x61:
    case 0x62:
    case 0x63:
    case 0x64:
    case 0x65:
      return "MPEG-2 Video";
    case 0x66:
    case 0x67:
    case 0x68:
      return "MPEG-2 AAC";
    case 0x69:
      return "MPEG-2 Audio";
    case 0x6A:
      return "MPEG-1 Video";
    case 0x6B:
      return "MPEG-1 Audio";
    case 0x6C:
      return "JPEG";
    case 0x6D:
      return "PNG";
    case 0x6E:
      return "JPEG 2000";
    case 0xA0:
      return "EVRC";
    case 0xA3:
      return "VC-1";
    case 0xA5:
      return "AC-3";
    case 0xA6:
      return "E-AC-3";
    case 0xA9:
      return "DTS";
    case 0xAD:
      return "Opus";
    case 0xAE:
      return "AC-4";
    case 0xDD:
      return "Vorbis";
    case 0xE0:
      return "VobSub";
    case 0xE1:
      return "QCELP";
    default:
      return Numbered("object type", type);
  }
}

std::string AudioObjectName(unsigned type) {
  switch (type) {
    case 1:
      return "AAC Main";
    case 2:
      return "AAC LC";
    case 3:
      return "AAC SSR";
    case 4:
      return "AAC LTP";
    case 5:
      return "HE-AAC";
    case 6:
      return "AAC Scalable";
    case 17:
      return "ER AAC LC";
    case 20:
      return "ER AAC Scalable";
    case 22:
      return "ER BSAC";
    case 23:
      return "ER AAC LD";
    case 29:
      return "HE-AAC v2";
    case 32:
      return "MPEG Layer 1";
    case 33:
      return "MPEG Layer 2";
    case 34:
      return "MPEG Layer 3";
    case 36:
      return "ALS";
    case 37:
      return "SLS";
    case 39:
      return "ER AAC ELD";
    case 42:
      return "xHE-AAC";
    default:
      return Numbered("audio object type", type);
  }
}

const char* ChromaName(unsigned format) {
  static constexpr const char* kNames[] = {"4:0:0", "4:2:0", "4:2:2", "4:4:4"};
  return format < 4 ? kNames[format] : "unknown";
}

}  // namespace mp4
