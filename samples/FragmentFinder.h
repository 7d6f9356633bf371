#pragma once

#include <cstdint>
#include <optional>

#include "io/CachedSource.h"
#include "io/LazyArray.h"
#include "iso/BoxRun.h"
#include "samples/SampleProblem.h"

namespace mp4 {

/// A movie fragment that was found without reading the others.
struct FragmentPlace {
  enum class By : std::uint8_t { kSegmentIndex, kRandomAccess, kHeaders };
  By by = By::kHeaders;
  std::uint64_t offset = 0;                 ///< of its "moof"
  std::optional<std::uint64_t> decodeTime;  ///< of the track's first sample in it ("tfdt")
};

/// Finds the fragment to begin with for a time: by SegmentIndexBox ("sidx", ISO/IEC 14496-12,
/// 8.16.3), else by MovieFragmentRandomAccessBox ("mfra", 8.8.9), else by the decode times of the
/// fragments, whose headers are then read one after the other. An index that points to where no
/// fragment begins is a problem, and the next way is taken. Both are borrowed.
class FragmentFinder {
 public:
  FragmentFinder(CachedSource* source, SampleProblems* problems)
      : source_(source), problems_(problems) {}

  /// The last fragment that begins at or before `time`, in units of the track's timescale; indexes
  /// count composition times. None without one. May throw bad_alloc.
  std::optional<FragmentPlace> Find(std::uint32_t track, std::uint32_t timescale,
                                    std::int64_t time);

 private:
  /// Bytes of a box's payload, in place or owned.
  struct Payload {
    FieldView fields;
    LazyArray<unsigned char> own;
  };
  /// A stretch of the file that an index names.
  struct Stretch {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    bool isIndex = false;  ///< another "sidx" begins there
  };
  /// What one "sidx" says.
  struct Indexed {
    bool usable = false;
    std::optional<Stretch> found;
    std::uint64_t end = 0;  ///< behind all that it names
  };

  bool HeaderAt(std::uint64_t offset, std::uint64_t end, BoxBytes* box);
  Payload PayloadOf(std::uint64_t offset, const BoxBytes& box, std::uint64_t most = SIZE_MAX);
  std::optional<FragmentPlace> Taken(FragmentPlace::By by, std::uint64_t offset,
                                     std::uint32_t track);
  std::optional<std::uint64_t> DecodeTime(std::uint64_t offset, const BoxBytes& moof,
                                          std::uint32_t track);
  std::optional<FragmentPlace> BySegmentIndex(std::uint32_t track, std::uint32_t timescale,
                                              std::int64_t time);
  Indexed ReadIndex(std::uint64_t offset, const BoxBytes& box, std::uint32_t track,
                    std::uint32_t timescale, std::int64_t time);
  std::optional<FragmentPlace> FirstIn(Stretch stretch, std::uint32_t track,
                                       std::uint32_t timescale, std::int64_t time);
  std::optional<FragmentPlace> ByRandomAccess(std::uint32_t track, std::int64_t time);
  std::optional<std::uint64_t> ReadRandomAccess(FieldView fields, std::uint32_t track,
                                                std::int64_t time);
  std::optional<FragmentPlace> ByHeaders(std::uint32_t track, std::int64_t time);

  CachedSource* source_;
  SampleProblems* problems_;
};

}  // namespace mp4
