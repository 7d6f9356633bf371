#include "boxes/fragments/BoxTRAF.h"

#include "boxes/base/BoxReading.h"
#include "io/FourCC.h"

bool BoxTRAF::ReadData(mmStreamReader* reader, long long size, Mp4Context* /*context*/) {
  if (reader == nullptr) return false;
  const auto dispatch = [&](const mp4::ChildHeader& child) {
    switch (child.type) {
      case mp4::FourCC("trun"):
        return mp4::ReadCollected(&runs, reader, child, nullptr);
      case mp4::FourCC("tfhd"):
        return mp4::ReadReused(&header, reader, child, nullptr);
      default:
        return mp4::Child::kUnknown;
    }
  };
  return mp4::ReadEnteredContainer(reader, size, dispatch);
}
