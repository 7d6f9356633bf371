// The host's demuxer: lists where samples lie, in file order, as far as its cursor goes. For every
// sample of any movie, take the exact index (key_frames.c, copy_track.cpp).
#include <mp4judge/host/demux/Mp4Demux.h>

#include <cstdio>
#include <map>
#include <string>

namespace {

/// How far the walk of one track has come.
struct Walked {
  unsigned given = 0;
  unsigned long long lastOffset = 0;
  bool paused = false;
};

unsigned CountOf(Mp4Demux& demux, unsigned trackId) {
  for (int i = 0; i < demux.GetContext()->GetTrackCount(); ++i) {
    const Mp4Context::TRACK* track = demux.GetContext()->GetTrackByIndex(i);
    if (track->trackId == trackId) return static_cast<unsigned>(track->numSamples);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string path = argv[1];  // plain ASCII, to keep the example short
  Mp4Demux demux;
  if (!demux.Init(std::wstring(path.begin(), path.end()).c_str())) return 1;
  if (!demux.ReadyToDemux()) return 1;
  std::map<unsigned, Walked> tracks;
  for (;;) {
    BoxBase::SAMPLE sample{};
    const bool goesOn = demux.movieBox->GetNextSampleInfo(&sample);
    if (sample.trackId == 0) break;
    Walked& walked = tracks[sample.trackId];
    // Behind a pause the sample in front of it comes once more.
    const bool again = walked.paused && sample.offset == walked.lastOffset;
    walked.paused = false;
    if (!again) {
      ++walked.given;
      walked.lastOffset = sample.offset;
      std::printf("track %u: offset %llu, %u bytes, time %lld\n", sample.trackId,
                  static_cast<unsigned long long>(sample.offset), sample.size,
                  static_cast<long long>(sample.time));
    }
    if (goesOn) continue;
    // False comes with the last sample of a track, and at every 256th, where the walk only pauses.
    walked.paused =
        !again && walked.given % 256 == 0 && walked.given < CountOf(demux, sample.trackId);
    if (!walked.paused) break;
  }
  unsigned missing = 0;
  for (int i = 0; i < demux.GetContext()->GetTrackCount(); ++i) {
    const Mp4Context::TRACK* track = demux.GetContext()->GetTrackByIndex(i);
    missing += static_cast<unsigned>(track->numSamples) - tracks[track->trackId].given;
  }
  if (missing > 0) std::fprintf(stderr, "%u samples were not reached\n", missing);
  return missing > 0 ? 3 : 0;
}
