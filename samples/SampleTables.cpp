#include "samples/SampleTables.h"

#include "io/FourCC.h"
#include "samples/GroupBoxes.h"
#include "samples/Search.h"

namespace mp4 {

namespace {

constexpr std::size_t kShadowWidth = 8;

/// The first child of either type, kNoBox and a problem without one.
BoxId Either(BoxTree* tree, BoxId stbl, std::uint32_t one, std::uint32_t other,
             SampleProblems* problems) {
  for (BoxId child = tree->FirstChild(stbl); child != kNoBox; child = tree->Next(child)) {
    if (tree->At(child).type == one || tree->At(child).type == other) return child;
  }
  problems->Note(SampleFault::kMissing, one);
  return kNoBox;
}

/// Whether every decode delta is 1, which sound alone has whose tables count frames.
bool AllDeltasAreOne(const RunRows& times) {
  bool any = false;
  for (std::size_t row = 0; row < times.Rows(); ++row) {
    if (times.CountOf(row) == 0) continue;
    if (times.ValueOf(row) != 1) return false;
    any = true;
  }
  return any;
}

/// Whether some description makes samples of more than one entry, or of another size.
bool AnyPacks(const std::vector<Description>& descriptions, std::uint32_t tableSize) {
  for (const Description& description : descriptions) {
    const Packing packing = PackingOf(description, tableSize);
    if (packing.frames != 1 || packing.bytes != 0) return true;
  }
  return false;
}

}  // namespace

void SampleTables::Load(BoxTree* tree, BoxId stbl, const std::vector<Description>& descriptions,
                        std::uint32_t handler, SampleProblems* problems) {
  const GroupBoxes groups = FindGroupBoxes(tree, stbl);
  guardDescriptions = groups.descriptions;
  const GuardDescriptions* own = guardDescriptions.there ? &guardDescriptions : nullptr;
  guards = GuardMap::Of(groups.map, own, own, false);
  if (groups.map.cut) problems->Note(SampleFault::kGroupsUnreadable, FourCC("sbgp"));

  const BoxId size = Either(tree, stbl, FourCC("stsz"), FourCC("stz2"), problems);
  if (size != kNoBox) sizes.Load(tree, size, problems);
  const BoxId offset = Either(tree, stbl, FourCC("stco"), FourCC("co64"), problems);
  if (offset != kNoBox) chunks.LoadOffsets(tree, offset, problems);
  const BoxId map = Either(tree, stbl, FourCC("stsc"), FourCC("stsc"), problems);
  if (map != kNoBox) chunks.LoadMap(tree, map, problems);
  const BoxId time = tree->Child(stbl, FourCC("stts"));
  hasTimes = time != kNoBox;
  if (hasTimes) times.Load(tree, time, problems);
  if (!hasTimes && sizes.Count() > 0) problems->Note(SampleFault::kMissing, FourCC("stts"));
  const BoxId composition = tree->Child(stbl, FourCC("ctts"));
  hasOffsets = composition != kNoBox;
  if (hasOffsets) offsets.Load(tree, composition, problems);
  const BoxId stss = tree->Child(stbl, FourCC("stss"));
  if (stss != kNoBox) sync.Load(tree, stss, problems);
  const BoxId stps = tree->Child(stbl, FourCC("stps"));
  if (stps != kNoBox) partialSync.Load(tree, stps, problems);
  const BoxId sdtp = tree->Child(stbl, FourCC("sdtp"));
  if (sdtp != kNoBox) depends.Load(tree, sdtp, 4, sizes.Count(), problems);
  const BoxId stsh = tree->Child(stbl, FourCC("stsh"));
  if (stsh != kNoBox) LoadRows(tree, stsh, 4, kShadowWidth, &shadows, problems);

  ChunkRows::PackingOf packing;
  const std::uint32_t constant = sizes.Constant();
  if (handler == FourCC("soun") && constant != 0 && AnyPacks(descriptions, constant) &&
      AllDeltasAreOne(times)) {
    packing = [&descriptions, constant](std::uint32_t index) {
      return index >= 1 && index <= descriptions.size()
                 ? PackingOf(descriptions[index - 1], constant)
                 : Packing{};
    };
  }
  chunks.Count(sizes.Count(), packing, problems);
}

void SampleTables::NoteDisagreements(SampleProblems* problems) {
  const std::uint64_t count = sizes.Count();
  if (hasTimes && times.End().first != count) {
    problems->Note(SampleFault::kCountsDiffer, FourCC("stts"), times.End().first, count);
  }
  if (hasOffsets && offsets.End().first != count) {
    problems->Note(SampleFault::kCountsDiffer, FourCC("ctts"), offsets.End().first, count);
  }
  const std::size_t rows = sync.Rows();
  if (rows > 0 && (sync.NumberAt(0) == 0 || sync.NumberAt(rows - 1) > count)) {
    problems->Note(SampleFault::kNamesAbsent, FourCC("stss"), sync.NumberAt(rows - 1), count);
  }
}

std::uint32_t SampleTables::ShadowOf(std::uint64_t number) const {
  const std::size_t rows = shadows.size() / kShadowWidth;
  const auto key = [this](std::size_t row) {
    return std::uint64_t{LoadBe32(shadows.data() + row * kShadowWidth)};
  };
  if (rows == 0 || key(0) > number) return 0;
  const std::size_t row = LastNotAbove(rows, rows / 2, number, key);
  return key(row) == number ? LoadBe32(shadows.data() + row * kShadowWidth + 4) : 0;
}

std::uint64_t SampleTables::TimeOf(std::uint64_t entry) {
  const RunRows::Place place = times.Find(entry);
  const std::uint32_t delta =
      place.row < times.Rows() ? times.ValueOf(place.row) : times.LastValue();
  return place.total + (entry - place.first) * delta;
}

std::uint64_t SampleTables::EndTime() { return TimeOf(Entries()); }

}  // namespace mp4
