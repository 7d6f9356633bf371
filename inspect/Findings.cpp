#include "inspect/Findings.h"

#include <algorithm>
#include <utility>

namespace mp4 {

namespace {

/// Nobody reads more, and a hostile file must not fill the memory with sentences.
constexpr std::size_t kMostEvidence = 1000;
constexpr std::size_t kMostProblems = 200;
constexpr std::size_t kMostNotes = 100;
constexpr std::size_t kMostSchemes = 100;

}  // namespace

std::optional<std::uint64_t> Findings::OffsetOf(BoxId box) const {
  const Box& at = tree_->At(box);
  if (at.space != 0) return std::nullopt;
  return at.offset;
}

bool Findings::IsFull() const { return report_->evidence.size() >= kMostEvidence; }

void Findings::AddEvidence(Evidence evidence) {
  if (!IsFull()) report_->evidence.push_back(std::move(evidence));
}

void Findings::Support(BoxId box, const Subject& subject, std::string text) {
  if (IsFull()) return;
  AddEvidence({tree_->Path(box), OffsetOf(box), subject.track, subject.item, subject.format,
               subject.scheme, std::move(text)});
}

void Findings::Protect(BoxId box, const Subject& subject, std::string text) {
  protected_ = true;
  AddScheme(subject.scheme);
  Support(box, subject, std::move(text));
}

void Findings::ProtectAt(std::string path, std::optional<std::uint64_t> offset,
                         const Subject& subject, std::string text) {
  protected_ = true;
  AddScheme(subject.scheme);
  AddEvidence({std::move(path), offset, subject.track, subject.item, subject.format, subject.scheme,
               std::move(text)});
}

void Findings::AddProblem(BoxId box, std::optional<std::uint64_t> offset, std::string text,
                          bool mayHide) {
  if (mayHide && firstDoubt_.empty()) {
    firstDoubt_ = text;
    const std::string path = tree_->Path(box);
    if (!path.empty()) firstDoubt_ += " (in " + path + ")";
  }
  if (report_->problems.size() >= kMostProblems) return;
  report_->problems.push_back({tree_->Path(box), offset, std::move(text), mayHide});
}

void Findings::Doubt(BoxId box, std::string text) {
  AddProblem(box, OffsetOf(box), std::move(text), true);
}

void Findings::Doubt(BoxId box, std::optional<std::uint64_t> offset, std::string text) {
  AddProblem(box, offset, std::move(text), true);
}

void Findings::Remark(BoxId box, std::optional<std::uint64_t> offset, std::string text) {
  AddProblem(box, offset, std::move(text), false);
}

void Findings::Note(std::string text) {
  std::vector<std::string>& notes = report_->notes;
  if (notes.size() >= kMostNotes) return;
  if (std::find(notes.begin(), notes.end(), text) == notes.end()) notes.push_back(std::move(text));
}

void Findings::AddScheme(const std::string& scheme) {
  std::vector<std::string>& schemes = report_->schemes;
  if (scheme.empty() || schemes.size() >= kMostSchemes) return;
  if (std::find(schemes.begin(), schemes.end(), scheme) == schemes.end()) schemes.push_back(scheme);
}

}  // namespace mp4
