#include "samples/GroupBoxes.h"

#include "io/FourCC.h"
#include "samples/TableBytes.h"

namespace mp4 {

GroupBoxes FindGroupBoxes(BoxTree* tree, BoxId parent) {
  GroupBoxes groups;
  for (BoxId child = tree->FirstChild(parent); child != kNoBox; child = tree->Next(child)) {
    const std::uint32_t type = tree->At(child).type;
    const bool map = type == FourCC("sbgp") || type == FourCC("csgp");
    if (!map && type != FourCC("sgpd")) continue;
    if (tree->Payload(child, 4, 4).Type() != FourCC("seig")) continue;
    if (map ? groups.map.there : groups.descriptions.there) continue;
    TableBytes bytes;
    SampleProblems problems;
    const std::uint64_t size = tree->At(child).PayloadSize();
    bytes.Load(tree, child, 0, size, &problems);
    const FieldView payload(bytes.data(), bytes.size());
    if (type == FourCC("sgpd")) {
      groups.descriptions = ReadGuardDescriptions(payload);
    } else if (type == FourCC("sbgp")) {
      groups.map = ReadSampleToGroup(payload);
    } else {
      groups.map = ReadCompactSampleToGroup(payload, false);
    }
    if (map && bytes.size() < size) groups.map.cut = true;
  }
  return groups;
}

}  // namespace mp4
