#include "demux/Verdict.h"

#include "boxes/base/Mp4Context.h"
#include "demux/Mp4Demux.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

/// Only audio and video count, and only this one format: a protected hint or text track does not
/// make a file protected, nor does any other scheme's format. Hosts decide by exactly this test. In
/// ISO/IEC 14496-12 a "sinf" box in a sample entry of any track is what says that it is protected.
bool IsProtected(const Mp4Context::TRACK& track) {
  const bool plays = track.handlerType == FourCC("soun") || track.handlerType == FourCC("vide");
  return plays && track.format == FourCC("drms");
}

}  // namespace

bool HasProtectedTrack(Mp4Context* context) {
  if (context == nullptr) return false;
  for (int i = 0; i < context->GetTrackCount(); ++i) {
    const Mp4Context::TRACK* track = context->GetTrackByIndex(i);
    if (track != nullptr && IsProtected(*track)) return true;
  }
  return false;
}

HostVerdict JudgeFile(const wchar_t* path) {
  Mp4Demux demux;
  if (!demux.InitForJudgement(path)) return HostVerdict::kUnreadable;
  return HasProtectedTrack(demux.GetContext()) ? HostVerdict::kProtected : HostVerdict::kClear;
}

}  // namespace mp4
