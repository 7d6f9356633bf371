// The demuxer: opens a file and lists where its samples lie, in file order.
#include <mp4judge/host/demux/Mp4Demux.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string path = argv[1];  // plain ASCII, to keep the example short
  Mp4Demux demux;
  if (!demux.Init(std::wstring(path.begin(), path.end()).c_str())) return 1;
  if (!demux.ReadyToDemux()) return 1;
  bool more = true;
  while (more) {
    BoxBase::SAMPLE sample{};
    // False already with the sample that ends a track; that sample is filled in all the same.
    more = demux.movieBox->GetNextSampleInfo(&sample);
    if (sample.trackId == 0) break;
    std::printf("track %u: offset %llu, %u bytes, time %lld\n", sample.trackId,
                static_cast<unsigned long long>(sample.offset), sample.size,
                static_cast<long long>(sample.time));
  }
  return 0;
}
