#include "inspect/Inspect.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <system_error>

#include "inspect/FirstBytes.h"
#include "inspect/Fragment.h"
#include "inspect/Ipmp.h"
#include "inspect/Items.h"
#include "inspect/Misplaced.h"
#include "inspect/Movie.h"
#include "inspect/ObjectDescriptors.h"
#include "inspect/OmaContainer.h"
#include "inspect/Signs.h"
#include "inspect/Systems.h"
#include "inspect/TreeProblems.h"
#include "inspect/Words.h"
#include "io/ByteOrder.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

/// "PNG image" of "a PNG image".
std::string WithoutArticle(std::string_view noun) {
  for (const std::string_view article : {std::string_view("a "), std::string_view("an ")}) {
    if (noun.substr(0, article.size()) == article) noun.remove_prefix(article.size());
  }
  return std::string(noun);
}

/// What is looked at of a file with fragments unless everything is asked for: the first fragment,
/// and those that the first read of a slow source holds anyway.
constexpr std::uint64_t kNearFragments = 4;
constexpr std::uint64_t kNear = std::uint64_t{64} << 10;

std::string TextOfTrouble(const SourceTrouble& trouble) {
  switch (trouble.fault) {
    case SourceFault::kBytesNeeded:
      return "needs bytes " + Grouped(trouble.offset) + " to " +
             Grouped(trouble.offset + trouble.size - 1);
    case SourceFault::kNoMemory:
      return "there is not enough memory";
    case SourceFault::kReadFailed:
    case SourceFault::kNone:
      break;
  }
  std::string text = "reading failed at byte " + Grouped(trouble.offset);
  if (trouble.error > 0) text += ": " + std::generic_category().message(trouble.error);
  return text;
}

/// Types that a file of the family may begin with.
bool IsFirstOfFamily(std::uint32_t type) {
  switch (type) {
    case FourCC("ftyp"):
    case FourCC("moov"):
    case FourCC("mdat"):
    case FourCC("wide"):
    case FourCC("free"):
    case FourCC("skip"):
    case FourCC("pnot"):
    case FourCC("udta"):
    case FourCC("uuid"):
    case FourCC("meta"):
    case FourCC("styp"):
    case FourCC("moof"):
    case FourCC("sidx"):
    case FourCC("ssix"):
    case FourCC("emsg"):
    case FourCC("prft"):
    case FourCC("pdin"):
    case FourCC("odrm"):
    case FourCC("!mov"):
      return true;
    default:
      return false;
  }
}

class Inspection {
 public:
  Inspection(CachedSource* source, const InspectOptions& options, Report* report)
      : source_(source),
        options_(options),
        report_(report),
        tree_(source, options.limits.value_or(TreeLimits::For(source->Size()))),
        findings_(&tree_, report),
        signs_(&findings_),
        fragments_(&findings_, &signs_) {}

  void Run() {
    WalkTopLevel();
    for (const ObjectTrack& track : movie_.objectTracks)
      InspectObjectDescriptors(&findings_, track, &movie_);
    ResolveIpmpPointers(&findings_, &movie_);
    signs_.Resolve(movie_);
    fragments_.Check(movie_);
    std::string treeReason = ReportTreeProblems(&findings_);
    report_->everything = !report_->stoppedAt && !tree_.LimitMet() && !source_->Failed();
    if (source_->Failed()) NoteTrouble(source_->Trouble());
    Decide(std::move(treeReason));
    NoteLeftOvers();
  }

 private:
  void WalkTopLevel() {
    for (BoxId box = tree_.FirstChild(kRootBox); box != kNoBox; box = tree_.Next(box)) {
      if (IsFarFragment(box)) {
        report_->stoppedAt = tree_.At(box).offset;
        return;
      }
      LookAt(box);
    }
  }

  /// Without a movie box nothing is decided, so that walk goes on.
  bool IsFarFragment(BoxId box) {
    const Box& at = tree_.At(box);
    return !options_.everything && movie_.seen && at.type == FourCC("moof") &&
           report_->fragments > 0 && (report_->fragments >= kNearFragments || at.offset >= kNear);
  }

  void LookAt(BoxId box) {
    switch (tree_.At(box).type) {
      case FourCC("moov"):
      case FourCC("!mov"):
        InspectMovie(&findings_, box, &movie_, &signs_);
        break;
      case FourCC("moof"):
      case FourCC("!mof"):
        ++report_->fragments;
        fragments_.Inspect(box);
        break;
      case FourCC("meta"):
      case FourCC("meco"):
        items_ += InspectItems(&findings_, box);
        break;
      case FourCC("mpvd"):  // a motion photo: a whole file in a box
        for (BoxId inner = tree_.FirstChild(box); inner != kNoBox; inner = tree_.Next(inner))
          LookAt(inner);
        break;
      case FourCC("odrm"):
        hasContainer_ = true;
        InspectOmaContainer(&findings_, box);
        break;
      case FourCC("ftyp"):
      case FourCC("mdat"):
      case FourCC("free"):
      case FourCC("skip"):
      case FourCC("wide"):
        break;
      default:
        if (!InspectSystem(&findings_, box)) LookAtUnknown(box);
        break;
    }
  }

  /// Of unknown boxes a size of 0 is not believed: it would cover all that follows.
  void LookAtUnknown(BoxId box) {
    CheckUnknownBox(&findings_, box);
    const Box at = tree_.At(box);
    if (at.end != source_->Size()) return;
    const unsigned char* size = tree_.View(0, at.offset, 4);
    if (size != nullptr && LoadBe32(size) == 0)
      findings_.Doubt(box, "an unknown box runs to the end of the file");
  }

  void NoteTrouble(const SourceTrouble& trouble) {
    if (trouble.fault == SourceFault::kBytesNeeded)
      report_->needed = NeededRange{trouble.offset, trouble.size};
  }

  void Decide(std::string treeReason) {
    if (findings_.IsProtected()) {
      report_->verdict = ProtectionVerdict::kProtected;
    } else if (source_->Failed()) {
      report_->reason = TextOfTrouble(source_->Trouble());
    } else if (!HasContent()) {
      report_->reason = WhyNoContent(treeReason);
    } else if (!treeReason.empty()) {
      report_->reason = std::move(treeReason);
    } else if (!findings_.FirstDoubt().empty()) {
      report_->reason = findings_.FirstDoubt();
    } else {
      report_->verdict = ProtectionVerdict::kClear;
    }
  }

  bool HasContent() const { return movie_.seen || items_ > 0 || hasContainer_; }

  std::string WhyNoContent(const std::string& treeReason) {
    if (source_->Size() == 0) return "the file is empty";
    const BoxId first = tree_.FirstChild(kRootBox);
    const bool ofFamily = first != kNoBox && IsFirstOfFamily(tree_.At(first).type);
    if (!ofFamily) {
      const auto n =
          static_cast<std::size_t>(std::min<std::uint64_t>(source_->Size(), kFirstBytes));
      const unsigned char* bytes = source_->View(0, n);
      const char* name = bytes != nullptr ? NameOfFirstBytes(bytes, n) : nullptr;
      if (name != nullptr) return "not a movie file: begins with " + WithoutArticle(name);
    }
    if (report_->fragments > 0)
      return "no movie box; the file is a media segment, give its initialization segment too";
    // Of bytes that are no boxes it helps nobody to say which box is cut.
    if (!ofFamily) return "not a movie file: its beginning is no box of a movie";
    const std::string hidden = treeReason.empty() ? WhatIsCut() : treeReason;
    return hidden.empty() ? "no movie box and no items" : "no movie box; " + hidden;
  }

  /// Media that is cut hides nothing as a rule, but the movie box may have stood behind it.
  std::string WhatIsCut() const {
    for (const BoxProblem& problem : tree_.Problems()) {
      const bool onTop = tree_.At(problem.box).parent == kRootBox;
      if (onTop && problem.fault == BoxFault::kCutByEnd) return TextOfProblem(tree_, problem);
    }
    return {};
  }

  void NoteLeftOvers() {
    if (!findings_.IsProtected() && !report_->systems.empty())
      findings_.Note("protection systems are named, yet nothing is protected by them");
    if (findings_.IsProtected() && !findings_.FirstDoubt().empty())
      findings_.Note("not everything could be looked at: " + findings_.FirstDoubt());
  }

  CachedSource* source_;
  InspectOptions options_;
  Report* report_;
  BoxTree tree_;
  Findings findings_;
  MovieFacts movie_;
  Signs signs_;
  Fragments fragments_;
  std::uint64_t items_ = 0;
  bool hasContainer_ = false;
};

}  // namespace

Report Inspect(CachedSource* source, const InspectOptions& options) noexcept {
  Report report;
  try {
    Inspection(source, options, &report).Run();
  } catch (const std::bad_alloc&) {
    report = {};
    // Short enough to need no memory.
    report.reason = "out of memory";
    report.outOfMemory = true;
  }
  return report;
}

Report Inspect(ByteSource* source, const InspectOptions& options) noexcept {
  CachedSource cache(source);
  return Inspect(&cache, options);
}

}  // namespace mp4
