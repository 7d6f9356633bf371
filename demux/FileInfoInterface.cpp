#include "demux/FileInfoInterface.h"

#include "boxes/base/Mp4Context.h"
#include "demux/Mp4Demux.h"
#include "demux/Verdict.h"
#include "io/FourCC.h"

namespace {

/// Only audio and video count, and only this one format: a protected hint or text track does not
/// make a file protected, nor does any other scheme's format. Hosts decide by exactly this test.
bool IsProtected(const Mp4Context::TRACK& track) {
  const bool plays =
      track.handlerType == mp4::FourCC("soun") || track.handlerType == mp4::FourCC("vide");
  return plays && track.format == mp4::FourCC("drms");
}

}  // namespace

bool mp4::HasProtectedTrack(Mp4Context* context) {
  if (context == nullptr) return false;
  for (int i = 0; i < context->GetTrackCount(); ++i) {
    const Mp4Context::TRACK* track = context->GetTrackByIndex(i);
    if (track != nullptr && IsProtected(*track)) return true;
  }
  return false;
}

mp4::Verdict mp4::JudgeFile(const wchar_t* path) {
  Mp4Demux demux;
  if (!demux.InitForJudgement(path)) return Verdict::kUnreadable;
  return HasProtectedTrack(demux.GetContext()) ? Verdict::kProtected : Verdict::kClear;
}

int JudgeMP4HaveDRM(const wchar_t* path) {
  return mp4::JudgeFile(path) == mp4::Verdict::kProtected ? 1 : 0;
}
