#include "door/HostJudgement.h"

#include <memory>
#include <utility>

#include "demux/Mp4Demux.h"
#include "demux/Verdict.h"
#include "io/FileSource.h"
#include "io/SourceReader.h"

mp4judge_host_answer mp4::HostAnswer(std::unique_ptr<mmStreamReader> reader) {
  Mp4Demux demux;
  if (!demux.InitForJudgement(std::move(reader))) return MP4JUDGE_HOST_UNREADABLE;
  return HasProtectedTrack(demux.GetContext()) ? MP4JUDGE_HOST_PROTECTED : MP4JUDGE_HOST_CLEAR;
}

mp4judge_host_answer mp4::HostAnswer(ByteSource* source) {
  const mp4judge_host_answer answer = HostAnswer(std::make_unique<SourceReader>(source));
  return answer == MP4JUDGE_HOST_CLEAR && source->Failed() ? MP4JUDGE_HOST_UNREADABLE : answer;
}

mp4judge_host_answer mp4judge_host_judge(const char* path) {
  try {
    const auto file = mp4::FileSource::Open(path, nullptr);
    return file != nullptr ? mp4::HostAnswer(file.get()) : MP4JUDGE_HOST_UNREADABLE;
  } catch (...) {
    return MP4JUDGE_HOST_UNREADABLE;
  }
}
