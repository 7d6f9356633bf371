#include "door/HostJudgement.h"

#include <memory>

#include "demux/Mp4Demux.h"
#include "demux/Verdict.h"
#include "io/FileSource.h"
#include "io/SourceReader.h"

mp4judge_host_answer mp4::HostAnswer(ByteSource* source) {
  Mp4Demux demux;
  if (!demux.InitForJudgement(std::make_unique<SourceReader>(source))) {
    return MP4JUDGE_HOST_UNREADABLE;
  }
  if (HasProtectedTrack(demux.GetContext())) return MP4JUDGE_HOST_PROTECTED;
  return source->Failed() ? MP4JUDGE_HOST_UNREADABLE : MP4JUDGE_HOST_CLEAR;
}

mp4judge_host_answer mp4judge_host_judge(const char* path) {
  try {
    const auto file = mp4::FileSource::Open(path, nullptr);
    return file != nullptr ? mp4::HostAnswer(file.get()) : MP4JUDGE_HOST_UNREADABLE;
  } catch (...) {
    return MP4JUDGE_HOST_UNREADABLE;
  }
}
