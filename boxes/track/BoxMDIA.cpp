#include "boxes/track/BoxMDIA.h"

#include "boxes/base/BoxReading.h"
#include "io/FourCC.h"

namespace {

constexpr long long kSmallestMedia = 4;

}  // namespace

BoxMDIA::~BoxMDIA() { Clear(); }

bool BoxMDIA::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || context == nullptr || size < kSmallestMedia) return false;
  const auto dispatch = [&](const mp4::ChildHeader& child) {
    switch (child.type) {
      case mp4::FourCC("mdhd"):
        return mp4::ReadReplacing(&mediaHeaderBox, reader, child, context);
      case mp4::FourCC("hdlr"):
        return mp4::ReadReplacing(&handlerBox, reader, child, context);
      case mp4::FourCC("minf"):
        return mp4::ReadReplacing(&mediaInformationBox, reader, child, context);
      default:
        return mp4::Child::kUnknown;
    }
  };
  return mp4::ReadContainer(reader, size, 0, dispatch) && IsComplete();
}

void BoxMDIA::Clear() {
  mediaHeaderBox.reset();
  handlerBox.reset();
  mediaInformationBox.reset();
}

unsigned int BoxMDIA::GetTimescale() {
  return mediaHeaderBox != nullptr ? mediaHeaderBox->GetTimescale() : 1;
}

bool BoxMDIA::ReadyToDemux(SAMPLE* sample) {
  if (sample == nullptr || !IsComplete()) return false;
  sample->timescale = GetTimescale();
  if (!handlerBox->IsVideo() && handlerBox->GetHandlerType() != mp4::FourCC("soun")) return false;
  sample->isVideo = handlerBox->IsVideo() ? 1 : 0;
  return mediaInformationBox->ReadyToDemux(sample);
}

bool BoxMDIA::GetSampleInfo(SAMPLE* sample) {
  if (sample == nullptr || !IsComplete()) return false;
  sample->isVideo = handlerBox->IsVideo() ? 1 : 0;
  sample->timescale = GetTimescale();
  return mediaInformationBox->GetSampleInfo(sample);
}

bool BoxMDIA::Next() { return IsComplete() && mediaInformationBox->Next(); }

long long BoxMDIA::Seek(long long mediaTime) {
  return mediaInformationBox != nullptr ? mediaInformationBox->Seek(mediaTime) : 0;
}
