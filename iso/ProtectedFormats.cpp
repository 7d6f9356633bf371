#include "iso/ProtectedFormats.h"

#include "io/FourCC.h"

namespace mp4 {

FormatKind KindOfFormat(std::uint32_t format) {
  switch (format) {
    case FourCC("encv"):
    case FourCC("enca"):
    case FourCC("enct"):
    case FourCC("encs"):
    case FourCC("encf"):
    case FourCC("encm"):
    case FourCC("enc3"):
    case FourCC("drms"):
    case FourCC("drmi"):
    case FourCC("drmt"):
    case FourCC("p608"):
      return FormatKind::kProtected;
    case FourCC("aavd"):
      return FormatKind::kAudible;
    case FourCC("paac"):
    case FourCC("pac3"):
    case FourCC("zavc"):  // what Apple calls codecs in encrypted transport streams
    case FourCC("zaac"):
    case FourCC("zac3"):
    case FourCC("zec3"):
    case FourCC("pm2t"):
    case FourCC("prtp"):
    case FourCC("oksd"):
      return FormatKind::kReserved;
    case FourCC("rsrp"):
      return FormatKind::kReceived;
    case FourCC("srtp"):
      return FormatKind::kSent;
    case FourCC("resv"):
    case FourCC("resa"):
    case FourCC("rest"):
    case FourCC("resu"):
    case FourCC("resm"):
    case FourCC("ress"):
    case FourCC("resf"):
    case FourCC("resp"):
    case FourCC("res3"):
      return FormatKind::kRestricted;
    case FourCC("icpv"):
      return FormatKind::kIncomplete;
    default:
      // "enc" and one more letter are reserved for encrypted media of further kinds.
      return (format & 0xFFFFFF) == (FourCC("enc ") & 0xFFFFFF) ? FormatKind::kReserved
                                                                : FormatKind::kOther;
  }
}

bool IsForProtectedMedia(FormatKind kind) {
  return kind == FormatKind::kProtected || kind == FormatKind::kAudible ||
         kind == FormatKind::kReserved;
}

}  // namespace mp4
