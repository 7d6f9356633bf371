#include "inspect/Track.h"

#include <algorithm>

#include "inspect/Items.h"
#include "inspect/Misplaced.h"
#include "inspect/SampleEntries.h"
#include "inspect/Signs.h"
#include "inspect/Systems.h"
#include "io/FourCC.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

/// Tracks kept in a report; all are looked at.
constexpr std::size_t kMostTracks = 1000;

/// TrackHeaderBox "tkhd" (8.3.2); 0 when there is none.
std::uint32_t TrackIdOf(BoxTree* tree, BoxId trak) {
  const BoxId header = tree->Child(trak, FourCC("tkhd"));
  if (header == kNoBox) return 0;
  const std::uint8_t version = tree->Payload(header, 0, 1).U8();
  return tree->Payload(header, version == 1 ? 20 : 12, 4).U32();
}

class TrackInspection {
 public:
  TrackInspection(Findings* findings, MovieFacts* movie, Signs* signs)
      : findings_(findings), tree_(findings->Tree()), movie_(movie), signs_(signs) {}

  void Run(BoxId trak) {
    track_.id = TrackIdOf(&tree_, trak);
    bool media = false;
    for (BoxId box = tree_.FirstChild(trak); box != kNoBox; box = tree_.Next(box)) {
      switch (tree_.At(box).type) {
        case FourCC("mdia"):
          media = true;
          LookAtMedia(box);
          break;
        case FourCC("meta"):
        case FourCC("meco"):
          InspectItems(findings_, box);
          break;
        case FourCC("tref"):
          hasObjects_ = hasObjects_ || tree_.Child(box, FourCC("mpod")) != kNoBox;
          break;
        default:
          LookAtOther(box);
          break;
      }
    }
    if (!media) DoubtMissing(trak, "mdia");
    Publish(trak);
  }

 private:
  void LookAtMedia(BoxId mdia) {
    const BoxId handler = tree_.Child(mdia, FourCC("hdlr"));
    if (handler != kNoBox) {
      FieldView fields = tree_.Payload(handler, 8, 4);
      const std::uint32_t type = fields.Type();
      if (fields.Ok()) track_.handler = TypeText(type);
      hasObjects_ = hasObjects_ || type == FourCC("odsm");
      if (type == FourCC("ipsm")) findings_->Doubt(handler, "a track of IPMP messages");
    }
    FollowEach(mdia, "minf", [this](BoxId minf) { LookAtInformation(minf); });
  }

  void LookAtInformation(BoxId minf) {
    FollowEach(minf, "stbl", [this](BoxId stbl) { LookAtTables(stbl); });
  }

  void LookAtTables(BoxId stbl) {
    sampleTables_.push_back(stbl);
    FollowEach(stbl, "stsd", [this](BoxId stsd) {
      const EntriesSeen seen = InspectSampleEntries(findings_, stsd, &track_, movie_);
      entries_ += seen.count;
      hasObjects_ = hasObjects_ || seen.anyOfObjects;
    });
  }

  /// The way to the sample entries leads through every child of one type.
  template <class Follow>
  void FollowEach(BoxId parent, const char (&type)[5], const Follow& follow) {
    bool any = false;
    for (BoxId box = tree_.FirstChild(parent); box != kNoBox; box = tree_.Next(box)) {
      if (tree_.At(box).type != FourCC(type)) {
        LookAtOther(box);
        continue;
      }
      any = true;
      follow(box);
    }
    if (!any) DoubtMissing(parent, type);
  }

  void LookAtOther(BoxId box) {
    if (!signs_->Collect(box, track_.id) && !InspectSystem(findings_, box))
      CheckUnknownBox(findings_, box);
  }

  void DoubtMissing(BoxId parent, const char* type) {
    findings_->Doubt(parent, "track " + std::to_string(track_.id) + " has no \"" + type +
                                 "\" box, so its sample entries are unknown");
  }

  void Publish(BoxId trak) {
    if (hasObjects_ && movie_->objectTracks.size() >= kMostTracks) {
      findings_->Doubt(trak, "there are more object descriptor tracks than the limit");
    } else if (hasObjects_) {
      movie_->objectTracks.push_back({trak, std::move(sampleTables_)});
    }
    TrackFacts& facts = movie_->tracks[track_.id];
    facts.entries = std::max(facts.entries, entries_);
    facts.isProtected = facts.isProtected || track_.isProtected;
    std::vector<ReportTrack>& reported = findings_->Result().tracks;
    if (reported.size() < kMostTracks) reported.push_back(std::move(track_));
  }

  Findings* findings_;
  BoxTree& tree_;
  MovieFacts* movie_;
  Signs* signs_;
  ReportTrack track_;
  std::vector<BoxId> sampleTables_;
  std::uint64_t entries_ = 0;
  bool hasObjects_ = false;
};

}  // namespace

void InspectTrack(Findings* findings, BoxId trak, MovieFacts* movie, Signs* signs) {
  TrackInspection(findings, movie, signs).Run(trak);
}

}  // namespace mp4
