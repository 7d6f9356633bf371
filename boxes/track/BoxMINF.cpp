#include "boxes/track/BoxMINF.h"

#include "boxes/base/BoxReading.h"
#include "io/FourCC.h"

namespace {

constexpr long long kSmallestMediaInformation = 1;

}  // namespace

BoxMINF::~BoxMINF() { Clear(); }

bool BoxMINF::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || context == nullptr || size < kSmallestMediaInformation) return false;
  const auto dispatch = [&](const mp4::ChildHeader& child) {
    switch (child.type) {
      case mp4::FourCC("vmhd"):
        return mp4::ReadReplacing(&videoHeaderBox, reader, child, context);
      case mp4::FourCC("smhd"):
        return mp4::ReadReplacing(&soundHeaderBox, reader, child, context);
      case mp4::FourCC("dinf"):
        return mp4::ReadReplacing(&dataInformationBox, reader, child, context);
      case mp4::FourCC("stbl"):
        return mp4::ReadReplacing(&sampleTableBox, reader, child, context);
      default:
        return mp4::Child::kUnknown;
    }
  };
  return mp4::ReadContainer(reader, size, 0, dispatch) && sampleTableBox != nullptr;
}

void BoxMINF::Clear() {
  videoHeaderBox.reset();
  soundHeaderBox.reset();
  dataInformationBox.reset();
  sampleTableBox.reset();
}

bool BoxMINF::ReadyToDemux(SAMPLE* sample) {
  return sampleTableBox != nullptr && sampleTableBox->ReadyToDemux(sample) != 0;
}

bool BoxMINF::GetSampleInfo(SAMPLE* sample) {
  if (sample == nullptr || sampleTableBox == nullptr) return false;
  return sampleTableBox->GetSampleInfo(sample) != 0;
}

bool BoxMINF::Next() { return sampleTableBox != nullptr && sampleTableBox->Next(); }

long long BoxMINF::Seek(long long mediaTime) {
  return sampleTableBox != nullptr ? sampleTableBox->Seek(mediaTime) : -1;
}
