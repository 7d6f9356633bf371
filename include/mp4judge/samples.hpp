/// @file
/// mp4judge/samples.hpp: mp4judge/samples.h for C++17. Handles that free themselves, and samples in
/// a range-based for:
///
///     mp4judge::Movie movie = mp4judge::Movie::OfPath("film.mp4");
///     for (const mp4judge_sample& sample : movie.Samples(0)) ...
///
/// Nothing throws.
#ifndef MP4JUDGE_SAMPLES_HPP
#define MP4JUDGE_SAMPLES_HPP

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>

#include "mp4judge/samples.h"

namespace mp4judge {

/// The samples of a track, or of all tracks together, once from the first to the last. Must not
/// outlive its movie.
class SampleRange {
 public:
  /// Takes a cursor over. Null is a range without samples.
  explicit SampleRange(mp4judge_cursor* cursor) : cursor_(cursor) {}

  /// The next sample; false behind the last one.
  bool Next(mp4judge_sample* sample, std::size_t* track = nullptr) {
    return mp4judge_cursor_next(cursor_.get(), sample, track) != 0;
  }
  /// For one track: the next sample will be this one.
  bool Seek(std::uint64_t number) { return mp4judge_cursor_seek(cursor_.get(), number) != 0; }

  /// An input iterator.
  class Iterator {
   public:
    /// @cond
    using iterator_category = std::input_iterator_tag;
    using value_type = mp4judge_sample;
    using difference_type = std::ptrdiff_t;
    using pointer = const mp4judge_sample*;
    using reference = const mp4judge_sample&;

    Iterator() = default;
    explicit Iterator(SampleRange* range) : range_(range) { ++*this; }
    reference operator*() const { return sample_; }
    pointer operator->() const { return &sample_; }
    Iterator& operator++() {
      if (!range_->Next(&sample_, &track_)) range_ = nullptr;
      return *this;
    }
    /// @endcond
    /// The sample's track.
    std::size_t Track() const { return track_; }
    /// @cond
    bool operator==(const Iterator& other) const { return range_ == other.range_; }
    bool operator!=(const Iterator& other) const { return range_ != other.range_; }
    /// @endcond

   private:
    SampleRange* range_ = nullptr;
    mp4judge_sample sample_{};
    std::size_t track_ = 0;
  };
  /// For loops: goes on from where the range is.
  Iterator begin() { return Iterator(this); }
  /// For loops.
  Iterator end() { return Iterator(); }

 private:
  struct Free {
    void operator()(mp4judge_cursor* cursor) const { mp4judge_cursor_free(cursor); }
  };
  std::unique_ptr<mp4judge_cursor, Free> cursor_;
};

/// A movie and its samples. What is said in samples.h of functions and lifetimes holds here, too.
class Movie {
 public:
  /// Opens a file; `init` is the initialization of a media segment, or null.
  static Movie OfPath(const char* path, const char* init = nullptr) noexcept {
    return Movie(mp4judge_movie_open_path(path, init));
  }
  /// The same for memory, which must last as long as the movie.
  static Movie OfMemory(const void* bytes, std::size_t n, const void* init = nullptr,
                        std::size_t initSize = 0) noexcept {
    return Movie(mp4judge_movie_open_memory(bytes, n, init, initSize));
  }
  /// The same for what two callbacks deliver.
  static Movie OfCallbacks(mp4judge_read_at readAt, mp4judge_size size, void* user) noexcept {
    return Movie(mp4judge_movie_open_callbacks(readAt, size, user));
  }
  /// The same for ranges that are brought; Needs() says which.
  static Movie OfRanges(mp4judge_ranges* ranges) noexcept {
    return Movie(mp4judge_movie_open_ranges(ranges));
  }

  /// MP4JUDGE_OK while everything could be read that was wanted so far.
  mp4judge_error Error() const { return mp4judge_movie_error(get()); }
  /// The errno that belongs to the error, or what a callback answered; 0 when there is none.
  int SystemError() const { return mp4judge_movie_errno(get()); }
  /// Whether bytes have to be brought, and which. Either pointer may be null.
  bool Needs(std::uint64_t* offset, std::uint64_t* n) const {
    return mp4judge_movie_needs(get(), offset, n) != 0;
  }

  /// Tracks known so far; once samples were asked for, those that only fragments name, too.
  std::size_t TrackCount() const { return mp4judge_movie_track_count(get()); }
  /// Null behind the last one.
  const mp4judge_movie_track* Track(std::size_t track) const {
    return mp4judge_movie_track_at(get(), track);
  }
  /// Units a second of the movie; 0 without a movie box.
  std::uint32_t Timescale() const { return mp4judge_movie_timescale(get()); }

  /// How many samples a track (from 0) lists.
  std::uint64_t SampleCount(std::size_t track) const {
    return mp4judge_movie_sample_count(get(), track);
  }
  /// Sample `number`, from 1; nothing when there is none.
  std::optional<mp4judge_sample> Sample(std::size_t track, std::uint64_t number) const {
    mp4judge_sample sample;
    if (mp4judge_movie_sample(get(), track, number, &sample) == 0) return std::nullopt;
    return sample;
  }
  /// The last sample whose decode time is at or before `time`, in units of the track; 0: none.
  std::uint64_t AtDecodeTime(std::size_t track, std::int64_t time) const {
    return mp4judge_movie_at_decode_time(get(), track, time);
  }
  /// The sample with the greatest composition time at or before `time`; 0: none.
  std::uint64_t AtCompositionTime(std::size_t track, std::int64_t time) const {
    return mp4judge_movie_at_composition_time(get(), track, time);
  }
  /// The sample shown at a time of the presentation, through the edit list; 0: none.
  std::uint64_t AtPresentationTime(std::size_t track, std::int64_t time) const {
    return mp4judge_movie_at_presentation_time(get(), track, time);
  }
  /// The last sync sample up to `number`; 0: none.
  std::uint64_t SyncBefore(std::size_t track, std::uint64_t number) const {
    return mp4judge_movie_sync_before(get(), track, number);
  }
  /// When a composition time is presented, in units of the track; nothing when no edit shows it.
  std::optional<std::int64_t> PresentationTime(std::size_t track,
                                               std::int64_t compositionTime) const {
    std::int64_t time = 0;
    if (mp4judge_movie_presentation_time(get(), track, compositionTime, &time) == 0) {
      return std::nullopt;
    }
    return time;
  }
  /// Copies up to `n` bytes of a sample; how many there were.
  std::size_t Read(const mp4judge_sample& sample, void* bytes, std::size_t n) const {
    return mp4judge_movie_read(get(), &sample, bytes, n);
  }
  /// The sync sample that may stand in for a sample; 0 without one.
  std::uint64_t ShadowOf(std::size_t track, std::uint64_t number) const {
    return mp4judge_movie_shadow_of(get(), track, number);
  }
  /// What the track tells of its composition times.
  std::optional<mp4judge_composition> Composition(std::size_t track) const {
    mp4judge_composition composition;
    if (mp4judge_movie_composition(get(), track, &composition) == 0) return std::nullopt;
    return composition;
  }
  /// The last fragment that begins at or before a composition time, found without reading all.
  std::optional<mp4judge_fragment> FragmentAt(std::size_t track, std::int64_t time) const {
    mp4judge_fragment fragment;
    if (mp4judge_movie_fragment_at(get(), track, time, &fragment) == 0) return std::nullopt;
    return fragment;
  }
  /// Fills columns with up to `most` samples from number `first` on; how many there were.
  std::size_t Columns(std::size_t track, std::uint64_t first, std::size_t most,
                      const mp4judge_columns& columns) const {
    return mp4judge_movie_columns(get(), track, first, most, &columns);
  }

  /// The samples of a track, for loops.
  SampleRange Samples(std::size_t track) const {
    return SampleRange(mp4judge_cursor_new(get(), track));
  }
  /// Those of all tracks together.
  SampleRange AllSamples(mp4judge_order order) const {
    return SampleRange(mp4judge_cursor_of_all(get(), order));
  }

  /// The handle, for functions that have no member here.
  mp4judge_movie* get() const { return movie_.get(); }

 private:
  struct Free {
    void operator()(mp4judge_movie* movie) const { mp4judge_movie_free(movie); }
  };
  explicit Movie(mp4judge_movie* movie) : movie_(movie) {}
  std::unique_ptr<mp4judge_movie, Free> movie_;
};

}  // namespace mp4judge

#endif
