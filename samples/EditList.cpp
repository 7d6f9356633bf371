#include "samples/EditList.h"

#include <limits>

#include "io/FourCC.h"
#include "samples/TableBytes.h"

namespace mp4 {

namespace {

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

std::int64_t AddHeld(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a, b, &sum)) return sum;
  return b > 0 ? kForever : std::numeric_limits<std::int64_t>::min();
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
}

bool EditTimeline::ToPresentation(std::int64_t mediaTime, std::int64_t* presentation) const {
  if (edits_.empty()) {
    *presentation = mediaTime;
    return true;
  }
  for (std::size_t i = 0; i < segments_.size(); ++i) {
    const Edit& edit = edits_[i];
    if (edit.IsEmpty() || edit.mediaTime < 0) continue;
    const std::int64_t length = segments_[i].end - segments_[i].start;
    if (edit.IsDwell()) {
      if (mediaTime != edit.mediaTime || length == 0) continue;
      *presentation = segments_[i].start;
      return true;
    }
    if (edit.Rate() < 0 || mediaTime < edit.mediaTime) continue;
    const std::int64_t inside = Scale(static_cast<std::uint64_t>(mediaTime - edit.mediaTime),
                                      0x10000, static_cast<std::uint32_t>(edit.Rate()));
    if (inside >= length) continue;
    *presentation = AddHeld(segments_[i].start, inside);
    return true;
  }
  return false;
}

bool EditTimeline::ToMedia(std::int64_t presentation, std::int64_t* mediaTime) const {
  if (edits_.empty()) {
    *mediaTime = presentation;
    return true;
  }
  for (std::size_t i = 0; i < segments_.size(); ++i) {
    if (presentation < segments_[i].start || presentation >= segments_[i].end) continue;
    const Edit& edit = edits_[i];
    if (edit.IsEmpty() || edit.mediaTime < 0) return false;
    const std::int64_t inside = presentation - segments_[i].start;
    *mediaTime = AddHeld(edit.mediaTime, edit.IsDwell() ? 0 : AtRate(inside, edit.Rate()));
    return true;
  }
  return false;
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
