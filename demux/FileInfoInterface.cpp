#include "demux/FileInfoInterface.h"

#include "demux/Verdict.h"

int JudgeMP4HaveDRM(const wchar_t* path) {
  return mp4::JudgeFile(path) == mp4::HostVerdict::kProtected ? 1 : 0;
}
