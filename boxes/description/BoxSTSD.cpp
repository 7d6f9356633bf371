#include "boxes/description/BoxSTSD.h"

#include "boxes/base/BoxReading.h"
#include "boxes/base/Mp4Context.h"
#include "io/FourCC.h"

namespace {

using Entry = BoxSTSD::BaseSampleEntry;

/// The entry a handler's samples are described by; null for handlers without one.
std::unique_ptr<Entry> MakeEntry(std::uint32_t handlerType) {
  switch (handlerType) {
    case mp4::FourCC("vide"):
      return std::make_unique<BoxSTSD::VisualSampleEntry>();
    case mp4::FourCC("soun"):
      return std::make_unique<BoxSTSD::AudioSampleEntry>();
    case mp4::FourCC("hint"):
      return std::make_unique<BoxSTSD::HintSampleEntry>();
    default:
      return nullptr;
  }
}

}  // namespace

bool BoxSTSD::MpegSampleEntry::ReadData(mmStreamReader* reader, long long size,
                                        Mp4Context* context) {
  return BoxBase::ReadData(reader, size, context);
}

bool BoxSTSD::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 1) return false;
  Clear();
  mp4::SkipFullBoxHeader(reader);
  // The first entry alone is read. In ISO/IEC 14496-12 a sample-to-chunk run chooses among them.
  reader->GetBe32();  // entry count
  const Mp4Context::TRACK* track = mp4::CurrentTrack(context);
  handlerType = track != nullptr ? track->handlerType : 0;
  const long long stored = reader->GetBe32();
  const long long entrySize = stored != 0 ? stored : size - 8;
  if (handlerType == mp4::FourCC("MPEG")) return false;
  if (!mp4::WithoutThrowing([this] { entry = MakeEntry(handlerType); })) return false;
  if (entry == nullptr) {
    reader->Skip(entrySize - 4);
  } else if (!entry->ReadData(reader, entrySize - 4, context)) {
    return false;
  }
  reader->Skip(size - (entrySize + 8));
  return true;
}

void BoxSTSD::Clear() { entry.reset(); }
