#include <climits>

#include "boxes/base/BoxReading.h"
#include "boxes/movie/BoxMOOV.h"

BoxTRAK* BoxMOOV::FindTrack(int trackId) const {
  const auto found = tracks.find(trackId);
  return found != tracks.end() ? found->second.get() : nullptr;
}

bool BoxMOOV::ReadyToDemux() {
  if (!HasHeaderAndTracks()) return false;
  readyTracks.clear();
  if (!mp4::WithoutThrowing([&] { readyTracks.reserve(tracks.size()); })) return false;
  for (const auto& [id, track] : tracks) {
    if (track != nullptr && track->ReadyToDemux()) readyTracks.push_back(track->GetTrackID());
  }
  return !readyTracks.empty();
}

// A plain scan: movies have a handful of tracks, and asking a track may move it along its edit
// list, so a remembered answer would go stale.
bool BoxMOOV::GetNextSampleInfo(SAMPLE* sample) {
  if (sample == nullptr) return false;
  BoxTRAK* best = nullptr;
  long long lowest = LLONG_MAX;
  auto at = tracks.cbegin();
  for (const std::int32_t id : readyTracks) {
    // Both lists ascend: the next track is mostly the one that follows.
    if (at == tracks.cend() || at->first != id) at = tracks.find(id);
    if (at == tracks.cend()) continue;
    BoxTRAK* track = (at++)->second.get();
    if (track == nullptr || !track->GetSampleInfo(sample)) continue;
    const auto offset = static_cast<long long>(sample->offset);
    if (offset >= lowest) continue;
    lowest = offset;
    best = track;
  }
  // The result is whether the track goes on, so a track's last sample comes with false.
  return best != nullptr && best->GetSampleInfo(sample) && best->Next();
}

bool BoxMOOV::GetNextSampleInfo(SAMPLE* sample, int trackId) {
  BoxTRAK* track = FindTrack(trackId);
  if (sample == nullptr || track == nullptr || finished != 0) return false;
  const bool delivered = track->GetSampleInfo(sample);
  if (!track->Next()) finished = 1;
  return delivered;
}

long long BoxMOOV::Seek(long long time, int trackId, int /*reserved*/) {
  BoxTRAK* track = FindTrack(trackId);
  const bool toStart = time == 0;
  if (toStart) ReadyToDemux();
  if (toStart || track != nullptr) finished = 0;
  if (track == nullptr) return -1;
  return toStart && track->hasEditList == 0 ? 0 : track->Seek(time);
}
