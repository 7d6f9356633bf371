#include "samples/MovieCursor.h"

#include <algorithm>

namespace mp4 {

MovieCursor::MovieCursor(Movie* movie, Order order) : order_(order) {
  movie->ReadFragments();
  const std::size_t tracks = movie->Tracks().size();
  lanes_.reserve(tracks);
  for (std::size_t i = 0; i < tracks; ++i) {
    Track* track = movie->Tracks()[i].get();
    lanes_.emplace_back(track, i);
    lanes_.back().timescale = std::max(track->Info().timescale, 1U);
    if (order == Order::kFile) SortStretches(track, &lanes_.back());
    if (Advance(&lanes_.back())) heap_.push_back(i);
  }
  std::make_heap(heap_.begin(), heap_.end(),
                 [this](std::size_t a, std::size_t b) { return IsBehind(lanes_[a], lanes_[b]); });
}

/// Leaves the list empty where offsets rise with the numbers, as they mostly do.
void MovieCursor::SortStretches(Track* track, Lane* lane) const {
  bool rise = true;
  std::uint64_t last = 0;
  track->EachStretch([&](const Track::Stretch& stretch) {
    rise = rise && stretch.offset >= last;
    last = stretch.offset;
  });
  if (rise) return;
  track->EachStretch([&](const Track::Stretch& stretch) { lane->stretches.push_back(stretch); });
  std::stable_sort(
      lane->stretches.begin(), lane->stretches.end(),
      [](const Track::Stretch& a, const Track::Stretch& b) { return a.offset < b.offset; });
}

bool MovieCursor::Advance(Lane* lane) {
  if (!lane->stretches.empty() && lane->next.number == lane->lastOfStretch) {
    if (lane->stretch == lane->stretches.size()) return false;
    const Track::Stretch& stretch = lane->stretches[lane->stretch++];
    lane->lastOfStretch = stretch.first + stretch.samples - 1;
    lane->cursor.Seek(stretch.first);
  }
  return lane->cursor.Next(&lane->next);
}

bool MovieCursor::IsBehind(const Lane& a, const Lane& b) const {
  if (order_ == Order::kFile) {
    if (a.next.offset != b.next.offset) return a.next.offset > b.next.offset;
  } else {
    using Wide = __int128;
    const Wide left = Wide{a.next.decodeTime} * b.timescale;
    const Wide right = Wide{b.next.decodeTime} * a.timescale;
    if (left != right) return left > right;
  }
  return a.index > b.index;
}

bool MovieCursor::Next(std::size_t* track, Sample* sample) {
  if (heap_.empty()) return false;
  const auto behind = [this](std::size_t a, std::size_t b) {
    return IsBehind(lanes_[a], lanes_[b]);
  };
  std::pop_heap(heap_.begin(), heap_.end(), behind);
  Lane& lane = lanes_[heap_.back()];
  *track = lane.index;
  *sample = lane.next;
  if (Advance(&lane)) {
    std::push_heap(heap_.begin(), heap_.end(), behind);
  } else {
    heap_.pop_back();
  }
  return true;
}

}  // namespace mp4
