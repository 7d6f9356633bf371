#pragma once

#include <cstdint>

#include "boxes/base/BoxBase.h"

/// Track header box "tkhd" (ISO/IEC 14496-12 TrackHeaderBox), contained in "trak". Reading it
/// creates the track's record in the context and makes it current, so that the boxes read after it
/// fill that record.
class MP4JUDGE_API BoxTKHD : public BoxBase {
 public:
  /// False without reader or payload, or when the context holds mp4::limits::kMostTracks records or
  /// finds no memory for another. Without a context the fields alone are read.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
  int GetTrackID() { return static_cast<int>(trackId); }
  /// Keeps everything.
  void Clear() {}

  std::uint64_t creationTime = 0;      ///< seconds since 1904
  std::uint64_t modificationTime = 0;  ///< seconds since 1904
  std::uint64_t duration = 0;          ///< movie timescale units; not published
  std::uint32_t flags = 0;             ///< 24 bits
  std::uint32_t trackId = 0;
  std::uint32_t volume = 0;  ///< 8.8
  std::uint32_t width = 0;   ///< 16.16
  std::uint32_t height = 0;  ///< 16.16

 private:
  bool Publish(Mp4Context* context, mp4::ScanControl* scan) const;
};
