#include "inspect/Fragment.h"

#include "inspect/Items.h"
#include "inspect/Misplaced.h"
#include "inspect/Systems.h"
#include "io/FourCC.h"

namespace mp4 {

void Fragments::Inspect(BoxId moof) {
  BoxTree& tree = findings_->Tree();
  for (BoxId box = tree.FirstChild(moof); box != kNoBox; box = tree.Next(box)) {
    switch (tree.At(box).type) {
      case FourCC("traf"):
        LookAtTrack(box);
        break;
      case FourCC("meta"):
      case FourCC("meco"):
        InspectItems(findings_, box);
        break;
      case FourCC("moof"):  // an inflated "!mof" may begin with its own header
        Inspect(box);
        break;
      default:
        if (InspectSystem(findings_, box)) {
          signs_->CollectSystem(box);
        } else {
          CheckUnknownBox(findings_, box);
        }
        break;
    }
  }
}

void Fragments::LookAtTrack(BoxId traf) {
  BoxTree& tree = findings_->Tree();
  const BoxId header = tree.Child(traf, FourCC("tfhd"));
  std::uint32_t track = 0;
  if (header != kNoBox) {
    LookAtHeader(header, &track);
  } else {
    findings_->Doubt(traf, "a track fragment without a header");
  }
  for (BoxId box = tree.FirstChild(traf); box != kNoBox; box = tree.Next(box)) {
    const std::uint32_t type = tree.At(box).type;
    if (type == FourCC("meta") || type == FourCC("meco")) {
      InspectItems(findings_, box);
    } else if (InspectSystem(findings_, box)) {
      signs_->CollectSystem(box);
    } else if (!signs_->Collect(box, track)) {
      CheckUnknownBox(findings_, box);
    }
  }
}

/// TrackFragmentHeaderBox "tfhd" (8.8.7).
void Fragments::LookAtHeader(BoxId tfhd, std::uint32_t* track) {
  FieldView fields = findings_->Tree().Payload(tfhd, 0, 20);
  const VersionAndFlags head = ReadVersionAndFlags(&fields);
  *track = fields.U32();
  if ((head.flags & 1) != 0) fields.Skip(8);  // base data offset
  const std::uint32_t entry = (head.flags & 2) != 0 ? fields.U32() : 0;
  if (!fields.Ok()) findings_->Doubt(tfhd, "the header of a track fragment is cut");
  if (seen_.insert(std::uint64_t{*track} << 32 | entry).second)
    uses_.push_back({tfhd, *track, entry});
}

void Fragments::Check(const MovieFacts& movie) {
  if (!movie.seen) return;
  for (const FragmentUse& use : uses_) {
    const auto track = movie.tracks.find(use.track);
    if (track == movie.tracks.end()) {
      findings_->Doubt(
          use.box, "a fragment of track " + std::to_string(use.track) + ", which no movie box has");
      continue;
    }
    const std::uint32_t entry = use.entry != 0 ? use.entry : track->second.defaultEntry;
    if (entry == 0 || entry > track->second.entries) {
      findings_->Doubt(use.box, "a fragment of track " + std::to_string(use.track) +
                                    " uses sample entry " + std::to_string(entry) + " of " +
                                    std::to_string(track->second.entries));
    }
  }
}

}  // namespace mp4
