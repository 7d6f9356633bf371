#include "boxes/fragments/BoxMOOF.h"

#include "boxes/base/BoxReading.h"
#include "boxes/fragments/RunMerge.h"
#include "boxes/movie/BoxMOOV.h"
#include "io/FourCC.h"
#include "io/ScanControl.h"

namespace {

/// The sample tables of a track, or null where a link is missing.
BoxSTBL* SampleTables(const BoxTRAK& trak) {
  const BoxMDIA* media = trak.mediaBox.get();
  const BoxMINF* information = media != nullptr ? media->mediaInformationBox.get() : nullptr;
  return information != nullptr ? information->sampleTableBox.get() : nullptr;
}

/// Merges one track fragment, charging `scan` unless it is null. False when a charge was refused.
bool MergeRuns(const BoxTRAK& trak, const BoxTRAF& traf, const BoxTREX& trex,
               mp4::ScanControl* scan) {
  BoxSTBL* tables = SampleTables(trak);
  if (tables == nullptr) return true;
  const mp4::FragmentValues values = mp4::ChooseValues(*traf.header, trex);
  std::uint32_t bytes = 0;
  for (const auto& run : traf.runs) {
    if (run == nullptr || run->sample_count == 0) continue;
    mp4::RunMerge merge(*run, values, tables);
    if (scan != nullptr && !scan->TakeMerge(merge.Cost())) return false;
    merge.Append(&bytes);
  }
  return true;
}

/// The track box of an ID. An unknown ID deliberately leaves a null entry in the map: hosts see it
/// there, and every walk over the tracks allows for it.
BoxTRAK* TrackOrNullEntry(BoxMOOV* moov, std::uint32_t id) {
  return moov->tracks[static_cast<std::int32_t>(id)].get();
}

void MergeAll(const BoxMOOF& fragment, BoxMOOV* moov, mp4::ScanControl* scan) {
  BoxMVEX* extends = moov->movieExtendsBox.get();
  for (const auto& traf : fragment.trackFragments) {
    if (traf == nullptr || traf->header == nullptr) continue;
    const std::uint32_t id = traf->header->track_ID;
    const BoxTRAK* trak = TrackOrNullEntry(moov, id);
    const BoxTREX* trex = extends->FindTrackExtends(id);
    // Hosts rely on the merge ending here. In ISO/IEC 14496-12 each track fragment stands alone.
    if (trak == nullptr || trex == nullptr) return;
    if (!MergeRuns(*trak, *traf, *trex, scan)) return;
  }
}

}  // namespace

bool BoxMOOF::ReadData(mmStreamReader* reader, long long size, Mp4Context* /*context*/) {
  if (reader == nullptr || size < 0) return false;
  const auto dispatch = [&](const mp4::ChildHeader& child) {
    switch (child.type) {
      case mp4::FourCC("traf"):
        return mp4::ReadCollected(&trackFragments, reader, child, nullptr);
      case mp4::FourCC("mfhd"):
        return mp4::ReadReused(&header, reader, child, nullptr);
      default:
        return mp4::Child::kUnknown;
    }
  };
  return mp4::ReadEnteredContainer(reader, size, dispatch);
}

void BoxMOOF::MergeFragment(Mp4Context* context, BoxMOOV* moov) {
  if (context == nullptr || moov == nullptr || moov->movieExtendsBox == nullptr) return;
  mp4::WithoutThrowing([&] { MergeAll(*this, moov, context->scan); });
}

void BoxMOOF::MergeTrack(BoxTRAK* trak, BoxTRAF* traf, BoxTREX* trex) {
  if (trak == nullptr || traf == nullptr || trex == nullptr || traf->header == nullptr) return;
  mp4::WithoutThrowing([&] { MergeRuns(*trak, *traf, *trex, nullptr); });
}
