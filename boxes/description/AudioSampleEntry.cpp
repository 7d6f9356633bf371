#include "boxes/description/AudioSampleEntry.h"

#include "boxes/base/BoxReading.h"
#include "boxes/description/SampleEntryReading.h"
#include "boxes/description/SoundDescription.h"
#include "io/Charge.h"
#include "io/FourCC.h"

namespace {

using Track = Mp4Context::TRACK;

/// The one child that is read. ISO/IEC 14496-12 allows any number of them.
struct FirstChild {
  long long size;
  std::uint32_t type;
  long long position;  ///< bytes of the entry behind the reader, which stands after the type
};

void Publish(const mp4::SoundDescription& sound, Track* track) {
  if (track == nullptr) return;
  track->format = sound.format;
  track->channels = sound.channels;
  track->bitsPerSample = sound.bitsPerSample;
  track->sampleRate = sound.sampleRate;
}

/// Packets of "ima4" have a fixed shape that old files leave out.
void PublishPackets(mp4::SoundDescription sound, Track* track) {
  if (track == nullptr) return;
  if (sound.format == mp4::FourCC("ima4")) {
    if (sound.samplesPerPacket == 0) sound.samplesPerPacket = 64;
    if (sound.bytesPerPacket == 0) sound.bytesPerPacket = 34;
    if (sound.bytesPerFrame == 0) sound.bytesPerFrame = 34 * sound.channels;
  }
  track->compressionId = sound.compressionId;
  track->samplesPerPacket = sound.samplesPerPacket;
  track->bytesPerPacket = sound.bytesPerPacket;
  track->bytesPerFrame = sound.bytesPerFrame;
}

FirstChild ReadFirstHeader(mmStreamReader* reader, long long size, long long headerSize) {
  const long long stored = reader->GetBe32();
  const std::uint32_t type = reader->GetLe32();
  return {stored != 0 ? stored : size - headerSize, type, headerSize + 8};
}

/// Finds the "wave" of a sound description with extra fields, one word at a time. The host relies
/// on the child size it leaves behind: the word before the type, in the byte order of a type. False
/// when the opening's account refuses.
bool SearchForward(mmStreamReader* reader, long long size, FirstChild* child) {
  const long long last = size - 8;
  while (child->type != mp4::FourCC("wave") && child->type != mp4::FourCC("chan") &&
         child->position < last) {
    if (child->size == 0 && child->type == 0 && mp4::Remaining(reader) == 0) {
      // Nothing but zeros will come: take the remaining steps at once.
      const long long passed = (last - child->position + 3) / 4 * 4;
      mp4::PassAsRead(reader, passed);
      child->position += passed;
      break;
    }
    if (!mp4::ChargeStep(reader)) return false;
    child->size = child->type;
    child->type = reader->GetLe32();
    child->position += 4;
  }
  if (child->size == 0) child->size = size - child->position;
  return true;
}

/// The whole atom becomes the extradata. The host relies on its first word, which is not the size
/// in any byte order.
bool ReadAlac(mmStreamReader* reader, long long childSize, Track* track) {
  if (childSize < 8) {
    reader->Skip(childSize - 8);
    return true;
  }
  if (track == nullptr) {
    mp4::PassAsRead(reader, childSize - 8);
    return true;
  }
  reader->Skip(-8);
  if (!mp4::ReadExtraData(reader, childSize, track)) return false;
  const auto s = static_cast<std::uint32_t>(mp4::Truncate32(childSize));
  mp4::StoreLe32(track->extraData[0].get(), s | s << 8 | s << 16 | s << 24);
  return true;
}

/// False when memory or the account refuses, which is all that fails a child with a payload.
template <class Box>
bool ReadOwned(std::unique_ptr<Box>* slot, mmStreamReader* reader, const mp4::ChildHeader& child,
               Mp4Context* context) {
  mp4::Child result = mp4::Child::kFailed;
  const bool made =
      mp4::WithoutThrowing([&] { result = mp4::ReadReplacing(slot, reader, child, context); });
  return made && (result == mp4::Child::kRead || child.payload < 1);
}

/// False when memory or the account refuses; a broken child is passed by.
bool ReadChild(BoxSTSD::AudioSampleEntry* entry, mmStreamReader* reader, const FirstChild& child,
               Mp4Context* context) {
  const mp4::ChildHeader header{child.type, child.size, child.size - 8};
  switch (child.type) {
    case mp4::FourCC("alac"):
      return ReadAlac(reader, child.size, mp4::CurrentTrack(context));
    case mp4::FourCC("wave"):
      return ReadOwned(&entry->wave, reader, header, context) || context == nullptr;
    case mp4::FourCC("esds"):
      return ReadOwned(&entry->esds, reader, header, context);
    default:
      reader->Skip(header.payload);
      return true;
  }
}

}  // namespace

bool BoxSTSD::AudioSampleEntry::ReadData(mmStreamReader* reader, long long size,
                                         Mp4Context* context) {
  if (reader == nullptr) return false;
  const mp4::SoundDescription sound = mp4::ReadSoundDescription(reader);
  Publish(sound, mp4::CurrentTrack(context));

  const bool quickTime = context != nullptr && context->GetFileMode() == MP4_FILE_MODE_MOV;
  long long consumed = sound.headerSize;
  bool read = true;
  if (sound.headerSize < size) {
    FirstChild child = ReadFirstHeader(reader, size, sound.headerSize);
    if (quickTime && sound.headerSize + 12 < size) read = SearchForward(reader, size, &child);
    read = read && ReadChild(this, reader, child, context);
    consumed = mp4::WrapAdd(child.position - 8, child.size);
  }
  if (quickTime) PublishPackets(sound, mp4::CurrentTrack(context));
  reader->Skip(mp4::WrapSub(size, consumed));
  return read;
}
