#include "tools/SamplesCommand.h"

#include <sys/stat.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <memory>

#include "mp4judge/samples.h"
#include "tools/JudgeOptions.h"
#include "tools/Output.h"
#include "tools/Printable.h"
#include "tools/Sandbox.h"

namespace tool {

namespace {

struct FreeMovie {
  void operator()(mp4judge_movie* movie) const { mp4judge_movie_free(movie); }
};
struct FreeCursor {
  void operator()(mp4judge_cursor* cursor) const { mp4judge_cursor_free(cursor); }
};
using MovieHandle = std::unique_ptr<mp4judge_movie, FreeMovie>;
using CursorHandle = std::unique_ptr<mp4judge_cursor, FreeCursor>;

/// A few bytes can claim billions of samples of one size, or of none: what no file of that size
/// holds is not listed unless it is asked for.
std::uint64_t LikelySamples(const std::string& path) {
  constexpr std::uint64_t kOfAnyFile = 2000000;
  struct stat info {};
  const bool known = stat(path.c_str(), &info) == 0 && info.st_size > 0;
  return kOfAnyFile + (known ? static_cast<std::uint64_t>(info.st_size) / 4 : 0);
}

/// 1 and 0 as they are said, anything else as what cannot be told.
const char* Said(int value, const char* yes, const char* no, const char* unknown) {
  return value == 1 ? yes : value == 0 ? no : unknown;
}

void PrintJson(std::uint32_t track, const mp4judge_sample& sample) {
  std::printf("{\"track\":%" PRIu32 ",\"sample\":%" PRIu64 ",\"offset\":%" PRId64
              ",\"size\":%" PRIu32 ",\"dts\":%" PRId64 ",\"cts\":%" PRId64 ",\"duration\":%" PRIu32
              ",\"sync\":%s,\"description\":",
              track, sample.number, static_cast<std::int64_t>(sample.offset), sample.size,
              sample.decode_time, sample.composition_time, sample.duration,
              Said(sample.sync, "true", "false", "null"));
  if (sample.description > 0) {
    std::printf("%" PRIu32, sample.description);
  } else {
    std::fputs("null", stdout);
  }
  std::printf(",\"protected\":%s", Said(sample.is_protected, "true", "false", "null"));
  if (sample.fragment > 0) std::printf(",\"fragment\":%" PRIu32, sample.fragment);
  if (sample.outside != 0) std::fputs(",\"outside\":true", stdout);
  if (sample.elsewhere != 0) std::fputs(",\"external\":true", stdout);
  std::fputs("}\n", stdout);
}

void PrintRow(const char* format, std::uint32_t track, const mp4judge_sample& sample) {
  std::printf(format, track, sample.number, static_cast<std::int64_t>(sample.offset), sample.size,
              sample.decode_time, sample.composition_time, sample.duration,
              Said(sample.sync, "1", "0", ""), sample.description,
              Said(sample.is_protected, "1", "0", ""), sample.fragment, sample.outside);
}

constexpr const char* kCsvHeader =
    "track,sample,offset,size,dts,cts,duration,sync,description,protected,fragment,outside\n";
constexpr const char* kCsvRow = "%" PRIu32 ",%" PRIu64 ",%" PRId64 ",%" PRIu32 ",%" PRId64
                                ",%" PRId64 ",%" PRIu32 ",%s,%" PRIu32 ",%s,%" PRIu32 ",%u\n";
constexpr const char* kTextHeader =
    "track   sample         offset      size            dts            cts  duration sync desc "
    "prot "
    "fragment outside\n";
constexpr const char* kTextRow =
    "%5" PRIu32 " %8" PRIu64 " %14" PRId64 " %9" PRIu32 " %14" PRId64 " %14" PRId64 " %9" PRIu32
    " %4s %4" PRIu32 " %4s %8" PRIu32 " %7u\n";

class Lister {
 public:
  Lister(const SamplesOptions& options, mp4judge_movie* movie)
      : options_(options),
        movie_(movie),
        left_(options.most.has_value() ? *options.most : LikelySamples(options.file)) {}

  int Go() {
    if (mp4judge_movie_error(movie_) != MP4JUDGE_OK) return Finish();
    if (!options_.json) std::fputs(options_.csv ? kCsvHeader : kTextHeader, stdout);
    // Tracks that fragments alone name are known once the fragments have been looked at.
    if (mp4judge_movie_track_count(movie_) == 0) mp4judge_movie_sample_count(movie_, 0);
    for (std::size_t i = 0; i < mp4judge_movie_track_count(movie_) && !stopped_; ++i) ListTrack(i);
    if (stopped_) Complain("there are more samples than were listed; --most N lists more");
    Problems(SIZE_MAX);
    return Finish();
  }

 private:
  void ListTrack(std::size_t place) {
    const std::uint32_t id = mp4judge_movie_track_at(movie_, place)->id;
    if (options_.track.has_value() && *options_.track != id) return;
    seen_ = true;
    const CursorHandle cursor(mp4judge_cursor_new(movie_, place));
    mp4judge_sample sample;
    while (mp4judge_cursor_next(cursor.get(), &sample, nullptr) != 0 && std::ferror(stdout) == 0) {
      if (left_ == 0) {
        stopped_ = true;
        break;
      }
      --left_;
      if (options_.json) {
        PrintJson(id, sample);
      } else {
        PrintRow(options_.csv ? kCsvRow : kTextRow, id, sample);
      }
    }
    Problems(place);
  }

  void Problems(std::size_t place) {
    for (std::size_t i = 0; i < mp4judge_movie_problem_count(movie_, place); ++i) {
      Complain(mp4judge_movie_problem(movie_, place, i));
    }
  }

  void Complain(const char* what) {
    std::fprintf(stderr, "mp4judge: %s: %s\n", Printable(options_.file).c_str(), what);
    trouble_ = true;
  }

  int Finish() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
      Complain("the output cannot be written");
    const mp4judge_error error = mp4judge_movie_error(movie_);
    if (error != MP4JUDGE_OK) {
      const int number = mp4judge_movie_errno(movie_);
      Complain(number > 0 ? std::strerror(number) : mp4judge_error_text(error));
    } else if (!seen_) {
      Complain(options_.track.has_value() ? "there is no such track" : "there is no track");
    }
    return trouble_ ? kTrouble : kAllClear;
  }

  const SamplesOptions& options_;
  mp4judge_movie* movie_;
  std::uint64_t left_;
  bool stopped_ = false;
  bool seen_ = false;
  bool trouble_ = false;
};

}  // namespace

int RunSamples(const SamplesOptions& options) {
  if (options.sandbox) ConfineToReading();
  if (!CheckMovie(options.file)) return kTrouble;
  const char* init = options.init.empty() ? nullptr : options.init.c_str();
  const MovieHandle movie(mp4judge_movie_open_path(options.file.c_str(), init));
  return Lister(options, movie.get()).Go();
}

}  // namespace tool
