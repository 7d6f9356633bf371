/* The places of a movie's key frames as CSV: key_frames FILE [INIT] */
#include <stdio.h>

#include "mp4judge/samples.h"

static void list_track(mp4judge_movie* movie, size_t index) {
  const mp4judge_movie_track* track = mp4judge_movie_track_at(movie, index);
  mp4judge_cursor* cursor = mp4judge_cursor_new(movie, index);
  mp4judge_sample sample;
  while (mp4judge_cursor_next(cursor, &sample, NULL)) {
    int64_t time = 0;
    if (sample.sync != 1 || track->timescale == 0) continue;
    /* Frames that no edit shows have no time. */
    printf("%u,%llu,", track->id, (unsigned long long)sample.number);
    if (mp4judge_movie_presentation_time(movie, index, sample.composition_time, &time)) {
      printf("%.3f", (double)time / track->timescale);
    }
    printf(",%llu,%u\n", (unsigned long long)sample.offset, sample.size);
  }
  mp4judge_cursor_free(cursor);
}

int main(int argc, char** argv) {
  mp4judge_movie* movie;
  size_t i;
  int failed;
  if (argc < 2) {
    fprintf(stderr, "usage: key_frames FILE [INIT]\n");
    return 2;
  }
  movie = mp4judge_movie_open_path(argv[1], argc > 2 ? argv[2] : NULL);
  puts("track,sample,seconds,offset,bytes");
  for (i = 0; i < mp4judge_movie_track_count(movie); ++i) {
    const mp4judge_movie_track* track = mp4judge_movie_track_at(movie, i);
    if (track->handler != NULL && track->handler[0] == 'v') list_track(movie, i);
  }
  failed = mp4judge_movie_error(movie) != MP4JUDGE_OK;
  if (failed) fprintf(stderr, "%s\n", mp4judge_error_text(mp4judge_movie_error(movie)));
  mp4judge_movie_free(movie);
  return failed ? 2 : 0;
}
