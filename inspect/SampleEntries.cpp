#include "inspect/SampleEntries.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "inspect/Misplaced.h"
#include "inspect/SchemeInfo.h"
#include "io/FourCC.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

/// Entries kept in a report; all are looked at.
constexpr std::size_t kMostEntries = 1000;

enum class FormatKind { kOther, kProtected, kAudible, kReserved, kRestricted, kIncomplete };

FormatKind KindOf(std::uint32_t format) {
  switch (format) {
    case FourCC("encv"):
    case FourCC("enca"):
    case FourCC("enct"):
    case FourCC("encs"):
    case FourCC("encf"):
    case FourCC("encm"):
    case FourCC("enc3"):
    case FourCC("drms"):
    case FourCC("drmi"):
    case FourCC("drmt"):
    case FourCC("p608"):
      return FormatKind::kProtected;
    case FourCC("aavd"):
      return FormatKind::kAudible;
    case FourCC("paac"):
    case FourCC("pac3"):
    case FourCC("pm2t"):
    case FourCC("prtp"):
    case FourCC("oksd"):
      return FormatKind::kReserved;
    case FourCC("resv"):
    case FourCC("resa"):
    case FourCC("rest"):
    case FourCC("resu"):
    case FourCC("resm"):
    case FourCC("ress"):
    case FourCC("resf"):
    case FourCC("resp"):
    case FourCC("res3"):
      return FormatKind::kRestricted;
    case FourCC("icpv"):
      return FormatKind::kIncomplete;
    default:
      // "enc" and one more letter are reserved for encrypted media of further kinds.
      return (format & 0xFFFFFF) == (FourCC("enc ") & 0xFFFFFF) ? FormatKind::kReserved
                                                                : FormatKind::kOther;
  }
}

/// One entry while it is looked at.
class EntryInspection {
 public:
  EntryInspection(Findings* findings, BoxId entry, const ReportTrack& track)
      : findings_(findings), tree_(findings->Tree()), entry_(entry) {
    report_.format = TypeText(tree_.At(entry).type);
    subject_.track = track.id;
    subject_.format = report_.format;
  }

  ReportEntry Run() {
    LookAtChildren(entry_);
    switch (KindOf(tree_.At(entry_).type)) {
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
      case FormatKind::kRestricted:
      case FormatKind::kIncomplete:
      case FormatKind::kOther:
        break;
    }
    if (!report_.schemes.empty() && !report_.isProtected) ProtectBySchemeInfo();
    for (std::size_t i = 0; i < sinfs_.size(); ++i)
      ReportSchemeInfo(findings_, sinfs_[i], report_.schemes[i], subject_);
    if (!report_.isProtected) LookForHiddenSchemes();
    return std::move(report_);
  }

 private:
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
        case FourCC("pinf"):  // purchase information of iTunes, laid out like a "sinf"
        case FourCC("cinf"):  // the format of an incomplete track
          break;
        default:
          if (LooksLikeSchemeInfo(&tree_, box)) hiding_ = box;
          break;
      }
    }
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
    findings_->Note("track " + std::to_string(*subject_.track) + ": entry \"" + report_.format +
                    "\" is restricted by scheme \"" + scheme.type + "\", which is no protection");
    for (BoxId box = tree_.Child(rinf, FourCC("sinf")); box != kNoBox; box = tree_.NextOfType(box))
      AddScheme(box);
  }

  /// The format that a QuickTime "wave" repeats.
  void LookAtWrappedFormat(BoxId frma) {
    FieldView fields = tree_.Payload(frma, 0, 4);
    const FormatKind kind = KindOf(fields.Type());
    if (kind == FormatKind::kProtected || kind == FormatKind::kAudible) wrapsProtected_ = true;
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
    if (IsOnTheWay(tree_.At(entry_).type))
      findings_->Doubt(entry_, "a box that is none stands among the sample entries");
    if (wrapsProtected_) findings_->Doubt(entry_, "a \"wave\" box names a protected format");
    if (hiding_ != kNoBox) findings_->Doubt(hiding_, "an unknown box is laid out like a \"sinf\"");
    constexpr std::size_t kStep = std::size_t{16} << 10;
    const std::uint64_t size = tree_.At(entry_).PayloadSize();
    for (std::uint64_t at = 0; at < size; at += kStep) {
      FieldView bytes = tree_.Payload(entry_, at, kStep + 3);
      const std::size_t n = bytes.Left();
      if (n == 0) return;
      const std::string_view text(reinterpret_cast<const char*>(bytes.Bytes(n)), n);
      for (const std::string_view type : {"sinf", "tenc"}) {
        if (text.find(type) == std::string_view::npos) continue;
        findings_->Doubt(entry_, "a sample entry has the characters \"" + std::string(type) +
                                     "\" where no box can be reached");
        return;
      }
    }
  }

  Findings* findings_;
  BoxTree& tree_;
  BoxId entry_;
  Subject subject_;
  ReportEntry report_;
  std::vector<BoxId> sinfs_;
  bool hasAdrm_ = false;
  BoxId hiding_ = kNoBox;  ///< a child that may be a broken "sinf"
  bool wrapsProtected_ = false;
};

}  // namespace

std::uint64_t InspectSampleEntries(Findings* findings, BoxId stsd, ReportTrack* track) {
  BoxTree& tree = findings->Tree();
  std::uint64_t count = 0;
  for (BoxId entry = tree.FirstChild(stsd); entry != kNoBox; entry = tree.Next(entry)) {
    ++count;
    ReportEntry report = EntryInspection(findings, entry, *track).Run();
    track->isProtected = track->isProtected || report.isProtected;
    if (track->entries.size() < kMostEntries) track->entries.push_back(std::move(report));
  }
  if (count == 0) findings->Doubt(stsd, "the sample description holds no entry");
  return count;
}

}  // namespace mp4
