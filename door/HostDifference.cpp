#include "door/HostDifference.h"

namespace mp4 {

std::string WhyHostDiffers(CachedSource* source, const Report& report, mp4judge_host_answer host) {
  (void)source;
  const bool agree =
      host == MP4JUDGE_HOST_PROTECTED
          ? report.verdict == ProtectionVerdict::kProtected
          : host == MP4JUDGE_HOST_CLEAR && report.verdict != ProtectionVerdict::kProtected;
  return agree ? std::string() : "not explained";
}

}  // namespace mp4
