#include <algorithm>

#include "door/MovieHandle.h"
#include "samples/SampleColumns.h"

namespace mp4 {

namespace {

int8_t Shown(Told told) {
  if (told == Told::kUnknown) return -1;
  return told == Told::kYes ? 1 : 0;
}

/// Asks a track, 0 without one.
template <class Call>
auto Ask(mp4judge_movie* movie, size_t track, const Call& call)
    -> decltype(call(static_cast<Track*>(nullptr))) {
  Track* asked = movie != nullptr ? movie->TrackAt(track) : nullptr;
  if (asked == nullptr) return 0;
  return movie->Guarded(decltype(call(asked)){}, [&] { return call(asked); });
}

}  // namespace

mp4judge_sample ShownSample(const Sample& sample) {
  mp4judge_sample shown{};
  shown.number = sample.number;
  shown.offset = sample.offset;
  shown.decode_time = sample.decodeTime;
  shown.composition_time = sample.compositionTime;
  shown.size = sample.size;
  shown.duration = sample.duration;
  shown.description = sample.description;
  shown.fragment = sample.fragment;
  shown.sync = Shown(sample.sync);
  shown.is_protected = Shown(sample.isProtected);
  shown.depends = sample.depends;
  shown.outside = sample.outside;
  shown.elsewhere = sample.elsewhere;
  shown.partial_sync = sample.partialSync;
  return shown;
}

}  // namespace mp4

using mp4::Ask;
using mp4::Track;

uint64_t mp4judge_movie_sample_count(mp4judge_movie* movie, size_t track) {
  return Ask(movie, track, [](Track* asked) { return asked->SampleCount(); });
}

int mp4judge_movie_sample(mp4judge_movie* movie, size_t track, uint64_t number,
                          mp4judge_sample* sample) {
  return Ask(movie, track, [&](Track* asked) {
    mp4::Sample found;
    if (sample == nullptr || !asked->At(number, &found)) return 0;
    *sample = mp4::ShownSample(found);
    return 1;
  });
}

uint64_t mp4judge_movie_at_decode_time(mp4judge_movie* movie, size_t track, int64_t time) {
  return Ask(movie, track, [&](Track* asked) { return asked->NumberAtDecodeTime(time); });
}

uint64_t mp4judge_movie_at_composition_time(mp4judge_movie* movie, size_t track, int64_t time) {
  return Ask(movie, track, [&](Track* asked) { return asked->NumberAtCompositionTime(time); });
}

uint64_t mp4judge_movie_at_presentation_time(mp4judge_movie* movie, size_t track, int64_t time) {
  return Ask(movie, track, [&](Track* asked) { return asked->NumberAtPresentationTime(time); });
}

uint64_t mp4judge_movie_sync_before(mp4judge_movie* movie, size_t track, uint64_t number) {
  return Ask(movie, track, [&](Track* asked) { return asked->SyncAtOrBefore(number); });
}

uint64_t mp4judge_movie_shadow_of(mp4judge_movie* movie, size_t track, uint64_t number) {
  return Ask(movie, track, [&](Track* asked) { return asked->ShadowOf(number); });
}

int mp4judge_movie_presentation_time(mp4judge_movie* movie, size_t track, int64_t composition_time,
                                     int64_t* time) {
  return Ask(movie, track, [&](Track* asked) {
    int64_t shown = 0;
    const bool any = asked->Info().timeline.ToPresentation(composition_time, &shown);
    if (time != nullptr) *time = shown;
    return any ? 1 : 0;
  });
}

size_t mp4judge_movie_read(mp4judge_movie* movie, const mp4judge_sample* sample, void* bytes,
                           size_t n) {
  if (movie == nullptr || movie->source == nullptr || sample == nullptr) return 0;
  return movie->Guarded(size_t{0}, [&] {
    return movie->source->ReadAt(sample->offset, bytes, std::min<size_t>(n, sample->size));
  });
}

size_t mp4judge_movie_columns(mp4judge_movie* movie, size_t track, uint64_t first, size_t most,
                              const mp4judge_columns* columns) {
  return Ask(movie, track, [&](Track* asked) {
    if (columns == nullptr) return size_t{0};
    mp4::SampleColumns filled;
    filled.offsets = columns->offsets;
    filled.sizes = columns->sizes;
    filled.decodeTimes = columns->decode_times;
    filled.compositionTimes = columns->composition_times;
    filled.durations = columns->durations;
    filled.flags = columns->flags;
    return mp4::FillColumns(asked, first, most, filled);
  });
}
