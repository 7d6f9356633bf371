#include <memory>
#include <utility>

#include "demux/Mp4Demux.h"
#include "demux/Verdict.h"
#include "io/Mp4StreamReader.h"
#include "mp4judge/mp4judge.h"

namespace {

mp4judge_host_answer Judge(const char* path) {
  auto file = std::make_unique<Mp4StreamReader>();
  if (!file->SetFileName(path)) return MP4JUDGE_HOST_UNREADABLE;
  Mp4Demux demux;
  if (!demux.InitForJudgement(std::move(file))) return MP4JUDGE_HOST_UNREADABLE;
  return mp4::HasProtectedTrack(demux.GetContext()) ? MP4JUDGE_HOST_PROTECTED : MP4JUDGE_HOST_CLEAR;
}

}  // namespace

mp4judge_host_answer mp4judge_host_judge(const char* path) {
  try {
    return Judge(path);
  } catch (...) {
    return MP4JUDGE_HOST_UNREADABLE;
  }
}
