#include "door/HostFormat.h"

#include <algorithm>
#include <string_view>

#include "inspect/Words.h"

namespace mp4 {

namespace {

constexpr std::string_view kFormat = "drms";
/// Places that are tried one by one.
constexpr std::size_t kMostPlaces = 64;

std::vector<std::uint64_t> PlacesOf(const std::vector<unsigned char>& bytes) {
  std::vector<std::uint64_t> places;
  auto at = bytes.begin();
  while (places.size() < kMostPlaces) {
    at = std::search(at, bytes.end(), kFormat.begin(), kFormat.end());
    if (at == bytes.end()) break;
    places.push_back(static_cast<std::uint64_t>(at - bytes.begin()));
    ++at;
  }
  return places;
}

/// The innermost box that holds a byte.
BoxId BoxAt(BoxTree* tree, std::uint64_t offset) {
  BoxId found = kRootBox;
  BoxId box = tree->FirstChild(kRootBox);
  while (box != kNoBox) {
    const Box at = tree->At(box);
    if (at.space == 0 && offset >= at.offset && offset < at.end) {
      found = box;
      box = tree->FirstChild(box);
    } else {
      box = tree->Next(box);
    }
  }
  return found;
}

}  // namespace

std::string WhereHostFindsFormat(HostTrial* trial) {
  if (trial->Answer({}) != MP4JUDGE_HOST_PROTECTED) return {};
  const std::vector<std::uint64_t> places = PlacesOf(trial->Copy().bytes);
  std::vector<HostTrial::Change> changes;
  for (const std::uint64_t place : places) {
    // One more each time: there may be several, each enough by itself.
    changes.push_back({place, {'n', 'o', 'n', 'e'}});
    if (trial->IsSpent()) return {};
    if (trial->Answer(changes) == MP4JUDGE_HOST_PROTECTED || trial->IsSpent()) continue;
    const BoxId box = BoxAt(&trial->Tree(), place);
    const std::string path = box != kRootBox ? trial->Tree().Path(box) : "no box";
    return "it takes \"drms\" at byte " + Grouped(trial->Copy().OffsetInSource(place)) + ", in " +
           path + ", for the first format of a track";
  }
  return {};
}

}  // namespace mp4
