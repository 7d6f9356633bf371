#include "boxes/movie/BoxMVEX.h"

#include <algorithm>

#include "boxes/base/BoxReading.h"
#include "io/FourCC.h"

namespace {

/// Up to here a look-up scans the records; a movie that brings more for its fragments to search
/// over and over gets a sorted list.
constexpr std::size_t kMostScanned = 32;

}  // namespace

bool BoxMVEX::ReadData(mmStreamReader* reader, long long size, Mp4Context* /*context*/) {
  if (reader == nullptr || size < 0) return false;
  const auto dispatch = [&](const mp4::ChildHeader& child) {
    switch (child.type) {
      case mp4::FourCC("trex"):
        return mp4::ReadCollected(&trackExtends, reader, child, nullptr);
      case mp4::FourCC("mehd"):
        return mp4::ReadCollected(&headers, reader, child, nullptr);
      default:
        return mp4::Child::kUnknown;
    }
  };
  return mp4::ReadEnteredContainer(reader, size, dispatch);
}

BoxTREX* BoxMVEX::FindTrackExtends(std::uint32_t track_ID) {
  if (trackExtends.size() <= kMostScanned) return ScanTrackExtends(track_ID);
  const bool sorted =
      sortedIDs.size() == trackExtends.size() || mp4::WithoutThrowing([this] { SortIDs(); });
  if (!sorted) return ScanTrackExtends(track_ID);
  auto at =
      std::lower_bound(sortedIDs.begin(), sortedIDs.end(), std::pair(track_ID, std::size_t{0}));
  for (; at != sortedIDs.end() && at->first == track_ID; ++at) {
    if (trackExtends[at->second] != nullptr) return trackExtends[at->second].get();
  }
  return nullptr;
}

BoxTREX* BoxMVEX::ScanTrackExtends(std::uint32_t track_ID) {
  const auto found = std::find_if(
      trackExtends.begin(), trackExtends.end(),
      [track_ID](const auto& record) { return record != nullptr && record->track_ID == track_ID; });
  return found != trackExtends.end() ? found->get() : nullptr;
}

void BoxMVEX::SortIDs() {
  sortedIDs.clear();
  sortedIDs.reserve(trackExtends.size());
  for (std::size_t i = 0; i < trackExtends.size(); ++i) {
    const BoxTREX* record = trackExtends[i].get();
    sortedIDs.emplace_back(record != nullptr ? record->track_ID : 0, i);
  }
  std::sort(sortedIDs.begin(), sortedIDs.end());
}
