#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "inspect/Report.h"
#include "mp4judge/mp4judge.h"

namespace mp4 {

/// What the door adds to what the inspector found.
struct Judged {
  Report report;
  std::optional<std::string> path;  ///< what the source is called, byte for byte
  mp4judge_error error = MP4JUDGE_OK;
  int systemError = 0;                       ///< errno, or what a callback answered
  std::optional<mp4judge_host_answer> host;  ///< none when it was not asked for
  std::string hostDifference;                ///< empty when the two agree
};

/// A report as the C interface shows it: structures that point into the texts of the report.
class ReportViews {
 public:
  /// `report` is borrowed and must not change. May throw bad_alloc.
  explicit ReportViews(const Report& report);

  const mp4judge_track* Track(std::size_t i) const { return At(tracks_, i); }
  const mp4judge_entry* Entry(std::size_t track, std::size_t i) const;
  const mp4judge_scheme* Scheme(std::size_t track, std::size_t entry, std::size_t i) const;
  const mp4judge_item* Item(std::size_t i) const { return At(items_, i); }
  const mp4judge_system* System(std::size_t i) const { return At(systems_, i); }
  const mp4judge_evidence* Evidence(std::size_t i) const { return At(evidence_, i); }
  const mp4judge_problem* Problem(std::size_t i) const { return At(problems_, i); }

 private:
  template <class T>
  static const T* At(const std::vector<T>& all, std::size_t i) {
    return i < all.size() ? &all[i] : nullptr;
  }
  void AddTrack(const ReportTrack& track);
  void AddEntry(const ReportEntry& entry);

  std::vector<mp4judge_track> tracks_;
  std::vector<mp4judge_entry> entries_;   ///< of all tracks
  std::vector<std::size_t> firstEntry_;   ///< by track
  std::vector<mp4judge_scheme> schemes_;  ///< of all entries
  std::vector<std::size_t> firstScheme_;  ///< by entry
  std::vector<mp4judge_item> items_;
  std::vector<mp4judge_system> systems_;
  std::vector<mp4judge_evidence> evidence_;
  std::vector<mp4judge_problem> problems_;
};

}  // namespace mp4

/// The handle of the C interface.
struct mp4judge_report {
  /// May throw bad_alloc.
  explicit mp4judge_report(mp4::Judged judged) : said(std::move(judged)), views(said.report) {}
  mp4judge_report(const mp4judge_report&) = delete;
  mp4judge_report& operator=(const mp4judge_report&) = delete;

  /// The JSON text, made when it is first asked for; null without memory.
  const char* Json() const noexcept;

  const mp4::Judged said;
  const mp4::ReportViews views;

 private:
  mutable std::mutex jsonLock_;
  mutable std::optional<std::string> json_;
};
