#pragma once

#include <memory>
#include <string>
#include <vector>

#include "io/ByteSource.h"
#include "io/FileSource.h"
#include "mp4judge/samples.h"
#include "samples/Movie.h"

namespace mp4 {

/// A track as the interface shows it, with the texts and edits that it points to.
struct TrackView {
  mp4judge_movie_track track{};
  std::string handler, format, codec, scheme, configType;
  std::vector<mp4judge_edit> edits;
  std::vector<std::string> problems;
  bool problemsRead = false;
};

}  // namespace mp4

struct mp4judge_movie {
  mp4judge_error error = MP4JUDGE_OK;  ///< of opening, or MP4JUDGE_ERROR_MEMORY
  int systemError = 0;
  std::unique_ptr<mp4::ByteSource> ownSource, ownInit;
  mp4::ByteSource* source = nullptr;
  std::unique_ptr<mp4::Movie> movie;  ///< null when there is nothing to list
  std::vector<std::unique_ptr<mp4::TrackView>> views;
  std::vector<std::string> problems;

  /// The track of an index, null without one or after memory was refused.
  mp4::Track* TrackAt(size_t track) const {
    if (movie == nullptr || error == MP4JUDGE_ERROR_MEMORY) return nullptr;
    return track < movie->Tracks().size() ? movie->Tracks()[track].get() : nullptr;
  }
  /// Calls, and gives `none` where memory is refused: after that nothing is listed any more.
  template <class Result, class Call>
  Result Guarded(Result none, const Call& call) {
    try {
      return call();
    } catch (...) {
      error = MP4JUDGE_ERROR_MEMORY;
      return none;
    }
  }
};

namespace mp4 {

mp4judge_sample ShownSample(const Sample& sample);

}  // namespace mp4
