#include "inspect/Movie.h"

#include "inspect/Ipmp.h"
#include "inspect/Items.h"
#include "inspect/Misplaced.h"
#include "inspect/Signs.h"
#include "inspect/Systems.h"
#include "inspect/Track.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

/// MovieHeaderBox "mvhd" (8.2.2) of version 1 with its own header; a longer one may cover tracks.
constexpr std::uint64_t kLongestHeader = 120;

/// One movie box while it is looked at.
class MovieInspection {
 public:
  MovieInspection(Findings* findings, MovieFacts* movie, Signs* signs)
      : findings_(findings), tree_(findings->Tree()), movie_(movie), signs_(signs) {}

  /// Compressed movies may hold further ones, as deep as the tree goes.
  void LookAt(BoxId moov) {
    bool any = false;
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

 private:
  void LookAtChild(BoxId box, std::uint32_t type) {
    switch (type) {
      case FourCC("trak"):
        InspectTrack(findings_, box, movie_, signs_);
        break;
      case FourCC("cmov"):
        LookAtCompressed(box);
        break;
      case FourCC("moov"):  // an inflated "!mov" may begin with its own header
        LookAt(box);
        break;
      case FourCC("meta"):
      case FourCC("meco"):
        InspectItems(findings_, box);
        break;
      case FourCC("iods"):
        InspectInitialObjects(findings_, box, movie_);
        break;
      case FourCC("mvex"):
        movie_->hasFragments = true;
        ReadExtends(box);
        break;
      case FourCC("mvhd"):
        if (tree_.At(box).size > kLongestHeader)
          findings_->Doubt(box, "the movie header is longer than its fields");
        break;
      case FourCC("drm "):
        findings_->Note("a vendor's rights box stands in the movie box");
        break;
      case FourCC("ipmc"):
        InspectIpmpControl(findings_, box, movie_);
        break;
      default:
        if (!InspectSystem(findings_, box)) CheckUnknownBox(findings_, box);
        break;
    }
  }

  /// MovieExtendsBox "mvex" (8.8.1): which sample entry the fragments of a track use by default.
  void ReadExtends(BoxId mvex) {
    for (BoxId box = tree_.FirstChild(mvex); box != kNoBox; box = tree_.Next(box)) {
      if (tree_.At(box).type != FourCC("trex")) {
        CheckUnknownBox(findings_, box);
        continue;
      }
      FieldView fields = tree_.Payload(box, 4, 8);
      const std::uint32_t track = fields.U32();
      const std::uint32_t entry = fields.U32();
      if (fields.Ok()) extends_[track] = entry;
    }
  }

  /// Compressed movie (QuickTime): "dcom" names the method, "cmvd" holds a size and the data.
  void LookAtCompressed(BoxId cmov) {
    bool any = false;
    const BoxId method = tree_.Child(cmov, FourCC("dcom"));
    if (method == kNoBox || tree_.Payload(method, 0, 4).Type() != FourCC("zlib"))
      findings_->Doubt(cmov, "the movie is compressed by an unknown method");
    for (BoxId data = tree_.Child(cmov, FourCC("cmvd")); data != kNoBox;
         data = tree_.NextOfType(data)) {
      for (BoxId moov = tree_.FirstChild(data); moov != kNoBox; moov = tree_.Next(moov)) {
        if (tree_.At(moov).type != FourCC("moov")) {
          CheckUnknownBox(findings_, moov);
          continue;
        }
        any = true;
        CheckInflatedSize(data, moov);
        LookAt(moov);
      }
    }
    if (!any) findings_->Doubt(cmov, "the compressed movie does not inflate to a movie box");
  }

  void CheckInflatedSize(BoxId data, BoxId moov) {
    const std::uint32_t stated = tree_.Payload(data, 0, 4).U32();
    if (tree_.SpaceSize(tree_.At(moov).space) < stated)
      findings_->Doubt(data, "the compressed movie inflates to less than its stated size");
  }

  Findings* findings_;
  BoxTree& tree_;
  MovieFacts* movie_;
  Signs* signs_;
  std::map<std::uint32_t, std::uint32_t> extends_;
};

}  // namespace

void InspectMovie(Findings* findings, BoxId moov, MovieFacts* movie, Signs* signs) {
  movie->seen = true;
  MovieInspection(findings, movie, signs).LookAt(moov);
}

}  // namespace mp4
