#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "boxes/base/FileMode.h"
#include "boxes/base/SampleRecords.h"
#include "io/Export.h"

namespace mp4 {
class ScanControl;
}

/// What every box writes its findings into: movie-wide facts, one record per track header in the
/// order met, and the current track that the boxes now being read belong to.
///
/// FourCC values are 32-bit numbers whose least significant byte is the first character.
class MP4JUDGE_API Mp4Context {
 public:
  /// Texts of the user data. A text that fills its field has no terminating zero.
  struct METADATA {
    wchar_t artist[260];
    wchar_t name[260];
    wchar_t track[260];
    wchar_t album[260];
    wchar_t day[260];
    wchar_t genre[260];
    unsigned char reserved[2080];  ///< the host's; cleared with the block, never written
  };

  /// One track. Everything is zero after creation except `trackId`.
  struct MP4JUDGE_API TRACK {
    TRACK() = default;
    TRACK(const TRACK&) = delete;
    TRACK& operator=(const TRACK&) = delete;
    ~TRACK();

    std::uint32_t trackId = 0;
    std::uint32_t handlerType = 0;
    std::uint32_t format = 0;         ///< sample-entry format after codec substitutions
    std::uint16_t language = 0;       ///< packed ISO 639-2/T
    std::int32_t syncTableState = 0;  ///< -1: a sync sample table with no entries
    char compressorName[32] = {};
    std::int32_t bitRate = 0;  ///< bits per second
    std::int64_t totalSampleBytes = 0;
    std::uint32_t maxSampleSize = 0;
    std::int32_t timescale = 0;
    std::int64_t duration = 0;  ///< media timescale units
    std::uint32_t width = 0;    ///< 16.16
    std::uint32_t height = 0;   ///< 16.16
    std::uint32_t videoWidth = 0;
    std::uint32_t videoHeight = 0;
    std::uint32_t videoDepth = 0;
    std::int32_t numSamples = 0;
    std::int32_t frameRateNum = 0;
    std::int32_t frameRateDen = 0;
    std::uint32_t volume = 0;      ///< 8.8
    std::uint32_t sampleRate = 0;  ///< Hz
    std::uint32_t bitsPerSample = 0;
    std::uint32_t channels = 0;
    std::int32_t compressionId = 0;  ///< QuickTime files only, like the three below
    std::uint32_t samplesPerPacket = 0;
    std::uint32_t bytesPerPacket = 0;
    std::uint32_t bytesPerFrame = 0;
    std::unique_ptr<unsigned char[]> extraData[4];  ///< decoder configuration in slot 0
    std::uint32_t extraDataSize[4] = {};
    std::vector<tagSTTS> timeToSampleTable;  ///< the four sequences: audio tracks only
    std::vector<tagSTSZ> sampleSizeTable;
    std::vector<tagSTCO> chunkOffsetTable;
    std::vector<tagSTSC> sampleToChunkTable;
    std::uint32_t constSampleCount = 0;
    std::uint32_t constSampleSize = 0;
    std::uint8_t hasEditList = 0;
    std::vector<tagElstItem> editList;
    std::int32_t movieTimescale = 0;

    /// Which table last filled a sequence, so that appends can extend it instead of refilling.
    const void* timeToSampleOwner = nullptr;
    const void* chunkOffsetOwner = nullptr;
  };

  Mp4Context();
  ~Mp4Context();
  Mp4Context(const Mp4Context&) = delete;
  Mp4Context& operator=(const Mp4Context&) = delete;

  /// Drops all records and texts; file mode, brand, timescale, duration and `currentTrack` stay.
  void Clear();

  /// Appends a record, even when the ID is already there, and returns it; null without memory.
  TRACK* AddTrack(int id);
  /// First record with that ID, or null.
  TRACK* GetTrack(int id);
  /// Makes the first record with that ID current; an unknown ID changes nothing. After a repeated
  /// ID the later track's boxes so fill the earlier record: hosts count on it. ISO/IEC 14496-12 has
  /// no ID twice.
  void SetCurrentTrack(int id);
  /// Null when there is none.
  TRACK* GetCurrentTrack();
  int GetTrackCount();
  /// 0 out of range.
  int GetTrackID(int i);
  /// Null out of range.
  TRACK* GetTrackByIndex(int i);

  void SetDuration(long long value) { duration = value; }
  long long GetDuration() { return duration; }
  void SetTimescale(int value) { timescale = value; }
  int GetTimescale() { return timescale; }
  MP4_FILE_MODE GetFileMode() { return fileMode; }

  /// A file without file type box is a QuickTime movie.
  void SetMovMode();
  /// Stores the brand and its file mode; false for an unknown brand (mode 0).
  bool SetMajorBrand(unsigned int brand);
  /// The minor version is not kept.
  void SetMinorVersion(int version);
  /// Decides the mode only while none is known; false when it stays unknown.
  bool SetCompatibleBrand(unsigned int brand);

  METADATA metadata;
  MP4_FILE_MODE fileMode = MP4_FILE_MODE_UNKNOWN;
  std::uint32_t majorBrand = 0;
  std::int32_t timescale = 1000;  ///< movie units per second
  std::int64_t duration = 0;      ///< movie timescale units
  std::vector<std::unique_ptr<TRACK>> tracks;
  std::int64_t currentTrack = -1;

  /// The account that fragment merging is charged to while a file is being opened; null otherwise.
  mp4::ScanControl* scan = nullptr;
  /// Attaches it (borrowed; null detaches). Not for hosts.
  void AttachScan(mp4::ScanControl* control) { scan = control; }
};

namespace mp4 {

/// The current track of a context that may be null.
inline Mp4Context::TRACK* CurrentTrack(Mp4Context* context) {
  return context != nullptr ? context->GetCurrentTrack() : nullptr;
}

}  // namespace mp4
