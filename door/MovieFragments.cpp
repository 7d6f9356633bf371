#include "door/MovieHandle.h"

int mp4judge_movie_fragment_at(mp4judge_movie* movie, size_t track, int64_t time,
                               mp4judge_fragment* fragment) {
  mp4::Track* asked = movie != nullptr ? movie->TrackAt(track) : nullptr;
  if (asked == nullptr || fragment == nullptr) return 0;
  return movie->Guarded(0, [&] {
    const auto place = movie->movie->FragmentAt(*asked, time);
    if (!place) return 0;
    fragment->offset = place->offset;
    fragment->decode_time = place->decodeTime ? static_cast<int64_t>(*place->decodeTime) : -1;
    fragment->found_by = static_cast<mp4judge_found_by>(place->by);
    return 1;
  });
}

int mp4judge_movie_composition(mp4judge_movie* movie, size_t track,
                               mp4judge_composition* composition) {
  mp4::Track* asked = movie != nullptr ? movie->TrackAt(track) : nullptr;
  if (asked == nullptr || composition == nullptr || !asked->Info().composition) return 0;
  const mp4::CompositionRange& range = *asked->Info().composition;
  *composition = {range.shift, range.leastOffset, range.greatestOffset, range.start, range.end};
  return 1;
}
