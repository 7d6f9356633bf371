#pragma once

#include <cstdint>
#include <string>

#include "boxes/base/Mp4Context.h"
#include "io/FourCC.h"

namespace fixture {

/// A context with one track, which is current.
struct OneTrack {
  explicit OneTrack(std::uint32_t handler = 0, MP4_FILE_MODE mode = MP4_FILE_MODE_UNKNOWN,
                    int id = 1)
      : track(context.AddTrack(id)) {
    context.SetCurrentTrack(id);
    context.fileMode = mode;
    track->handlerType = handler;
  }
  explicit OneTrack(const char (&handler)[5], MP4_FILE_MODE mode = MP4_FILE_MODE_UNKNOWN)
      : OneTrack(mp4::FourCC(handler), mode) {}
  static OneTrack OfId(int id) { return OneTrack(0, MP4_FILE_MODE_UNKNOWN, id); }

  /// QuickTime audio whose sample table counts the samples inside packets.
  void Packetised(std::uint32_t samplesPerPacket, std::int32_t compressionId = 0) {
    context.SetMovMode();
    track->samplesPerPacket = samplesPerPacket;
    track->compressionId = compressionId;
  }
  /// The content of extradata slot 0.
  std::string ExtraData() const {
    return std::string(reinterpret_cast<const char*>(track->extraData[0].get()),
                       track->extraDataSize[0]);
  }

  Mp4Context context;
  Mp4Context::TRACK* track;
};

}  // namespace fixture
