#include "inspect/Movie.h"

#include "inspect/Items.h"
#include "inspect/Misplaced.h"
#include "inspect/Signs.h"
#include "inspect/Systems.h"
#include "inspect/Track.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

/// MovieExtendsBox "mvex" (8.8.1): which sample entry the fragments of a track use by default.
void ReadExtends(BoxTree* tree, BoxId mvex, std::unordered_map<std::uint32_t, std::uint32_t>* to) {
  for (BoxId trex = tree->Child(mvex, FourCC("trex")); trex != kNoBox;
       trex = tree->NextOfType(trex)) {
    FieldView fields = tree->Payload(trex, 4, 8);
    const std::uint32_t track = fields.U32();
    const std::uint32_t entry = fields.U32();
    if (fields.Ok()) (*to)[track] = entry;
  }
}

/// One movie box while it is looked at.
class MovieInspection {
 public:
  MovieInspection(Findings* findings, MovieFacts* movie, Signs* signs)
      : findings_(findings), tree_(findings->Tree()), movie_(movie), signs_(signs) {}

  /// Compressed movies may hold further ones; no box waits for another.
  void Run(BoxId moov) {
    waiting_.push_back(moov);
    while (!waiting_.empty()) {
      const BoxId next = waiting_.back();
      waiting_.pop_back();
      LookAt(next);
    }
  }

 private:
  void LookAt(BoxId moov) {
    bool any = false;
    extends_.clear();
    for (BoxId box = tree_.FirstChild(moov); box != kNoBox; box = tree_.Next(box)) {
      const std::uint32_t type = tree_.At(box).type;
      any = any || type == FourCC("trak") || type == FourCC("cmov") || type == FourCC("moov");
      LookAtChild(box, type);
    }
    if (!any) findings_->Doubt(moov, "the movie box holds no track");
    for (const auto& [track, entry] : extends_) {
      const auto facts = movie_->tracks.find(track);
      if (facts != movie_->tracks.end()) facts->second.defaultEntry = entry;
    }
  }

  void LookAtChild(BoxId box, std::uint32_t type) {
    switch (type) {
      case FourCC("trak"):
        InspectTrack(findings_, box, movie_, signs_);
        break;
      case FourCC("cmov"):
        LookAtCompressed(box);
        break;
      case FourCC("moov"):  // an inflated "!mov" may begin with its own header
        waiting_.push_back(box);
        break;
      case FourCC("meta"):
        InspectItems(findings_, box);
        break;
      case FourCC("mvex"):
        movie_->hasFragments = true;
        ReadExtends(&tree_, box, &extends_);
        break;
      case FourCC("drm "):
      case FourCC("ipmc"):
        findings_->Note("a vendor's or IPMP rights box stands in the movie box");
        break;
      default:
        if (!InspectSystem(findings_, box)) CheckUnknownBox(findings_, box);
        break;
    }
  }

  void LookAtCompressed(BoxId cmov) {
    bool any = false;
    for (BoxId data = tree_.Child(cmov, FourCC("cmvd")); data != kNoBox;
         data = tree_.NextOfType(data)) {
      for (BoxId moov = tree_.FirstChild(data); moov != kNoBox; moov = tree_.Next(moov)) {
        if (tree_.At(moov).type != FourCC("moov")) continue;
        any = true;
        waiting_.push_back(moov);
      }
    }
    if (!any) findings_->Doubt(cmov, "the compressed movie does not inflate to a movie box");
  }

  Findings* findings_;
  BoxTree& tree_;
  MovieFacts* movie_;
  Signs* signs_;
  std::vector<BoxId> waiting_;
  std::unordered_map<std::uint32_t, std::uint32_t> extends_;
};

}  // namespace

void InspectMovie(Findings* findings, BoxId moov, MovieFacts* movie, Signs* signs) {
  movie->seen = true;
  MovieInspection(findings, movie, signs).Run(moov);
}

}  // namespace mp4
