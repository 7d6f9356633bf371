#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "boxes/base/BoxBase.h"
#include "boxes/base/Mp4Context.h"
#include "boxes/movie/BoxMVEX.h"
#include "boxes/movie/BoxMVHD.h"
#include "boxes/track/BoxTRAK.h"
#include "boxes/userdata/BoxUDTA.h"

namespace mp4 {
enum class Child;
struct ChildHeader;
}  // namespace mp4

/// Movie box "moov" (ISO/IEC 14496-12), plain or compressed, and the scheduling of the samples of
/// its tracks: across tracks in the order of their file offsets, or one track at a time.
class MP4JUDGE_API BoxMOOV : public BoxBase {
 public:
  /// False without reader, when a known child fails, or when there is no movie header or no track
  /// afterwards. Called again, it adds to what is there: a compressed movie is read this way.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
  /// Drops the boxes; `readyTracks` stays.
  void Clear();

  /// Puts every track at its first sample and lists those that can deliver. False without movie
  /// header, tracks, or any track that is ready.
  bool ReadyToDemux();
  /// The next sample of all ready tracks: the one with the lowest file offset, on equal offsets
  /// that of the lower track ID. One question to each ready track a sample.
  ///
  /// The result is whether the chosen track can go on: the last sample of a track is filled in with
  /// a result of false, and hosts stop there.
  bool GetNextSampleInfo(SAMPLE* sample);
  /// The next sample of one track. False for a track that is not there, and after the last sample
  /// of a track, whichever it was, until a seek.
  bool GetNextSampleInfo(SAMPLE* sample, int trackId);
  /// Positions one track; `time` and the result as BoxTRAK::Seek has them. Time 0 first puts every
  /// track back to its start. -1 for a track that is not there.
  long long Seek(long long time, int trackId, int reserved);

  std::unique_ptr<BoxMVEX> movieExtendsBox;  ///< reused by later "mvex"
  /// By track ID. Merging fragments of an unknown track leaves a null entry behind.
  std::map<std::int32_t, std::unique_ptr<BoxTRAK>> tracks;
  std::unique_ptr<BoxMVHD> movieHeaderBox;  ///< the last one read
  std::unique_ptr<BoxUDTA> userDataBox;     ///< reused by later "udta"
  std::int32_t finished = 0;                ///< a track ran out in single-track reading
  std::vector<std::int32_t> readyTracks;    ///< track IDs, ascending

 private:
  mp4::Child ReadChild(mmStreamReader* reader, const mp4::ChildHeader& child, Mp4Context* context,
                       long long* longestTrack);
  mp4::Child ReadTrack(mmStreamReader* reader, const mp4::ChildHeader& child, Mp4Context* context,
                       long long* longestTrack);
  mp4::Child ReadCompressed(mmStreamReader* reader, const mp4::ChildHeader& child,
                            Mp4Context* context);
  bool HasHeaderAndTracks() const { return movieHeaderBox != nullptr && !tracks.empty(); }
  BoxTRAK* FindTrack(int trackId) const;

  int compressedDepth = 0;  ///< compressed movies being read, one inside the other
};
