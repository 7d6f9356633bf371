#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "boxes/base/BoxBase.h"
#include "boxes/base/Mp4Context.h"
#include "boxes/fragments/BoxMOOF.h"
#include "boxes/movie/BoxFTYP.h"
#include "boxes/movie/BoxMOOV.h"
#include "io/Export.h"
#include "io/LazyArray.h"
#include "io/mmStreamReader.h"

/// Room for the largest sample of any track; the caller reads sample bytes into it.
struct Mp4BlockBuffer {
  mp4::LazyArray<unsigned char> data;  ///< `capacity` + 32 bytes, null when the capacity is 0
  std::int32_t capacity = 0;           ///< usable bytes: (largest + 32) rounded down to 16
  std::int32_t reserved[2] = {};
};

/// Opens a file, scans its top-level boxes and owns what they become. One thread uses a demuxer at
/// a time; demuxers share nothing.
class MP4JUDGE_API Mp4Demux {
 public:
  Mp4Demux() = default;
  ~Mp4Demux();
  Mp4Demux(const Mp4Demux&) = delete;
  Mp4Demux& operator=(const Mp4Demux&) = delete;

  /// Opens and reads a file, closing an earlier one; `path` is UTF-32. True exactly when a movie
  /// box was read. Failure leaves what was made in place, the context included, until the next
  /// Init, Uninit or Destroy. Throws nothing. Linear in the bytes of the movie and fragment boxes.
  bool Init(const wchar_t* path);
  /// Init for a caller that only asks about handlers and formats: the same result and the same
  /// track records, but sample tables and run entries are passed over unread and fragments are
  /// neither merged nor kept.
  bool InitForJudgement(const wchar_t* path);
  /// The same two over any reader, from its position, which should be 0: memory, archives and
  /// remote objects open like files (see mp4::SourceReader). False for null.
  bool Init(std::unique_ptr<mmStreamReader> source);
  bool InitForJudgement(std::unique_ptr<mmStreamReader> source);
  /// Releases everything; may be repeated.
  void Uninit();
  void Destroy() { Uninit(); }

  /// The context, or null before Init.
  Mp4Context* GetContext() { return context.get(); }

  /// Largest sample of all tracks in bytes; 2 MiB without a context, 0 without tracks.
  int GetMaxBlockSize();
  /// Sizes the block buffer and readies the movie's tracks. False without movie box or context;
  /// true otherwise, whether or not a track is ready or the buffer could be had: hosts learn of
  /// unready tracks when they ask for samples.
  bool ReadyToDemux();
  /// True when `tag` (first character in the lowest byte) is the tag of a supported file mode.
  static bool IsSupportedFormat(unsigned int tag);

  /// The supported file modes in the order hosts list them, then zeros.
  static const MP4_FILE_MODE m_arSupportedMode[12];

  std::int32_t state = 0;  ///< unused
  std::unique_ptr<mmStreamReader> reader;
  std::unique_ptr<Mp4Context> context;
  std::unique_ptr<BoxFTYP> fileTypeBox;
  std::unique_ptr<BoxMOOV> movieBox;
  std::unique_ptr<BoxBase> spareBox;  ///< never set by the library
  std::vector<std::unique_ptr<BoxMOOF>> fragments;
  std::unique_ptr<Mp4BlockBuffer> blockBuffer;

 private:
  enum class Purpose { kDemux, kJudge };
  struct TopBox;

  bool Open(const wchar_t* path, Purpose purpose);
  bool Open(std::unique_ptr<mmStreamReader> from, Purpose purpose);
  bool Scan(long long fileSize);
  bool ReadFirstBox(long long fileSize, long long* scanFrom);
  bool ScanTopLevel(long long fileSize, long long pos);
  bool Dispatch(const TopBox& box);
  bool ReadMovie(long long payload);
  bool ReadFragment(long long payload);
};
