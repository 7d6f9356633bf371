#include "samples/EditList.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <set>

#include "io/FourCC.h"
#include "samples/HeldSum.h"
#include "samples/TableBytes.h"

namespace mp4 {

namespace {

/// Media that no edit shows.
constexpr std::size_t kNoEdit = ~std::size_t{0};
constexpr std::int64_t kForever = std::numeric_limits<std::int64_t>::max();

/// value x to / from, rounded down, held within 63 bits. `from` is not 0.
std::int64_t Scale(std::uint64_t value, std::uint32_t to, std::uint32_t from) {
  const std::uint64_t whole = value / from;
  const std::uint64_t rest = value % from * to / from;
  if (to != 0 && whole > static_cast<std::uint64_t>(kForever - 1) / to) return kForever;
  const std::uint64_t scaled = whole * to;
  return scaled > static_cast<std::uint64_t>(kForever) - rest
             ? kForever
             : static_cast<std::int64_t>(scaled + rest);
}

/// time x rate (16.16), for times that are not negative.
std::int64_t AtRate(std::int64_t time, std::int32_t rate) {
  if (rate <= 0) return 0;
  return Scale(static_cast<std::uint64_t>(time), static_cast<std::uint32_t>(rate), 0x10000);
}

}  // namespace

EditTimeline::EditTimeline(std::vector<Edit> edits, std::uint32_t movieScale,
                           std::uint32_t mediaScale)
    : edits_(std::move(edits)) {
  if (movieScale == 0) return;
  std::uint64_t movieTime = 0;
  segments_.reserve(edits_.size());
  for (std::size_t i = 0; i < edits_.size(); ++i) {
    const std::int64_t start = Scale(movieTime, mediaScale, movieScale);
    // The last edit of length 0 shows the rest: fragments did not exist when it was written.
    const bool rest = i + 1 == edits_.size() && edits_[i].duration == 0 && !edits_[i].IsEmpty();
    const std::uint64_t room = std::numeric_limits<std::uint64_t>::max() - movieTime;
    movieTime += edits_[i].duration < room ? edits_[i].duration : room;
    segments_.push_back({start, rest ? kForever : Scale(movieTime, mediaScale, movieScale)});
  }
  FindStretches();
}

/// Where the media that an edit shows ends: behind its last time.
std::int64_t EditTimeline::MediaEnd(std::size_t i) const {
  const Edit& edit = edits_[i];
  const std::int64_t length = segments_[i].end - segments_[i].start;
  if (edit.IsEmpty() || edit.mediaTime < 0 || edit.Rate() < 0 || length == 0) return edit.mediaTime;
  if (edit.IsDwell()) return HeldSum(edit.mediaTime, 1);
  // The last time that is still shown lies before the end, whatever the rate rounds to.
  const std::int64_t rough = AtRate(length, edit.Rate());
  std::int64_t end = HeldSum(edit.mediaTime, rough);
  while (end < kForever && Inside(i, end) < length) ++end;
  return end;
}

/// How far into its segment an edit shows a media time.
std::int64_t EditTimeline::Inside(std::size_t i, std::int64_t mediaTime) const {
  if (edits_[i].IsDwell()) return 0;
  return Scale(static_cast<std::uint64_t>(mediaTime - edits_[i].mediaTime), 0x10000,
               static_cast<std::uint32_t>(edits_[i].Rate()));
}

/// Cuts the media into stretches that the same edit is the first to show, so that a look-up does
/// not try every edit.
void EditTimeline::FindStretches() {
  struct Border {
    std::int64_t time;
    std::size_t edit;
    bool begins;
  };
  std::vector<Border> borders;
  for (std::size_t i = 0; i < segments_.size(); ++i) {
    const std::int64_t end = MediaEnd(i);
    if (end <= edits_[i].mediaTime) continue;
    borders.push_back({edits_[i].mediaTime, i, true});
    borders.push_back({end, i, false});
  }
  std::sort(borders.begin(), borders.end(),
            [](const Border& a, const Border& b) { return a.time < b.time; });
  std::set<std::size_t> open;
  for (std::size_t i = 0; i < borders.size(); ++i) {
    if (borders[i].begins) {
      open.insert(borders[i].edit);
    } else {
      open.erase(borders[i].edit);
    }
    if (i + 1 < borders.size() && borders[i + 1].time == borders[i].time) continue;
    stretches_.push_back({borders[i].time, open.empty() ? kNoEdit : *open.begin()});
  }
}

bool EditTimeline::ToPresentation(std::int64_t mediaTime, std::int64_t* presentation) const {
  if (edits_.empty()) {
    *presentation = mediaTime;
    return true;
  }
  const auto behind = std::upper_bound(
      stretches_.begin(), stretches_.end(), mediaTime,
      [](std::int64_t time, const Stretch& stretch) { return time < stretch.start; });
  if (behind == stretches_.begin()) return false;
  const std::size_t edit = std::prev(behind)->edit;
  if (edit == kNoEdit) return false;
  *presentation = HeldSum(segments_[edit].start, Inside(edit, mediaTime));
  return true;
}

bool EditTimeline::ToMedia(std::int64_t presentation, std::int64_t* mediaTime) const {
  if (edits_.empty()) {
    *mediaTime = presentation;
    return true;
  }
  const auto behind = std::upper_bound(
      segments_.begin(), segments_.end(), presentation,
      [](std::int64_t time, const Segment& segment) { return time < segment.start; });
  if (behind == segments_.begin()) return false;
  const auto i = static_cast<std::size_t>(std::prev(behind) - segments_.begin());
  const Edit& edit = edits_[i];
  if (presentation >= segments_[i].end || edit.IsEmpty() || edit.mediaTime < 0) return false;
  const std::int64_t inside = presentation - segments_[i].start;
  *mediaTime = HeldSum(edit.mediaTime, edit.IsDwell() ? 0 : AtRate(inside, edit.Rate()));
  return true;
}

std::vector<Edit> ReadEdits(BoxTree* tree, BoxId box, SampleProblems* problems) {
  const bool wide = tree->Payload(box, 0, 1).U8() == 1;
  const std::size_t width = wide ? 20 : 12;
  TableBytes bytes;
  const std::size_t rows = LoadRows(tree, box, 4, width, &bytes, problems);
  FieldView fields(bytes.data(), rows * width);
  std::vector<Edit> edits(rows);
  for (Edit& edit : edits) {
    edit.duration = wide ? fields.U64() : fields.U32();
    edit.mediaTime = wide ? fields.S64() : fields.S32();
    edit.rateInteger = fields.S16();
    edit.rateFraction = fields.U16();
  }
  return edits;
}

}  // namespace mp4
