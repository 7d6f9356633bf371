#include "door/ReportHandle.h"

/* The accessors of the C interface. Each takes null for a report that says nothing. */

namespace {

template <class T>
size_t CountOf(const mp4judge_report* report, std::vector<T> mp4::Report::*list) {
  return report != nullptr ? (report->said.report.*list).size() : 0;
}

const char* TextOf(const mp4judge_report* report, std::vector<std::string> mp4::Report::*list,
                   size_t i) {
  return i < CountOf(report, list) ? (report->said.report.*list)[i].c_str() : nullptr;
}

const char* OrNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

}  // namespace

mp4judge_verdict mp4judge_report_verdict(const mp4judge_report* report) {
  if (report == nullptr) return MP4JUDGE_UNDETERMINED;
  switch (report->said.report.verdict) {
    case mp4::ProtectionVerdict::kClear:
      return MP4JUDGE_CLEAR;
    case mp4::ProtectionVerdict::kProtected:
      return MP4JUDGE_PROTECTED;
    case mp4::ProtectionVerdict::kUndetermined:
      break;
  }
  return MP4JUDGE_UNDETERMINED;
}

const char* mp4judge_report_reason(const mp4judge_report* report) {
  return report != nullptr ? OrNull(report->said.report.reason) : nullptr;
}

const char* mp4judge_report_path(const mp4judge_report* report) {
  return report != nullptr && report->said.path ? report->said.path->c_str() : nullptr;
}

mp4judge_error mp4judge_report_error(const mp4judge_report* report) {
  return report != nullptr ? report->said.error : MP4JUDGE_ERROR_ARGUMENT;
}

int mp4judge_report_errno(const mp4judge_report* report) {
  return report != nullptr ? report->said.systemError : 0;
}

int mp4judge_report_needs(const mp4judge_report* report, uint64_t* offset, uint64_t* n) {
  mp4::NeededRange range;
  const bool needs = report != nullptr && report->said.report.needed;
  if (needs) range = *report->said.report.needed;
  if (offset != nullptr) *offset = range.offset;
  if (n != nullptr) *n = range.size;
  return needs ? 1 : 0;
}

size_t mp4judge_report_scheme_count(const mp4judge_report* report) {
  return CountOf(report, &mp4::Report::schemes);
}
const char* mp4judge_report_scheme(const mp4judge_report* report, size_t i) {
  return TextOf(report, &mp4::Report::schemes, i);
}

size_t mp4judge_report_track_count(const mp4judge_report* report) {
  return CountOf(report, &mp4::Report::tracks);
}
const mp4judge_track* mp4judge_report_track(const mp4judge_report* report, size_t i) {
  return report != nullptr ? report->views.Track(i) : nullptr;
}
const mp4judge_entry* mp4judge_report_entry(const mp4judge_report* report, size_t track, size_t i) {
  return report != nullptr ? report->views.Entry(track, i) : nullptr;
}
const mp4judge_scheme* mp4judge_report_entry_scheme(const mp4judge_report* report, size_t track,
                                                    size_t entry, size_t i) {
  return report != nullptr ? report->views.Scheme(track, entry, i) : nullptr;
}

size_t mp4judge_report_item_count(const mp4judge_report* report) {
  return CountOf(report, &mp4::Report::items);
}
const mp4judge_item* mp4judge_report_item(const mp4judge_report* report, size_t i) {
  return report != nullptr ? report->views.Item(i) : nullptr;
}

size_t mp4judge_report_system_count(const mp4judge_report* report) {
  return CountOf(report, &mp4::Report::systems);
}
const mp4judge_system* mp4judge_report_system(const mp4judge_report* report, size_t i) {
  return report != nullptr ? report->views.System(i) : nullptr;
}

size_t mp4judge_report_evidence_count(const mp4judge_report* report) {
  return CountOf(report, &mp4::Report::evidence);
}
const mp4judge_evidence* mp4judge_report_evidence(const mp4judge_report* report, size_t i) {
  return report != nullptr ? report->views.Evidence(i) : nullptr;
}

size_t mp4judge_report_problem_count(const mp4judge_report* report) {
  return CountOf(report, &mp4::Report::problems);
}
const mp4judge_problem* mp4judge_report_problem(const mp4judge_report* report, size_t i) {
  return report != nullptr ? report->views.Problem(i) : nullptr;
}

size_t mp4judge_report_note_count(const mp4judge_report* report) {
  return CountOf(report, &mp4::Report::notes);
}
const char* mp4judge_report_note(const mp4judge_report* report, size_t i) {
  return TextOf(report, &mp4::Report::notes, i);
}

uint64_t mp4judge_report_fragments(const mp4judge_report* report) {
  return report != nullptr ? report->said.report.fragments : 0;
}

int mp4judge_report_everything(const mp4judge_report* report) {
  return report != nullptr && report->said.report.everything ? 1 : 0;
}

int mp4judge_report_host_answer(const mp4judge_report* report) {
  if (report == nullptr || !report->said.host) return -1;
  return *report->said.host == MP4JUDGE_HOST_PROTECTED ? 1 : 0;
}

int mp4judge_report_host_reads(const mp4judge_report* report) {
  if (report == nullptr || !report->said.host) return -1;
  return *report->said.host != MP4JUDGE_HOST_UNREADABLE ? 1 : 0;
}

const char* mp4judge_report_host_difference(const mp4judge_report* report) {
  return report != nullptr ? OrNull(report->said.hostDifference) : nullptr;
}

const char* mp4judge_report_json(const mp4judge_report* report) {
  return report != nullptr ? report->Json() : nullptr;
}
