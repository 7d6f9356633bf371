#include "boxes/fragments/BoxMOOF.h"

#include "boxes/base/BoxReading.h"
#include "io/FourCC.h"

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
