#pragma once

#include <cstdint>
#include <vector>

#include "iso/BoxTree.h"
#include "samples/SampleProblem.h"

namespace mp4 {

/// One edit (EditListBox "elst", ISO/IEC 14496-12, 8.6.6).
struct Edit {
  std::uint64_t duration = 0;  ///< of the segment, in units of the movie's timescale
  std::int64_t mediaTime = 0;  ///< where it begins, in media units; -1 is an empty edit
  std::int16_t rateInteger = 1;
  std::uint16_t rateFraction = 0;

  bool IsEmpty() const { return mediaTime == -1; }
  /// One frame stands still for the whole segment.
  bool IsDwell() const { return rateInteger == 0 && rateFraction == 0; }
  /// 16.16, negative when played backwards.
  std::int32_t Rate() const {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(rateInteger) << 16 | rateFraction);
  }
};

/// The timeline of a track: movie time to media time and back. Without edits media time 0 is
/// presented at movie time 0.
class EditTimeline {
 public:
  EditTimeline() = default;
  EditTimeline(std::vector<Edit> edits, std::uint32_t movieScale, std::uint32_t mediaScale);

  const std::vector<Edit>& Edits() const { return edits_; }

  /// Presentation time of a media time, in media units, by the first edit that shows it. False when
  /// no edit does, or a timescale is 0.
  bool ToPresentation(std::int64_t mediaTime, std::int64_t* presentation) const;
  /// Media time at a presentation time in media units. False in an empty edit and outside of all.
  bool ToMedia(std::int64_t presentation, std::int64_t* mediaTime) const;

 private:
  struct Segment {
    std::int64_t start;  ///< on the presentation's timeline, in media units
    std::int64_t end;
  };
  /// Media from a time on, up to the next stretch, and the edit that shows it first.
  struct Stretch {
    std::int64_t start;
    std::size_t edit;
  };
  std::int64_t MediaEnd(std::size_t i) const;
  std::int64_t Inside(std::size_t i, std::int64_t mediaTime) const;
  void FindStretches();

  std::vector<Edit> edits_;
  std::vector<Segment> segments_;
  std::vector<Stretch> stretches_;
};

/// Reads an "elst" of 32 or 64 bits. Rows that do not exist are left out.
std::vector<Edit> ReadEdits(BoxTree* tree, BoxId box, SampleProblems* problems);

}  // namespace mp4
