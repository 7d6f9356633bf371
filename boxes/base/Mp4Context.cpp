#include "boxes/base/Mp4Context.h"

#include <algorithm>
#include <cstring>

#include "boxes/base/BoxReading.h"
#include "io/FourCC.h"

namespace {

MP4_FILE_MODE ModeOfBrand(std::uint32_t brand) {
  switch (brand) {
    case mp4::FourCC("mp41"):
    case mp4::FourCC("mp42"):
    case mp4::FourCC("isom"):
      return MP4_FILE_MODE_MP4;
    case mp4::FourCC("qt  "):
      return MP4_FILE_MODE_MOV;
    case mp4::FourCC("3gp4"):
      return MP4_FILE_MODE_3GP;
    case mp4::FourCC("MSNV"):
      return MP4_FILE_MODE_PSP;
    case mp4::FourCC("3g2a"):
      return MP4_FILE_MODE_3G2;
    default:
      return MP4_FILE_MODE_UNKNOWN;
  }
}

}  // namespace

Mp4Context::TRACK::~TRACK() = default;

Mp4Context::Mp4Context() { std::memset(&metadata, 0, sizeof metadata); }

Mp4Context::~Mp4Context() = default;

void Mp4Context::Clear() {
  tracks.clear();
  std::memset(&metadata, 0, sizeof metadata);
}

Mp4Context::TRACK* Mp4Context::AddTrack(int id) {
  TRACK* added = nullptr;
  mp4::WithoutThrowing([&] {
    auto track = std::make_unique<TRACK>();
    track->trackId = static_cast<std::uint32_t>(id);
    tracks.push_back(std::move(track));
    added = tracks.back().get();
  });
  return added;
}

Mp4Context::TRACK* Mp4Context::GetTrack(int id) {
  const auto found = std::find_if(tracks.begin(), tracks.end(), [id](const auto& track) {
    return track != nullptr && track->trackId == static_cast<std::uint32_t>(id);
  });
  return found != tracks.end() ? found->get() : nullptr;
}

void Mp4Context::SetCurrentTrack(int id) {
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    if (tracks[i] == nullptr || tracks[i]->trackId != static_cast<std::uint32_t>(id)) continue;
    currentTrack = static_cast<std::int64_t>(i);
    return;
  }
}

Mp4Context::TRACK* Mp4Context::GetCurrentTrack() {
  if (currentTrack < 0 || currentTrack >= static_cast<std::int64_t>(tracks.size())) return nullptr;
  return tracks[static_cast<std::size_t>(currentTrack)].get();
}

int Mp4Context::GetTrackCount() { return static_cast<int>(tracks.size()); }

int Mp4Context::GetTrackID(int i) {
  const TRACK* track = GetTrackByIndex(i);
  return track != nullptr ? static_cast<int>(track->trackId) : 0;
}

Mp4Context::TRACK* Mp4Context::GetTrackByIndex(int i) {
  if (i < 0 || i >= GetTrackCount()) return nullptr;
  return tracks[static_cast<std::size_t>(i)].get();
}

void Mp4Context::SetMovMode() { fileMode = MP4_FILE_MODE_MOV; }

bool Mp4Context::SetMajorBrand(unsigned int brand) {
  majorBrand = brand;
  fileMode = ModeOfBrand(brand);
  return fileMode != MP4_FILE_MODE_UNKNOWN;
}

void Mp4Context::SetMinorVersion(int /*version*/) {}

bool Mp4Context::SetCompatibleBrand(unsigned int brand) {
  if (fileMode == MP4_FILE_MODE_UNKNOWN) fileMode = ModeOfBrand(brand);
  return fileMode != MP4_FILE_MODE_UNKNOWN;
}
