#include "samples/SampleProblem.h"

#include "iso/TypeText.h"

namespace mp4 {

namespace {

constexpr std::size_t kMostKept = 100;

const char* WordsOf(SampleFault fault) {
  switch (fault) {
    case SampleFault::kMissing:
      return "is missing";
    case SampleFault::kCut:
      return "ends before its own fields";
    case SampleFault::kFewerRows:
      return "holds fewer rows than it says";
    case SampleFault::kNotDelivered:
      return "could not be read";
    case SampleFault::kFieldSize:
      return "has a field size that does not exist";
    case SampleFault::kRowsDoNotRise:
      return "has rows that do not rise; they are passed over";
    case SampleFault::kFirstChunksUnnamed:
      return "says nothing about the first chunks";
    case SampleFault::kCountsDiffer:
      return "counts other samples than the sizes";
    case SampleFault::kFewerInChunks:
      return "and the chunks hold fewer samples than there are sizes";
    case SampleFault::kNamesAbsent:
      return "names samples that are not there";
    case SampleFault::kZeroTimescale:
      return "gives no timescale";
    case SampleFault::kUnknownTrack:
      return "belongs to a track that the movie box does not name";
    case SampleFault::kNoDefaults:
      return "gives no defaults for this track";
    case SampleFault::kPlaceUnknown:
      return "has samples whose place is not told; they are not listed";
    case SampleFault::kRunsInEmpty:
      return "stands in a track fragment that says it is empty";
    case SampleFault::kNotRead:
      return "is compressed and was not read";
    case SampleFault::kNoFragmentThere:
      return "points to where no movie fragment begins";
    case SampleFault::kGroupsUnreadable:
      return "cannot be read in full; samples it may name count as protected";
  }
  return "";
}

}  // namespace

std::string TextOf(const SampleProblem& problem) {
  std::string text;
  AppendType(problem.box, &text);
  text.append(" ").append(WordsOf(problem.fault));
  if (problem.says != problem.holds) {
    text.append(" (says ").append(std::to_string(problem.says));
    text.append(", there are ").append(std::to_string(problem.holds)).append(")");
  }
  return text;
}

void SampleProblems::Note(SampleFault fault, std::uint32_t box, std::uint64_t says,
                          std::uint64_t holds, std::uint64_t offset) {
  if (kept_.size() < kMostKept) {
    kept_.push_back({fault, box, says, holds, offset});
  } else {
    ++dropped_;
  }
}

}  // namespace mp4
