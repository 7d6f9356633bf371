#include "inspect/SampleEntries.h"

#include <algorithm>

#include "inspect/HiddenSchemes.h"
#include "inspect/Ipmp.h"
#include "inspect/Misplaced.h"
#include "inspect/SchemeInfo.h"
#include "io/FourCC.h"
#include "iso/ProtectedFormats.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

/// Entries kept in a report; all are looked at.
constexpr std::size_t kMostEntries = 1000;

/// One entry while it is looked at.
class EntryInspection {
 public:
  EntryInspection(Findings* findings, BoxId entry, const ReportTrack& track, MovieFacts* movie)
      : findings_(findings), tree_(findings->Tree()), movie_(movie), entry_(entry) {
    report_.format = TypeText(tree_.At(entry).type);
    subject_.track = track.id;
    subject_.format = report_.format;
  }

  ReportEntry Run() {
    LookAtChildren(entry_);
    LookAtFormat();
    if (!report_.schemes.empty() && !report_.isProtected) ProtectBySchemeInfo();
    for (std::size_t i = 0; i < sinfs_.size(); ++i)
      ReportSchemeInfo(findings_, sinfs_[i], report_.schemes[i], subject_);
    if (!report_.isProtected) LookForHiddenSchemes();
    return std::move(report_);
  }
  /// Whether its samples are object descriptors.
  bool IsOfObjects() const { return isOfObjects_; }

 private:
  void LookAtFormat() {
    switch (KindOfFormat(tree_.At(entry_).type)) {
      case FormatKind::kProtected:
        ProtectByFormat();
        break;
      case FormatKind::kAudible:
        hasAdrm_ ? ProtectByFormat()
                 : DoubtUnlessProtected("an Audible entry without its \"adrm\" box");
        break;
      case FormatKind::kReserved:
        DoubtUnlessProtected("a format for protected media without a \"sinf\" box");
        break;
      case FormatKind::kReceived:
        DoubtUnlessProtected("packets that were encrypted for the way to where they were recorded");
        break;
      case FormatKind::kSent:
        findings_->Note("track " + std::to_string(*subject_.track) +
                        ": packets are encrypted when they are sent, which protects no media here");
        break;
      case FormatKind::kRestricted:
      case FormatKind::kIncomplete:
      case FormatKind::kOther:
        break;
    }
    if (hasAdrm_ && !report_.isProtected)
      DoubtUnlessProtected("an Audible box in an entry of another format");
  }

  void LookAtChildren(BoxId parent) {
    for (BoxId box = tree_.FirstChild(parent); box != kNoBox; box = tree_.Next(box)) {
      switch (tree_.At(box).type) {
        case FourCC("sinf"):
          AddScheme(box);
          break;
        case FourCC("adrm"):
          hasAdrm_ = true;
          break;
        case FourCC("rinf"):
          AddRestriction(box);
          break;
        case FourCC("wave"):
          if (parent == entry_) LookAtChildren(box);
          break;
        case FourCC("frma"):
          LookAtWrappedFormat(box);
          break;
        case FourCC("esds"):
          LookAtStream(box);
          break;
        case FourCC("cinf"):  // the format of an incomplete track
          LookAtIncomplete(box);
          break;
        case FourCC("pinf"):  // purchase information of iTunes, laid out like a "sinf"
          hasLikeness_ = true;
          break;
        case FourCC("srpp"):  // how the packets of a hint track are encrypted when they are sent
          hasLikeness_ = true;
          if (KindOfFormat(tree_.At(entry_).type) != FormatKind::kSent) stray_ = box;
          break;
        default:
          if (LooksLikeSchemeInfo(&tree_, box)) hiding_ = box;
          if (IsPartOfScheme(&tree_, box) || IsOnTheWay(tree_.At(box).type)) stray_ = box;
          break;
      }
    }
  }

  void LookAtStream(BoxId esds) {
    constexpr std::uint8_t kObjects = 1, kIpmp = 7;
    const std::uint8_t type = InspectElementaryStream(findings_, esds, subject_, movie_);
    isOfObjects_ = isOfObjects_ || type == kObjects;
    if (type == kIpmp) findings_->Doubt(esds, "a stream of IPMP messages");
  }

  void LookAtIncomplete(BoxId cinf) {
    const BoxId frma = tree_.Child(cinf, FourCC("frma"));
    if (frma != kNoBox) LookAtWrappedFormat(frma);
  }

  void AddScheme(BoxId sinf) {
    if (sinfs_.size() >= kMostEntries) return;
    sinfs_.push_back(sinf);
    report_.schemes.push_back(ReadSchemeInfo(&tree_, sinf));
    if (report_.originalFormat.empty())
      report_.originalFormat = report_.schemes.back().originalFormat;
  }

  /// RestrictedSchemeInfoBox (8.15.3): laid out like a "sinf", but no protection.
  void AddRestriction(BoxId rinf) {
    const ReportScheme scheme = ReadSchemeInfo(&tree_, rinf);
    if (report_.originalFormat.empty()) report_.originalFormat = scheme.originalFormat;
    hasLikeness_ = true;
    const BoxId frma = tree_.Child(rinf, FourCC("frma"));
    if (frma != kNoBox) LookAtWrappedFormat(frma);
    findings_->Note("track " + std::to_string(*subject_.track) + ": entry \"" + report_.format +
                    "\" is restricted by scheme \"" + scheme.type + "\", which is no protection");
    for (BoxId box = tree_.Child(rinf, FourCC("sinf")); box != kNoBox; box = tree_.NextOfType(box))
      AddScheme(box);
  }

  /// The format that a QuickTime "wave" repeats, or that lies under a restriction.
  void LookAtWrappedFormat(BoxId frma) {
    FieldView fields = tree_.Payload(frma, 0, 4);
    if (IsForProtectedMedia(KindOfFormat(fields.Type()))) wrapping_ = tree_.At(frma).parent;
  }

  void ProtectByFormat() {
    report_.isProtected = true;
    Subject subject = subject_;
    if (!report_.schemes.empty()) subject.scheme = report_.schemes.front().type;
    findings_->Protect(entry_, subject,
                       "The format \"" + report_.format +
                           "\" of a sample entry is for protected "
                           "media.");
  }

  void ProtectBySchemeInfo() {
    report_.isProtected = true;
    Subject subject = subject_;
    subject.scheme = report_.schemes.front().type;
    findings_->Protect(
        entry_, subject,
        "A sample entry of format \"" + report_.format + "\" with protection scheme information.");
  }

  void DoubtUnlessProtected(const std::string& text) {
    if (report_.schemes.empty()) findings_->Doubt(entry_, text);
  }

  /// An entry whose layout nobody knows, or a box that covers others, could hold a scheme all the
  /// same: then its four characters stand somewhere.
  void LookForHiddenSchemes() {
    if (IsBoxBesideEntries(tree_.At(entry_).type))
      findings_->Doubt(entry_, "a box that is none stands among the sample entries");
    if (wrapping_ != kNoBox)
      findings_->Doubt(wrapping_, "a box names a format for protected media");
    if (hiding_ != kNoBox) findings_->Doubt(hiding_, "an unknown box is laid out like a \"sinf\"");
    if (stray_ != kNoBox)
      findings_->Doubt(stray_,
                       "a box stands in a sample entry that belongs into a scheme or the movie");
    const std::string hidden = FindHiddenScheme(&tree_, entry_, hasLikeness_);
    if (!hidden.empty())
      findings_->Doubt(entry_, "a sample entry has the characters \"" + hidden +
                                   "\" where no box can be reached");
  }

  Findings* findings_;
  BoxTree& tree_;
  MovieFacts* movie_;
  BoxId entry_;
  Subject subject_;
  ReportEntry report_;
  std::vector<BoxId> sinfs_;
  bool hasAdrm_ = false;
  bool isOfObjects_ = false;
  bool hasLikeness_ = false;  ///< boxes laid out like a scheme that are none
  BoxId hiding_ = kNoBox;     ///< a child that may be a broken "sinf"
  BoxId stray_ = kNoBox;      ///< a child that belongs into one
  BoxId wrapping_ = kNoBox;   ///< a child that names a format for protected media
};

}  // namespace

EntriesSeen InspectSampleEntries(Findings* findings, BoxId stsd, ReportTrack* track,
                                 MovieFacts* movie) {
  BoxTree& tree = findings->Tree();
  EntriesSeen seen;
  constexpr std::uint8_t kLastVersion = 1;
  if (tree.Payload(stsd, 0, 1).U8() > kLastVersion)
    findings->Doubt(stsd, "the sample description is of an unknown version");
  for (BoxId entry = tree.FirstChild(stsd); entry != kNoBox; entry = tree.Next(entry)) {
    ++seen.count;
    EntryInspection inspection(findings, entry, *track, movie);
    ReportEntry report = inspection.Run();
    seen.anyOfObjects = seen.anyOfObjects || inspection.IsOfObjects();
    track->isProtected = track->isProtected || report.isProtected;
    if (track->entries.size() < kMostEntries) track->entries.push_back(std::move(report));
  }
  if (seen.count == 0) findings->Doubt(stsd, "the sample description holds no entry");
  return seen;
}

}  // namespace mp4
