#include "samples/MediaLayout.h"

#include <algorithm>

#include "samples/SampleCursor.h"

namespace mp4 {

namespace {

/// Parts of the time, of all tracks together.
constexpr std::size_t kMostParts = std::size_t{1} << 18;

/// Collects stretches; the gap that is passed over grows when there are too many.
class ExtentCollector {
 public:
  void Add(std::uint64_t offset, std::uint64_t size) {
    if (size == 0 || offset + size < offset) return;
    if (!extents_.empty() && Joins(extents_.back(), offset)) {
      extents_.back().end = std::max(extents_.back().end, offset + size);
      extents_.back().bytes += size;
      return;
    }
    extents_.push_back({offset, offset + size, size});
    if (extents_.size() >= 2 * kMostExtents) Thin();
  }
  std::vector<MediaExtent> Take() {
    Merge();
    while (extents_.size() > kMostExtents) Thin();
    return std::move(extents_);
  }

 private:
  bool Joins(const MediaExtent& last, std::uint64_t offset) const {
    return offset >= last.offset && (offset <= last.end || offset - last.end <= gap_);
  }
  void Thin() {
    while (extents_.size() > kMostExtents) {
      gap_ = gap_ == 0 ? 64 : gap_ * 2;
      Merge();
    }
  }
  void Merge() {
    std::sort(extents_.begin(), extents_.end(),
              [](const MediaExtent& a, const MediaExtent& b) { return a.offset < b.offset; });
    std::size_t kept = 0;
    for (std::size_t i = 1; i < extents_.size(); ++i) {
      MediaExtent& last = extents_[kept];
      if (Joins(last, extents_[i].offset)) {
        last.end = std::max(last.end, extents_[i].end);
        last.bytes += extents_[i].bytes;
      } else {
        extents_[++kept] = extents_[i];
      }
    }
    if (!extents_.empty()) extents_.resize(kept + 1);
  }

  std::vector<MediaExtent> extents_;
  std::uint64_t gap_ = 0;
};

double SecondsAt(std::int64_t time, const Track& track) {
  const std::uint32_t timescale = track.Info().timescale;
  return timescale == 0 ? 0 : static_cast<double>(time) / timescale;
}

/// The stretches, and where the track's time ends.
double CollectExtents(Track* track, std::uint64_t most, TrackLayout* layout) {
  ExtentCollector collector;
  SampleCursor cursor(track);
  Sample sample;
  std::uint64_t walked = 0;
  double end = 0;
  while (walked < most && cursor.Next(&sample)) {
    ++walked;
    if (!sample.elsewhere) collector.Add(sample.offset, sample.size);
    const double last = SecondsAt(sample.decodeTime, *track) + SecondsAt(sample.duration, *track);
    end = std::max(end, last);
  }
  layout->whole = walked == track->SampleCount();
  layout->extents = collector.Take();
  return end;
}

void CollectBytes(Track* track, double seconds, std::size_t parts, std::uint64_t most,
                  TrackLayout* layout) {
  layout->bytes.assign(parts, 0);
  if (!(seconds > 0) || parts == 0) return;
  SampleCursor cursor(track);
  Sample sample;
  for (std::uint64_t walked = 0; walked < most && cursor.Next(&sample); ++walked) {
    const double at = SecondsAt(sample.decodeTime, *track) / seconds * static_cast<double>(parts);
    const double last = static_cast<double>(parts - 1);
    layout->bytes[static_cast<std::size_t>(std::clamp(at, 0.0, last))] += sample.size;
  }
}

}  // namespace

MediaLayout LayoutOf(Movie* movie, std::size_t parts, std::uint64_t most) {
  MediaLayout layout;
  movie->ReadFragments();
  std::uint64_t left = most;
  std::vector<std::uint64_t> mosts;
  for (const auto& track : movie->Tracks()) {
    layout.tracks.emplace_back();
    const double end = CollectExtents(track.get(), left, &layout.tracks.back());
    layout.seconds = std::max(layout.seconds, end);
    mosts.push_back(left);
    left -= std::min(left, track->SampleCount());
  }
  parts = std::min(parts, kMostParts / (layout.tracks.size() + 1) + 1);
  for (std::size_t i = 0; i < layout.tracks.size(); ++i) {
    CollectBytes(movie->Tracks()[i].get(), layout.seconds, parts, mosts[i], &layout.tracks[i]);
  }
  return layout;
}

}  // namespace mp4
