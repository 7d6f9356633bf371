#include "tools/Outcome.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "tools/Printable.h"

namespace tool {

namespace {

struct FreeReport {
  void operator()(mp4judge_report* report) const { mp4judge_report_free(report); }
};
using ReportHandle = std::unique_ptr<mp4judge_report, FreeReport>;

bool StartsWith(const std::string& text, const char* words) {
  return text.compare(0, std::strlen(words), words) == 0;
}

/// The inspector's words for a file that begins like one of another kind. Zeros are no other kind:
/// they are what is left of a download that failed.
bool IsOtherFormat(const std::string& reason) {
  return StartsWith(reason, "not a movie file: begins with ") &&
         !StartsWith(reason, "not a movie file: begins with zeros");
}

std::string TextOr(const char* text, const char* otherwise) {
  return text != nullptr ? text : otherwise;
}

/// What a person calls a track of this handler.
std::string KindOf(const char* handler) {
  const std::string type = TextOr(handler, "");
  if (type == "soun") return "audio";
  if (type == "vide") return "video";
  if (type == "pict") return "images";
  if (type == "text" || type == "subt" || type == "sbtl" || type == "subp" || type == "clcp") {
    return "text";
  }
  return type.empty() ? "a track" : type;
}

/// Kinds of media by scheme, both in the order of first sight.
class ByScheme {
 public:
  void Add(const std::string& scheme, const std::string& kind) {
    for (auto& [known, kinds] : schemes_) {
      if (known != scheme) continue;
      if (std::find(kinds.begin(), kinds.end(), kind) == kinds.end()) kinds.push_back(kind);
      return;
    }
    schemes_.push_back({scheme, {kind}});
  }

  /// "cenc: video, audio; itun: text".
  std::string Text() const {
    std::string text;
    for (const auto& [scheme, kinds] : schemes_) {
      text += (text.empty() ? "" : "; ") + scheme;
      for (std::size_t i = 0; i < kinds.size(); ++i) text += (i == 0 ? ": " : ", ") + kinds[i];
    }
    return text;
  }

 private:
  std::vector<std::pair<std::string, std::vector<std::string>>> schemes_;
};

void AddTrack(const mp4judge_report* report, std::size_t place, const mp4judge_track& track,
              ByScheme* found) {
  bool any = false;
  for (std::size_t i = 0; i < track.entry_count; ++i) {
    const mp4judge_entry* entry = mp4judge_report_entry(report, place, i);
    if (entry == nullptr || entry->is_protected == 0) continue;
    const mp4judge_scheme* scheme = mp4judge_report_entry_scheme(report, place, i, 0);
    const bool named = scheme != nullptr && scheme->type != nullptr;
    found->Add(named ? scheme->type : TextOr(entry->format, "unknown"), KindOf(track.handler));
    any = true;
  }
  // Protected by something outside its sample entries.
  if (!any) {
    const char* scheme = mp4judge_report_scheme(report, 0);
    found->Add(TextOr(scheme, "unknown scheme"), KindOf(track.handler));
  }
}

std::string Place(std::uint64_t offset) {
  return offset == MP4JUDGE_NO_OFFSET ? " in a compressed movie" : " at byte " + WithCommas(offset);
}

std::string Explanation(const mp4judge_report* report) {
  std::string text;
  for (std::size_t i = 0; i < mp4judge_report_evidence_count(report); ++i) {
    const mp4judge_evidence& evidence = *mp4judge_report_evidence(report, i);
    text += "  evidence: " + TextOr(evidence.box_path, "") + Place(evidence.offset);
    if (evidence.track >= 0) text += ", track " + std::to_string(evidence.track);
    if (evidence.item >= 0) text += ", item " + std::to_string(evidence.item);
    if (evidence.scheme != nullptr) text += std::string(", scheme ") + evidence.scheme;
    text += ": " + TextOr(evidence.text, "") + '\n';
  }
  for (std::size_t i = 0; i < mp4judge_report_system_count(report); ++i) {
    const mp4judge_system& system = *mp4judge_report_system(report, i);
    text += "  key system: " + TextOr(system.name, "not registered") + ", " +
            TextOr(system.box_path, "") + '\n';
  }
  for (std::size_t i = 0; i < mp4judge_report_problem_count(report); ++i) {
    const mp4judge_problem& problem = *mp4judge_report_problem(report, i);
    text += "  problem: " + TextOr(problem.box_path, "") + Place(problem.offset) + ": " +
            TextOr(problem.text, "") + '\n';
  }
  for (std::size_t i = 0; i < mp4judge_report_note_count(report); ++i) {
    text += std::string("  note: ") + mp4judge_report_note(report, i) + '\n';
  }
  text += "  host answer: " + std::to_string(mp4judge_report_host_answer(report));
  const char* why = mp4judge_report_host_difference(report);
  if (why != nullptr) text += std::string(": ") + why;
  return text + '\n';
}

/// What the system says may be otherwise in a minute; what the bytes say may not.
bool IsLasting(const mp4judge_report* report) {
  return mp4judge_report_error(report) == MP4JUDGE_OK;
}

Outcome FromReport(const mp4judge_report* report, const JudgeOptions& options) {
  Outcome outcome;
  outcome.verdict = mp4judge_report_verdict(report);
  const std::string reason = TextOr(mp4judge_report_reason(report), "");
  outcome.detail = ProtectedBy(report);
  if (outcome.verdict == MP4JUDGE_UNDETERMINED) {
    outcome.detail = reason.empty() ? "unknown" : reason;
    if (reason == "it is a directory") outcome.detail += "; -r judges the files in it";
    outcome.otherFormat = IsOtherFormat(reason);
  }
  for (std::size_t i = 0; i < mp4judge_report_scheme_count(report); ++i) {
    outcome.schemes.emplace_back(mp4judge_report_scheme(report, i));
  }
  outcome.hostAnswer = mp4judge_report_host_answer(report);
  outcome.lasting = IsLasting(report);
  if (options.explain) outcome.explanation = Explanation(report);
  if (options.json) {
    const char* json = mp4judge_report_json(report);
    if (json == nullptr) throw std::bad_alloc();
    outcome.json = json;
  }
  return outcome;
}

const char* ColourOf(mp4judge_verdict verdict) {
  switch (verdict) {
    case MP4JUDGE_CLEAR:
      return "\033[32m";
    case MP4JUDGE_PROTECTED:
      return "\033[1;31m";
    default:
      return "\033[33m";
  }
}

}  // namespace

std::string ProtectedBy(const mp4judge_report* report) {
  if (mp4judge_report_verdict(report) != MP4JUDGE_PROTECTED) return {};
  ByScheme found;
  for (std::size_t i = 0; i < mp4judge_report_track_count(report); ++i) {
    const mp4judge_track* track = mp4judge_report_track(report, i);
    if (track->is_protected != 0) AddTrack(report, i, *track, &found);
  }
  for (std::size_t i = 0; i < mp4judge_report_item_count(report); ++i) {
    const mp4judge_item* item = mp4judge_report_item(report, i);
    if (item->is_protected != 0) found.Add(TextOr(item->scheme, "unknown scheme"), "images");
  }
  std::string text = found.Text();
  if (!text.empty()) return text;
  // A media segment, or a container without tracks: its evidence names what was found.
  const char* scheme = mp4judge_report_scheme(report, 0);
  if (scheme != nullptr) return scheme;
  const mp4judge_evidence* evidence = mp4judge_report_evidence(report, 0);
  return evidence != nullptr ? TextOr(evidence->box_path, "") : "";
}

std::string WhyNoMovie(const std::string& path) {
  mp4judge_options options = MP4JUDGE_OPTIONS_DEFAULT;
  options.host_answer = 0;
  const ReportHandle report(mp4judge_inspect_path(path.c_str(), &options));
  const std::string reason = TextOr(mp4judge_report_reason(report.get()), "");
  const bool none = StartsWith(reason, "not a movie file") || reason == "the file is empty";
  return none ? reason : std::string();
}

Outcome JudgePath(const std::string& path, const JudgeOptions& options) {
  mp4judge_options asked = MP4JUDGE_OPTIONS_DEFAULT;
  asked.everything = options.everything ? 1 : 0;
  asked.host_answer = options.json || options.explain || options.hostAnswer ? 1 : 0;
  const ReportHandle report(mp4judge_inspect_path(path.c_str(), &asked));
  return FromReport(report.get(), options);
}

Outcome Unjudged(const std::string& path, const std::string& reason, const JudgeOptions& options) {
  // A report all the same, so that its JSON has the usual members.
  Outcome outcome = options.json || options.explain ? JudgePath(path, options) : Outcome();
  outcome.verdict = MP4JUDGE_UNDETERMINED;
  outcome.detail = reason;
  outcome.lasting = false;
  return outcome;
}

std::string Tell(const std::string& path, const Outcome& outcome, const JudgeOptions& options,
                 bool colours) {
  const char end = options.nulSeparated ? '\0' : '\n';
  if (options.json) return outcome.json + end;
  const std::string name = options.nulSeparated ? path : Printable(path);
  if (options.onlyProtected || options.onlyOthers) return name + end;
  std::string verdict = mp4judge_verdict_name(outcome.verdict);
  if (colours) verdict = ColourOf(outcome.verdict) + verdict + "\033[0m";
  std::string line = name + ": " + verdict;
  if (!outcome.detail.empty()) line += " (" + outcome.detail + ")";
  if (options.hostAnswer)
    line += "; host answer " + std::to_string(std::max(outcome.hostAnswer, 0));
  return line + end + outcome.explanation;
}

}  // namespace tool
