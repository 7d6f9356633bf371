#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace mp4 {

/// What is wrong with the boxes that place a track's samples. None of it stops the others.
enum class SampleFault : std::uint8_t {
  kMissing,             ///< a box that the samples need
  kCut,                 ///< a box ends before its own fields do
  kFewerRows,           ///< holds fewer rows than it says
  kNotDelivered,        ///< the source failed while a table was read
  kFieldSize,           ///< a field width that is none
  kRowsDoNotRise,       ///< rows that are out of order were passed over
  kFirstChunksUnnamed,  ///< the first chunks have no row
  kCountsDiffer,        ///< says another count of samples than the sizes
  kFewerInChunks,       ///< the chunks hold fewer samples than the sizes
  kNamesAbsent,         ///< names samples that are not there
  kZeroTimescale,
  kUnknownTrack,      ///< fragments of a track without a track box
  kNoDefaults,        ///< fragments of a track without "trex"
  kPlaceUnknown,      ///< samples of a run are not listed: nothing tells where they are
  kRunsInEmpty,       ///< runs in a track fragment that says it is empty
  kNotRead,           ///< a compressed fragment
  kNoFragmentThere,   ///< an index points to where no movie fragment begins
  kGroupsUnreadable,  ///< protection groups that cannot be read: their samples count as protected
};

struct SampleProblem {
  SampleFault fault;
  std::uint32_t box;     ///< type, in the order of mp4::FourCC
  std::uint64_t says;    ///< what the box claims, where there are two numbers; else 0
  std::uint64_t holds;   ///< what there is
  std::uint64_t offset;  ///< of the box in the file; 0 when it is missing
};

/// One line in plain words.
std::string TextOf(const SampleProblem& problem);

/// The first problems of each kind; more of a kind are counted.
class SampleProblems {
 public:
  void Note(SampleFault fault, std::uint32_t box, std::uint64_t says = 0, std::uint64_t holds = 0,
            std::uint64_t offset = 0);
  const std::vector<SampleProblem>& Kept() const { return kept_; }
  std::uint64_t Dropped() const { return dropped_; }

 private:
  std::vector<SampleProblem> kept_;
  std::uint64_t dropped_ = 0;
};

}  // namespace mp4
