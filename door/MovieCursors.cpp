#include <optional>

#include "door/MovieHandle.h"
#include "samples/MovieCursor.h"

struct mp4judge_cursor {
  mp4judge_movie* movie;
  size_t track = 0;
  std::optional<mp4::SampleCursor> one;
  std::optional<mp4::MovieCursor> all;
};

mp4judge_cursor* mp4judge_cursor_new(mp4judge_movie* movie, size_t track) {
  mp4::Track* asked = movie != nullptr ? movie->TrackAt(track) : nullptr;
  if (asked == nullptr) return nullptr;
  return movie->Guarded<mp4judge_cursor*>(nullptr, [&] {
    auto cursor = std::make_unique<mp4judge_cursor>();
    cursor->movie = movie;
    cursor->track = track;
    cursor->one.emplace(asked);
    return cursor.release();
  });
}

mp4judge_cursor* mp4judge_cursor_of_all(mp4judge_movie* movie, mp4judge_order order) {
  if (movie == nullptr || movie->movie == nullptr || movie->error == MP4JUDGE_ERROR_MEMORY) {
    return nullptr;
  }
  return movie->Guarded<mp4judge_cursor*>(nullptr, [&] {
    auto cursor = std::make_unique<mp4judge_cursor>();
    cursor->movie = movie;
    cursor->all.emplace(movie->movie.get(), order == MP4JUDGE_DECODE_ORDER
                                                ? mp4::MovieCursor::Order::kDecodeTime
                                                : mp4::MovieCursor::Order::kFile);
    return cursor.release();
  });
}

int mp4judge_cursor_next(mp4judge_cursor* cursor, mp4judge_sample* sample, size_t* track) {
  if (cursor == nullptr || sample == nullptr || cursor->movie->error == MP4JUDGE_ERROR_MEMORY) {
    return 0;
  }
  return cursor->movie->Guarded(0, [&] {
    mp4::Sample next;
    size_t index = cursor->track;
    const bool any = cursor->one ? cursor->one->Next(&next) : cursor->all->Next(&index, &next);
    if (!any) return 0;
    *sample = mp4::ShownSample(next);
    if (track != nullptr) *track = index;
    return 1;
  });
}

int mp4judge_cursor_seek(mp4judge_cursor* cursor, uint64_t number) {
  if (cursor == nullptr || !cursor->one || cursor->movie->error == MP4JUDGE_ERROR_MEMORY) return 0;
  return cursor->movie->Guarded(0, [&] { return cursor->one->Seek(number) ? 1 : 0; });
}

void mp4judge_cursor_free(mp4judge_cursor* cursor) { delete cursor; }
