#include <cerrno>
#include <new>

#include "door/MovieHandle.h"
#include "door/RangesHandle.h"
#include "io/CallbackSource.h"
#include "io/MemorySource.h"

namespace {

mp4judge_error ErrorOf(mp4::SourceFault fault) {
  switch (fault) {
    case mp4::SourceFault::kNone:
      return MP4JUDGE_OK;
    case mp4::SourceFault::kReadFailed:
      return MP4JUDGE_ERROR_READ;
    case mp4::SourceFault::kBytesNeeded:
      return MP4JUDGE_ERROR_NEEDS_BYTES;
    case mp4::SourceFault::kNoMemory:
      break;
  }
  return MP4JUDGE_ERROR_MEMORY;
}

/// Null, with the reason in the movie, where the file does not open.
std::unique_ptr<mp4::ByteSource> OpenFile(const char* path, mp4judge_movie* movie) {
  mp4::OpenResult opening;
  std::unique_ptr<mp4::ByteSource> source = mp4::FileSource::Open(path, &opening);
  if (source != nullptr) return source;
  movie->systemError = opening.fault == mp4::OpenFault::kDirectory ? EISDIR : opening.error;
  movie->error =
      opening.fault == mp4::OpenFault::kSystem ? MP4JUDGE_ERROR_OPEN : MP4JUDGE_ERROR_NOT_A_FILE;
  if (movie->systemError == ENOMEM) movie->error = MP4JUDGE_ERROR_MEMORY;
  return nullptr;
}

/// A movie made by `fill`, which opens the sources; null without memory for the handle itself.
template <class Fill>
mp4judge_movie* Open(const Fill& fill) {
  auto* movie = new (std::nothrow) mp4judge_movie();
  if (movie == nullptr) return nullptr;
  movie->Guarded(0, [&] {
    fill(movie);
    if (movie->source != nullptr && movie->error == MP4JUDGE_OK) {
      movie->movie = std::make_unique<mp4::Movie>(movie->source, movie->ownInit.get());
    }
    return 0;
  });
  return movie;
}

}  // namespace

mp4judge_movie* mp4judge_movie_open_path(const char* path, const char* init) {
  return Open([&](mp4judge_movie* movie) {
    if (path == nullptr) {
      movie->error = MP4JUDGE_ERROR_ARGUMENT;
      return;
    }
    movie->ownSource = OpenFile(path, movie);
    movie->source = movie->ownSource.get();
    if (movie->source != nullptr && init != nullptr) movie->ownInit = OpenFile(init, movie);
  });
}

mp4judge_movie* mp4judge_movie_open_memory(const void* bytes, size_t n, const void* init,
                                           size_t init_size) {
  return Open([&](mp4judge_movie* movie) {
    movie->ownSource = std::make_unique<mp4::MemorySource>(bytes, n);
    movie->source = movie->ownSource.get();
    if (init == nullptr) return;
    movie->ownInit = std::make_unique<mp4::MemorySource>(init, init_size);
  });
}

mp4judge_movie* mp4judge_movie_open_callbacks(mp4judge_read_at read_at, mp4judge_size size,
                                              void* user) {
  return Open([&](mp4judge_movie* movie) {
    movie->ownSource = std::make_unique<mp4::CallbackSource>(read_at, size, user);
    movie->source = movie->ownSource.get();
    if (read_at == nullptr || size == nullptr) movie->error = MP4JUDGE_ERROR_ARGUMENT;
  });
}

mp4judge_movie* mp4judge_movie_open_ranges(mp4judge_ranges* ranges) {
  return Open([&](mp4judge_movie* movie) {
    if (ranges == nullptr) {
      movie->error = MP4JUDGE_ERROR_ARGUMENT;
      return;
    }
    ranges->source.StartOver();
    movie->source = &ranges->source;
  });
}

void mp4judge_movie_free(mp4judge_movie* movie) { delete movie; }

mp4judge_error mp4judge_movie_error(const mp4judge_movie* movie) {
  if (movie == nullptr) return MP4JUDGE_ERROR_MEMORY;
  if (movie->error != MP4JUDGE_OK || movie->movie == nullptr) return movie->error;
  return ErrorOf(movie->movie->Trouble().fault);
}

int mp4judge_movie_errno(const mp4judge_movie* movie) {
  if (movie == nullptr) return ENOMEM;
  if (movie->error != MP4JUDGE_OK || movie->movie == nullptr) return movie->systemError;
  return movie->movie->Trouble().error;
}

int mp4judge_movie_needs(const mp4judge_movie* movie, uint64_t* offset, uint64_t* n) {
  mp4::SourceTrouble trouble;
  if (mp4judge_movie_error(movie) == MP4JUDGE_ERROR_NEEDS_BYTES) trouble = movie->movie->Trouble();
  if (offset != nullptr) *offset = trouble.offset;
  if (n != nullptr) *n = trouble.size;
  return trouble.size > 0 ? 1 : 0;
}
