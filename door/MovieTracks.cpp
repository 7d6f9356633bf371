#include "door/MovieHandle.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

/// The text of a type, null for 0.
const char* TextOf(std::uint32_t type, std::string* text) {
  if (type == 0) return nullptr;
  AppendType(type, text);
  return text->c_str();
}

void ShowDescription(const Description& d, TrackView* view) {
  mp4judge_movie_track& track = view->track;
  track.format = TextOf(d.format, &view->format);
  track.codec = TextOf(d.Codec(), &view->codec);
  track.scheme = TextOf(d.scheme, &view->scheme);
  track.width = d.width;
  track.height = d.height;
  track.channels = d.channels;
  track.sample_rate = d.rate;
  track.config_type = TextOf(d.configType, &view->configType);
  if (d.configType != 0) track.config = d.config.data();
  track.config_size = d.config.size();
}

std::unique_ptr<TrackView> ViewOf(const TrackInfo& info) {
  auto view = std::make_unique<TrackView>();
  mp4judge_movie_track& track = view->track;
  track.id = info.id;
  track.in_movie = info.inMovie ? 1 : 0;
  track.handler = TextOf(info.handler, &view->handler);
  track.is_protected = info.IsProtected() ? 1 : 0;
  track.description_count = info.descriptions.size();
  track.timescale = info.timescale;
  track.duration = info.duration ? static_cast<int64_t>(*info.duration) : -1;
  track.language = info.language.c_str();
  if (!info.descriptions.empty()) ShowDescription(info.descriptions.front(), view.get());
  for (const Edit& edit : info.timeline.Edits()) {
    view->edits.push_back({edit.duration, edit.mediaTime, edit.Rate()});
  }
  track.edit_count = view->edits.size();
  track.edits = view->edits.empty() ? nullptr : view->edits.data();
  return view;
}

/// The view of a track, which the movie keeps. The track exists.
TrackView* ViewAt(mp4judge_movie* movie, size_t track) {
  if (movie->views.size() <= track) movie->views.resize(track + 1);
  if (movie->views[track] == nullptr) {
    movie->views[track] = ViewOf(movie->movie->Tracks()[track]->Info());
  }
  return movie->views[track].get();
}

std::vector<std::string> TextsOf(const SampleProblems& problems) {
  std::vector<std::string> texts;
  for (const SampleProblem& problem : problems.Kept()) texts.push_back(mp4::TextOf(problem));
  return texts;
}

const std::vector<std::string>* ProblemsOf(mp4judge_movie* movie, size_t track) {
  if (movie == nullptr || movie->movie == nullptr) return nullptr;
  return movie->Guarded<const std::vector<std::string>*>(
      nullptr, [&]() -> const std::vector<std::string>* {
        if (track == SIZE_MAX) {
          movie->movie->ReadFragments();
          movie->problems = TextsOf(movie->movie->Problems());
          return &movie->problems;
        }
        Track* asked = movie->TrackAt(track);
        if (asked == nullptr) return nullptr;
        TrackView* view = ViewAt(movie, track);
        if (!view->problemsRead) view->problems = TextsOf(asked->Problems());
        view->problemsRead = true;
        return &view->problems;
      });
}

}  // namespace

}  // namespace mp4

size_t mp4judge_movie_track_count(const mp4judge_movie* movie) {
  if (movie == nullptr || movie->movie == nullptr || movie->error == MP4JUDGE_ERROR_MEMORY)
    return 0;
  return movie->movie->Tracks().size();
}

const mp4judge_movie_track* mp4judge_movie_track_at(mp4judge_movie* movie, size_t track) {
  if (movie == nullptr || movie->TrackAt(track) == nullptr) return nullptr;
  return movie->Guarded<const mp4judge_movie_track*>(
      nullptr, [&] { return &mp4::ViewAt(movie, track)->track; });
}

uint32_t mp4judge_movie_timescale(const mp4judge_movie* movie) {
  return movie != nullptr && movie->movie != nullptr ? movie->movie->Timescale() : 0;
}

size_t mp4judge_movie_problem_count(mp4judge_movie* movie, size_t track) {
  const std::vector<std::string>* problems = mp4::ProblemsOf(movie, track);
  return problems != nullptr ? problems->size() : 0;
}

const char* mp4judge_movie_problem(mp4judge_movie* movie, size_t track, size_t i) {
  const std::vector<std::string>* problems = mp4::ProblemsOf(movie, track);
  return problems != nullptr && i < problems->size() ? (*problems)[i].c_str() : nullptr;
}
