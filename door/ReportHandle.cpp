#include "door/ReportHandle.h"

#include "door/ReportJson.h"

namespace mp4 {

namespace {

const char* OrNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

mp4judge_scheme ViewOf(const ReportScheme& scheme) {
  mp4judge_scheme view{};
  view.type = OrNull(scheme.type);
  view.version = scheme.version;
  view.uri = OrNull(scheme.uri);
  view.original_format = OrNull(scheme.originalFormat);
  view.default_protected = scheme.defaultProtected ? (*scheme.defaultProtected ? 1 : 0) : -1;
  view.default_key_id = scheme.defaultKeyId ? scheme.defaultKeyId->data() : nullptr;
  view.iv_size = scheme.ivSize;
  view.crypt_blocks = scheme.cryptBlocks;
  view.skip_blocks = scheme.skipBlocks;
  view.constant_iv = scheme.constantIv.empty() ? nullptr : scheme.constantIv.data();
  view.constant_iv_size = scheme.constantIv.size();
  return view;
}

mp4judge_item ViewOf(const ReportItem& item) {
  return {item.id, OrNull(item.type), item.isProtected ? 1 : 0, OrNull(item.scheme)};
}

mp4judge_system ViewOf(const ReportSystem& system) {
  return {system.id.data(),     OrNull(system.name),
          system.keyIds.size(), system.keyIds.empty() ? nullptr : system.keyIds.front().data(),
          system.payloadSize,   system.boxPath.c_str()};
}

mp4judge_evidence ViewOf(const mp4::Evidence& evidence) {
  mp4judge_evidence view{};
  view.box_path = evidence.boxPath.c_str();
  view.offset = evidence.offset.value_or(MP4JUDGE_NO_OFFSET);
  view.track = evidence.track ? std::int64_t{*evidence.track} : -1;
  view.item = evidence.item ? std::int64_t{*evidence.item} : -1;
  view.format = OrNull(evidence.format);
  view.scheme = OrNull(evidence.scheme);
  view.text = evidence.text.c_str();
  return view;
}

mp4judge_problem ViewOf(const ReportProblem& problem) {
  return {problem.boxPath.c_str(), problem.offset.value_or(MP4JUDGE_NO_OFFSET),
          problem.text.c_str(), problem.mayHide ? 1 : 0};
}

template <class From, class View>
void ViewAll(const std::vector<From>& from, std::vector<View>* views) {
  views->reserve(from.size());
  for (const From& one : from) views->push_back(ViewOf(one));
}

}  // namespace

ReportViews::ReportViews(const Report& report) {
  tracks_.reserve(report.tracks.size());
  for (const ReportTrack& track : report.tracks) AddTrack(track);
  ViewAll(report.items, &items_);
  ViewAll(report.systems, &systems_);
  ViewAll(report.evidence, &evidence_);
  ViewAll(report.problems, &problems_);
}

void ReportViews::AddTrack(const ReportTrack& track) {
  firstEntry_.push_back(entries_.size());
  tracks_.push_back(
      {track.id, OrNull(track.handler), track.isProtected ? 1 : 0, track.entries.size()});
  for (const ReportEntry& entry : track.entries) AddEntry(entry);
}

void ReportViews::AddEntry(const ReportEntry& entry) {
  firstScheme_.push_back(schemes_.size());
  entries_.push_back({entry.format.c_str(), OrNull(entry.originalFormat), entry.isProtected ? 1 : 0,
                      entry.schemes.size()});
  for (const ReportScheme& scheme : entry.schemes) schemes_.push_back(ViewOf(scheme));
}

const mp4judge_entry* ReportViews::Entry(std::size_t track, std::size_t i) const {
  const mp4judge_track* of = Track(track);
  return of != nullptr && i < of->entry_count ? &entries_[firstEntry_[track] + i] : nullptr;
}

const mp4judge_scheme* ReportViews::Scheme(std::size_t track, std::size_t entry,
                                           std::size_t i) const {
  const mp4judge_entry* of = Entry(track, entry);
  if (of == nullptr || i >= of->scheme_count) return nullptr;
  return &schemes_[firstScheme_[firstEntry_[track] + entry] + i];
}

}  // namespace mp4

const char* mp4judge_report::Json() const noexcept {
  try {
    const std::lock_guard<std::mutex> locked(jsonLock_);
    if (!json_) json_ = mp4::ReportJson(said);
    return json_->c_str();
  } catch (...) {
    return nullptr;
  }
}
