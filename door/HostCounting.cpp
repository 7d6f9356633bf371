#include "door/HostCounting.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "inspect/Words.h"

namespace mp4 {

namespace {

/// Causes that are named.
constexpr std::size_t kMostCauses = 8;

std::string OrdinalText(std::size_t n) {
  constexpr const char* kWords[] = {"first", "second", "third", "fourth"};
  return n <= 4 ? std::string("the ") + kWords[n - 1] : "number " + std::to_string(n);
}

/// "a; b; c", each once.
class Causes {
 public:
  void Add(std::string cause) {
    if (std::find(causes_.begin(), causes_.end(), cause) != causes_.end()) return;
    if (causes_.size() < kMostCauses) {
      causes_.push_back(std::move(cause));
    } else {
      more_ = true;
    }
  }
  bool Empty() const { return causes_.empty(); }
  std::string Text() const {
    std::string text;
    for (const std::string& cause : causes_) text += (text.empty() ? "" : "; ") + cause;
    return more_ ? text + "; and more" : text;
  }

 private:
  std::vector<std::string> causes_;
  bool more_ = false;
};

bool HostReadsHandler(const std::string& handler) { return handler == "soun" || handler == "vide"; }

/// Why the host does not count this track; empty when it should.
std::string WhyNotCounted(const ReportTrack& track) {
  const std::string name = "track " + std::to_string(track.id) + ": ";
  if (!HostReadsHandler(track.handler)) {
    return name + "its handler " + Quoted(track.handler) + " is neither sound nor video";
  }
  if (track.entries.empty()) return name + "it has no sample entry";
  const std::string& first = track.entries.front().format;
  if (first == "drms") return {};
  const auto entry = std::find_if(track.entries.begin(), track.entries.end(),
                                  [](const ReportEntry& one) { return one.isProtected; });
  if (entry == track.entries.end()) {
    return name + "it is protected by something else than its sample entries";
  }
  const auto n = static_cast<std::size_t>(entry - track.entries.begin()) + 1;
  if (n > 1) {
    return name + "the protected sample entry is " + OrdinalText(n) + ", the first is " +
           Quoted(first);
  }
  return name + "the format " + Quoted(first) + " is not \"drms\"";
}

/// Evidence that belongs to no track.
std::string WhyNotLookedAt(const Evidence& evidence) {
  if (evidence.item) return "it does not look at items";
  if (evidence.boxPath.compare(0, 4, "odrm") == 0) return "it does not look at OMA containers";
  if (evidence.boxPath.compare(0, 4, "moof") == 0) return "it looks for nothing in fragments";
  return {};
}

}  // namespace

std::string WhyHostCountsNothing(const Report& report) {
  Causes causes;
  for (const ReportTrack& track : report.tracks) {
    if (!track.isProtected) continue;
    const std::string cause = WhyNotCounted(track);
    if (cause.empty()) return {};
    causes.Add(cause);
  }
  for (const Evidence& evidence : report.evidence) {
    const std::string cause = WhyNotLookedAt(evidence);
    if (!cause.empty()) causes.Add(cause);
  }
  return causes.Text();
}

}  // namespace mp4
