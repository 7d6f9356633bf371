#include "boxes/description/VisualSampleEntry.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "boxes/base/BoxReading.h"
#include "boxes/description/SampleEntryReading.h"
#include "io/Charge.h"
#include "io/FourCC.h"
#include "io/NewArray.h"

namespace {

using Track = Mp4Context::TRACK;

/// The fixed part of a visual sample entry, its format included.
constexpr long long kFixedBytes = 82;

/// An SVQ3 sequence header is taken from at most this many bytes of its atom.
constexpr long long kSequenceAhead = 1000;
/// The decoder expects an image description before the sequence header. Only its first four bytes
/// are written; the rest of it is zero.
constexpr long long kSequenceOffset = 90;

struct ImageDescription {
  std::uint32_t format;
  std::uint32_t width;
  std::uint32_t height;
  std::uint32_t depth;
  char compressorName[32] = {};
};

/// A length that cannot be one means that the field is plain text of 32 bytes. In ISO/IEC 14496-12
/// the first byte always is the length.
void ReadCompressorName(mmStreamReader* reader, char (&name)[32]) {
  unsigned int bytes = sizeof name - 1;
  if (reader->GetByte() > bytes) {
    reader->Skip(-1);
    bytes = sizeof name;
  }
  reader->GetData(name, bytes);
}

ImageDescription ReadImageDescription(mmStreamReader* reader) {
  ImageDescription image;
  image.format = reader->GetLe32();
  reader->Skip(8);   // reserved, data reference index
  reader->Skip(16);  // version, revision, vendor, qualities
  image.width = reader->GetBe16();
  image.height = reader->GetBe16();
  reader->Skip(12);   // resolutions, data size
  reader->GetBe16();  // frame count
  ReadCompressorName(reader, image.compressorName);
  image.depth = reader->GetBe16();
  reader->Skip(2);  // color table
  return image;
}

void Publish(const ImageDescription& image, Track* track) {
  if (track == nullptr) return;
  track->videoWidth = image.width;
  track->videoHeight = image.height;
  track->videoDepth = image.depth;
  // Of repeated descriptions the first sets the format; in audio tracks the last does. Hosts rely
  // on both.
  if (track->format == 0) track->format = image.format;
  std::memcpy(track->compressorName, image.compressorName, sizeof image.compressorName);
}

/// Builds the extradata an SVQ3 decoder takes: "SVQ3", and `sequence` bytes from kSequenceOffset
/// on.
bool ReadSequence(mmStreamReader* reader, long long sequence, Track* track) {
  mp4::SetExtraData(track, nullptr, 0);
  const auto content = static_cast<std::size_t>(kSequenceOffset + sequence);
  const std::size_t allocated = (content + 24) & ~std::size_t{15};
  if (!mp4::Charge(reader, sequence, 0)) return false;
  auto bytes = mp4::NewZeroedArray<unsigned char>(allocated);
  if (bytes == nullptr) return false;
  std::memcpy(bytes.get(), "SVQ3", 4);
  reader->GetData(bytes.get() + kSequenceOffset, static_cast<unsigned int>(sequence));
  mp4::SetExtraData(track, std::move(bytes), content);
  return true;
}

/// The "SMI " atom holds one inner atom, the sequence header: tag, length, data. The length does
/// not count the tag and itself.
mp4::Child ReadSmi(mmStreamReader* reader, long long payload, Track* track) {
  const long long start = reader->GetPos();
  const long long ahead = std::min(kSequenceAhead, mp4::Remaining(reader));
  reader->Skip(4);
  const long long length = static_cast<std::int32_t>(reader->GetBe32());
  mp4::Child result = mp4::Child::kRead;
  long long consumed = 8;
  if (length > 0) {
    consumed += length;
    if (track != nullptr && consumed <= ahead) {
      reader->SetPos(start);
      if (!ReadSequence(reader, consumed, track)) result = mp4::Child::kFailed;
      reader->SetPos(start + 8);
    }
    reader->Skip(length);
  }
  reader->Skip(payload - consumed);
  return result;
}

}  // namespace

bool BoxSTSD::VisualSampleEntry::ReadData(mmStreamReader* reader, long long size,
                                          Mp4Context* context) {
  if (reader == nullptr) return false;
  Track* track = mp4::CurrentTrack(context);
  Publish(ReadImageDescription(reader), track);

  const auto dispatch = [&](const mp4::ChildHeader& child) {
    mp4::Child result = mp4::Child::kRead;
    switch (child.type) {
      case mp4::FourCC("SMI "):
        return ReadSmi(reader, child.payload, track);
      case mp4::FourCC("avcC"):
        result = mp4::ReadReplacing(&avcc, reader, child, context);
        return child.payload >= 0 ? result : mp4::Child::kRead;
      case mp4::FourCC("esds"):
        result = mp4::ReadReplacing(&esds, reader, child, context);
        return child.payload > 0 ? result : mp4::Child::kRead;
      default:
        return mp4::Child::kUnknown;
    }
  };
  // A child begins only where at least its header fits into the entry.
  const mp4::WalkEnd end = mp4::WalkChildren(reader, size, kFixedBytes, mp4::UnknownChild::kSkip,
                                             dispatch, mp4::WrapSub(size, 8));
  reader->Skip(mp4::WrapSub(size, end.consumed));
  return !end.failed;
}
