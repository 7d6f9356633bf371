#include "inspect/TreeProblems.h"

#include <algorithm>

#include "inspect/Words.h"
#include "io/FourCC.h"
#include "iso/SampleEntryLayout.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

/// Top-level boxes whose missing bytes are media or nothing.
bool IsHarmlessWhenCut(std::uint32_t type) {
  switch (type) {
    case FourCC("mdat"):
    case FourCC("free"):
    case FourCC("skip"):
    case FourCC("wide"):
      return true;
    default:
      return false;
  }
}

/// Whether the box is a sample entry or lies in one: those are searched byte by byte.
bool IsInSampleEntry(const BoxTree& tree, BoxId box) {
  for (; box != kRootBox && box != kNoBox; box = tree.At(box).parent) {
    if (IsSampleEntry(tree, box)) return true;
  }
  return false;
}

/// Reserved bytes and a data reference index, which every sample entry begins with.
constexpr std::uint64_t kSmallestEntry = 8;

/// Bytes behind the last box that are a tag of an old MP3 habit (ID3v1), or plain text: no box of
/// usual size has either in its header.
bool IsTagOrText(BoxTree* tree, const Box& box) {
  constexpr std::size_t kTagSize = 128;
  constexpr std::size_t kLongestText = 4096;
  const auto n =
      static_cast<std::size_t>(std::min<std::uint64_t>(box.end - box.offset, kLongestText + 1));
  const unsigned char* bytes = n <= kLongestText ? tree->View(box.space, box.offset, n) : nullptr;
  if (bytes == nullptr) return false;
  if (n == kTagSize && bytes[0] == 'T' && bytes[1] == 'A' && bytes[2] == 'G') return true;
  return std::all_of(bytes, bytes + n, [](unsigned char c) {
    return (c >= 0x20 && c < 0x7F) || c == '\t' || c == '\n' || c == '\r';
  });
}

bool MayHide(BoxTree* boxes, const BoxProblem& problem) {
  const BoxTree& tree = *boxes;
  switch (problem.fault) {
    case BoxFault::kNotDelivered:
    case BoxFault::kTooManyBoxes:
    case BoxFault::kTooDeep:
    case BoxFault::kNotInflated:
      return true;
    case BoxFault::kMoreThanCounted:
    case BoxFault::kRestUnreadable:  // fewer bytes than the smallest box
      return false;
    case BoxFault::kCutByEnd:
      if (tree.At(problem.box).parent == kRootBox)
        return !IsHarmlessWhenCut(tree.At(problem.box).type) &&
               !IsTagOrText(boxes, tree.At(problem.box));
      return !IsInSampleEntry(tree, tree.At(problem.box).parent);
    case BoxFault::kOverrunsParent:
      return !IsInSampleEntry(tree, tree.At(problem.box).parent);
    case BoxFault::kFieldsCut:
      if (tree.At(problem.box).PayloadSize() < kSmallestEntry) return true;
      break;
    case BoxFault::kSmallerThanHeader:
    case BoxFault::kSizeZeroInside:
    case BoxFault::kStandsStill:
    case BoxFault::kFewerThanCounted:
    case BoxFault::kNoLayoutFits:
      break;
  }
  return !IsInSampleEntry(tree, problem.box);
}

std::string NameOf(const BoxTree& tree, BoxId box) {
  if (box == kRootBox) return "the file";
  const std::uint32_t type = tree.At(box).type;
  if (type == FourCC("moov")) return "the movie box";
  if (type == FourCC("moof")) return "a movie fragment";
  return "the box \"" + TypeText(type) + "\"";
}

/// None in an inflated movie. The children of a compressed box lie in another space than it.
std::optional<std::uint64_t> OffsetOf(const BoxTree& tree, const BoxProblem& problem) {
  const Box& box = tree.At(problem.box);
  const bool compressed =
      box.type == FourCC("cmvd") || box.type == FourCC("!mov") || box.type == FourCC("!mof");
  if (box.space != 0 || (compressed && problem.offset != box.offset)) return std::nullopt;
  return problem.offset;
}

}  // namespace

std::string TextOfProblem(const BoxTree& tree, const BoxProblem& problem) {
  const Box& box = tree.At(problem.box);
  const std::string name = NameOf(tree, problem.box);
  switch (problem.fault) {
    case BoxFault::kOverrunsParent:
      return name + " is longer than the box that holds it by " +
             Grouped(box.size - (box.end - box.offset)) + " bytes";
    case BoxFault::kCutByEnd:
      return name + " is cut at byte " + Grouped(box.end - box.offset) + " of " +
             Grouped(box.size) + ": bring the whole file";
    case BoxFault::kSmallerThanHeader:
      return "at byte " + Grouped(problem.offset) + ", " + name +
             " holds a box whose size is smaller than its header";
    case BoxFault::kSizeZeroInside:
      return "at byte " + Grouped(problem.offset) + ", " + name +
             " holds a box with a size of 0, which only the last box of a file may have";
    case BoxFault::kStandsStill:
      return "at byte " + Grouped(problem.offset) + ", " + name +
             " holds a box with a 64-bit size of 0";
    case BoxFault::kRestUnreadable:
      return name + " ends in bytes that are no box";
    case BoxFault::kFewerThanCounted:
      return name + " announces more entries than it holds";
    case BoxFault::kMoreThanCounted:
      return name + " holds more entries than it announces";
    case BoxFault::kFieldsCut:
      return name + " ends before its own fields do";
    case BoxFault::kNoLayoutFits:
      return "the boxes of sample entry \"" + TypeText(box.type) + "\" cannot be found";
    case BoxFault::kNotInflated:
      return "a compressed movie does not inflate, or not as a whole";
    case BoxFault::kTooDeep:
      return name + " is nested deeper than the limit";
    case BoxFault::kTooManyBoxes:
      return "there are more boxes than the limit";
    case BoxFault::kNotDelivered:
      break;
  }
  return name + " could not be read at byte " + Grouped(problem.offset);
}

std::string ReportTreeProblems(Findings* findings) {
  BoxTree& tree = findings->Tree();
  std::string reason;
  for (const BoxProblem& problem : tree.Problems()) {
    std::string text = TextOfProblem(tree, problem);
    if (!MayHide(&tree, problem)) {
      findings->Remark(problem.box, OffsetOf(tree, problem), std::move(text));
      continue;
    }
    if (reason.empty()) reason = text;
    findings->Doubt(problem.box, OffsetOf(tree, problem), std::move(text));
  }
  if (tree.ProblemsDropped() != 0) {
    const std::string text = "there are more broken boxes than the limit";
    if (reason.empty()) reason = text;
    findings->Doubt(kRootBox, text);
  }
  return reason;
}

}  // namespace mp4
