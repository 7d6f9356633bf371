// A host in C++17: both judgements, and the classes that hosts drive.
#include <mp4judge/host/codecs/movaudiotags.h>
#include <mp4judge/host/demux/FileInfoInterface.h>
#include <mp4judge/host/demux/Mp4Demux.h>
#include <mp4judge/host/demux/Mp4FileMode.h>
#include <mp4judge/host/io/mmBufReader.h>
#include <mp4judge/mp4judge.h>

#include <cstdio>
#include <string>

static_assert(__cplusplus < 202002L, "the headers must do with C++17");

/// A reader of the host's own: everything is composed of its GetByte.
class Counter : public mmBufReader {
 public:
  using mmBufReader::mmBufReader;
  unsigned char GetByte() override {
    ++bytes;
    return mmBufReader::GetByte();
  }
  int bytes = 0;
};

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string clear = argv[1];
  const std::string guarded = argv[2];
  const std::wstring clearPath(clear.begin(), clear.end());
  const std::wstring guardedPath(guarded.begin(), guarded.end());

  if (mp4judge_host_judge(clear.c_str()) != MP4JUDGE_HOST_CLEAR) return 3;
  if (mp4judge_host_judge(guarded.c_str()) != MP4JUDGE_HOST_PROTECTED) return 4;
  if (JudgeMP4HaveDRM(clearPath.c_str()) != 0) return 5;
  if (JudgeMP4HaveDRM(guardedPath.c_str()) != 1) return 6;

  Mp4Demux demux;
  if (!demux.Init(clearPath.c_str()) || !demux.ReadyToDemux()) return 7;
  if (demux.GetContext()->GetTrackCount() != 1) return 8;
  BoxBase::SAMPLE sample{};
  if (!demux.movieBox->GetNextSampleInfo(&sample) || sample.trackId == 0) return 9;

  const unsigned char number[4] = {0, 0, 1, 2};
  Counter reader(number, sizeof number);
  if (reader.GetBe32() != 0x102 || reader.bytes != 4) return 10;
  if (GetFileModeInfo(MP4_FILE_MODE(1)) == nullptr) return 11;
  if (codec_get_id(codec_movaudio_tags, codec_movaudio_tags[0].tag) == 0) return 12;
  std::puts("the library works from C++");
  return 0;
}
