#include "boxes/movie/BoxMOOV.h"

#include <climits>
#include <utility>

#include "boxes/base/BoxReading.h"
#include "boxes/movie/BoxCMOV.h"
#include "io/AttachedScan.h"
#include "io/FourCC.h"
#include "io/Limits.h"
#include "io/ScanControl.h"
#include "io/WrapMath.h"

bool BoxMOOV::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr) return false;
  finished = 0;
  const long long total = reader->GetSize();
  if (total < 0 || size < 1) {
    if (size >= 0) reader->Skip(size);
    return HasHeaderAndTracks();
  }
  long long longestTrack = -1;
  const mp4::WalkEnd end = mp4::WalkChildren(
      reader, size, 0, mp4::UnknownChild::kSkip,
      [&](const mp4::ChildHeader& child) {
        return ReadChild(reader, child, context, &longestTrack);
      },
      total);
  // The longest edited track, not the movie header, is how long the movie lasts. In ISO/IEC
  // 14496-12 the header has that duration itself.
  if (longestTrack > 0 && context != nullptr) context->SetDuration(longestTrack);
  if (end.consumed <= size) reader->Skip(mp4::WrapSub(size, end.consumed));
  return !end.failed && HasHeaderAndTracks();
}

mp4::Child BoxMOOV::ReadChild(mmStreamReader* reader, const mp4::ChildHeader& child,
                              Mp4Context* context, long long* longestTrack) {
  switch (child.type) {
    case mp4::FourCC("udta"):
      return mp4::ReadReused(&userDataBox, reader, child, context);
    case mp4::FourCC("mvhd"):
      return mp4::ReadReplacing(&movieHeaderBox, reader, child, context);
    case mp4::FourCC("trak"):
      return ReadTrack(reader, child, context, longestTrack);
    case mp4::FourCC("cmov"):
      return ReadCompressed(reader, child, context);
    case mp4::FourCC("mvex"):
      return mp4::ReadReused(&movieExtendsBox, reader, child, nullptr);
    default:
      return mp4::Child::kUnknown;
  }
}

mp4::Child BoxMOOV::ReadTrack(mmStreamReader* reader, const mp4::ChildHeader& child,
                              Mp4Context* context, long long* longestTrack) {
  auto track = std::make_unique<BoxTRAK>();
  const bool read = track->ReadData(reader, child.payload, context);
  // The duration and the track count even when the track failed.
  const long long duration = track->editDuration;
  if (duration >= 1 && duration >= *longestTrack) *longestTrack = duration;
  const int id = track->GetTrackID();
  // ISO/IEC 14496-12 has no track ID 0: such a track is dropped. Of one ID the last track stays.
  if (id != 0) tracks[id] = std::move(track);
  return read ? mp4::Child::kRead : mp4::Child::kFailed;
}

mp4::Child BoxMOOV::ReadCompressed(mmStreamReader* reader, const mp4::ChildHeader& child,
                                   Mp4Context* context) {
  if (compressedDepth >= mp4::limits::kDeepestCompressedMovie) {
    reader->Skip(child.payload);
    return mp4::Child::kFailed;
  }
  BoxCMOV compressed;
  if (!compressed.ReadData(reader, child.payload, context)) return mp4::Child::kFailed;
  mmBufReader* movie = compressed.GetMOOVDataStream();
  mp4::ScanControl scan(movie->GetSize(), reader->Scan());
  const mp4::AttachedScan attached(movie, reader->Scan() != nullptr ? &scan : nullptr);
  const std::uint32_t innerSize = movie->GetBe32();
  movie->GetLe32();  // its type, which is not looked at
  ++compressedDepth;
  // A movie that fails inside does not fail the box that held it compressed.
  ReadData(movie, mp4::Truncate32(static_cast<std::int64_t>(innerSize) - 8), context);
  --compressedDepth;
  return mp4::Child::kRead;
}

void BoxMOOV::Clear() {
  movieHeaderBox.reset();
  tracks.clear();
  movieExtendsBox.reset();
  userDataBox.reset();
}

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
