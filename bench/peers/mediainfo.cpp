// MediaInfo: opens the file with the options it has by itself and asks for the format of each
// stream.
//   peer_mediainfo FILE REPEATS [SECONDS]
#include <MediaInfo/MediaInfo.h>

#include "bench/Repeat.h"

namespace {

using namespace MediaInfoLib;

bool Open(const std::string& path) {
  MediaInfo info;
  if (info.Open(String(path.begin(), path.end())) == 0) return false;
  bool any = false;
  for (const stream_t kind : {Stream_Video, Stream_Audio}) {
    for (std::size_t i = 0, n = info.Count_Get(kind); i < n; ++i) {
      any |= !info.Get(kind, i, __T("Format")).empty();
    }
  }
  info.Close();
  return any;
}

}  // namespace

int main(int argc, char** argv) { return bench::RepeatMain(argc, argv, Open); }
