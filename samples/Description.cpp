#include "samples/Description.h"

#include <cstring>

#include "io/FourCC.h"
#include "iso/ProtectedFormats.h"

namespace mp4 {

namespace {

/// Largest decoder configuration kept; the longest parameter sets take a few kilobytes.
constexpr std::size_t kMostConfig = std::size_t{64} << 10;

bool IsConfiguration(std::uint32_t type) {
  switch (type) {
    case FourCC("avcC"):
    case FourCC("hvcC"):
    case FourCC("vvcC"):
    case FourCC("evcC"):
    case FourCC("av1C"):
    case FourCC("vpcC"):
    case FourCC("esds"):
    case FourCC("dac3"):
    case FourCC("dec3"):
    case FourCC("dac4"):
    case FourCC("dOps"):
    case FourCC("dfLa"):
    case FourCC("alac"):
    case FourCC("ddts"):
    case FourCC("mhaC"):
    case FourCC("d263"):
    case FourCC("damr"):
    case FourCC("glbl"):
    case FourCC("jp2h"):
    case FourCC("vttC"):
    case FourCC("pcmC"):
      return true;
    default:
      return false;
  }
}

/// The type by "frma", the scheme by "schm", and by "tenc" whether samples are protected by
/// default: of several alternatives, one that says yes is enough.
void ReadProtection(BoxTree* tree, BoxId entry, Description* read) {
  read->isProtected = IsForProtectedMedia(KindOfFormat(read->format));
  bool any = false;
  for (BoxId sinf = tree->Child(entry, FourCC("sinf")); sinf != kNoBox;
       sinf = tree->NextOfType(sinf)) {
    const BoxId frma = tree->Child(sinf, FourCC("frma"));
    if (frma != kNoBox && read->original == 0) read->original = tree->Payload(frma, 0, 4).Type();
    const BoxId schm = tree->Child(sinf, FourCC("schm"));
    if (schm != kNoBox && read->scheme == 0) read->scheme = tree->Payload(schm, 4, 4).Type();
    const BoxId schi = tree->Child(sinf, FourCC("schi"));
    const BoxId tenc = schi != kNoBox ? tree->Child(schi, FourCC("tenc")) : kNoBox;
    bool byDefault = true;
    if (tenc != kNoBox) {
      FieldView fields = tree->Payload(tenc, 6, 1);
      const std::uint8_t isProtected = fields.U8();
      byDefault = !fields.Ok() || isProtected != 0;
    }
    read->byDefault = read->byDefault || byDefault;
    any = true;
  }
  if (any) {
    read->isProtected = true;
  } else {
    read->byDefault = read->isProtected;
  }
}

double DoubleOf(std::uint64_t bits) {
  double value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value == value ? value : 0;
}

/// Fields of a sound entry; those of QuickTime's versions where the description box is version 0.
void ReadSound(FieldView fields, bool quickTime, Description* read) {
  fields.Skip(8);
  const std::uint16_t version = fields.U16();
  fields.Skip(6);
  read->channels = fields.U16();
  read->bits = fields.U16();
  read->compression = fields.S16();
  fields.Skip(2);
  read->rate = fields.U32() / 65536.0;
  if (!quickTime || (version != 1 && version != 2)) return;
  FieldView more = fields;
  if (version == 1) {
    const std::uint32_t frames = more.U32();
    const std::uint32_t channelBytes = more.U32();
    const std::uint32_t bytes = more.U32();
    more.Skip(4);
    if (!more.Ok()) return;
    read->framesPerPacket = frames;
    read->bytesPerPacket = bytes != 0 ? bytes : channelBytes * read->channels;
  } else {
    more.Skip(4);
    const double rate = DoubleOf(more.U64());
    const std::uint32_t channels = more.U32();
    more.Skip(4);
    const std::uint32_t bits = more.U32();
    more.Skip(4);
    const std::uint32_t bytes = more.U32();
    const std::uint32_t frames = more.U32();
    if (!more.Ok()) return;
    read->rate = rate;
    read->channels = channels;
    read->bits = bits;
    read->bytesPerPacket = bytes;
    read->framesPerPacket = frames;
  }
  read->soundVersion = version;
}

void KeepConfiguration(BoxTree* tree, BoxId box, Description* read) {
  const std::uint64_t size = tree->At(box).PayloadSize();
  if (size > kMostConfig) return;
  FieldView fields = tree->Payload(box);
  const unsigned char* bytes = fields.Bytes(static_cast<std::size_t>(size));
  if (bytes == nullptr) return;
  read->configType = tree->At(box).type;
  read->config.assign(bytes, bytes + size);
}

void FindConfiguration(BoxTree* tree, BoxId parent, Description* read) {
  for (BoxId child = tree->FirstChild(parent); child != kNoBox; child = tree->Next(child)) {
    const std::uint32_t type = tree->At(child).type;
    if (type == FourCC("wave")) FindConfiguration(tree, child, read);
    if (read->configType == 0 && IsConfiguration(type)) KeepConfiguration(tree, child, read);
  }
}

}  // namespace

Description ReadDescription(BoxTree* tree, BoxId entry, std::uint32_t handler) {
  Description read;
  const Box box = tree->At(entry);
  read.format = box.type;
  const bool sound = handler == FourCC("soun") || read.format == FourCC("enca") ||
                     read.format == FourCC("drms") || read.format == FourCC("aavd");
  if (sound && box.PayloadSize() >= 28) {
    const bool quickTime = tree->Payload(box.parent, 0, 1).U8() == 0;
    ReadSound(tree->Payload(entry, 0, 64), quickTime, &read);
  } else if (!sound && handler != FourCC("text") && box.PayloadSize() >= 78) {
    FieldView fields = tree->Payload(entry, 24, 4);
    read.width = fields.U16();
    read.height = fields.U16();
  }
  ReadProtection(tree, entry, &read);
  FindConfiguration(tree, entry, &read);
  return read;
}

namespace {

/// Codecs whose packets always are the same: frames, and bytes of a channel (of all for "agsm").
Packing FixedPacking(std::uint32_t codec, std::uint32_t channels) {
  switch (codec) {
    case FourCC("MAC3"):
      return {6, 2 * channels};
    case FourCC("MAC6"):
      return {6, channels};
    case FourCC("ima4"):
      return {64, 34 * channels};
    case FourCC("agsm"):
      return {160, channels != 0 ? 33U : 0U};
    default:
      return {1, 0};
  }
}

/// Bytes of one frame of uncompressed sound; 0 for other codecs.
std::uint32_t FrameBytes(const Description& d) {
  switch (d.Codec()) {
    case FourCC("ulaw"):
    case FourCC("alaw"):
      return d.channels;
    case FourCC("in24"):
      return 3 * d.channels;
    case FourCC("in32"):
    case FourCC("fl32"):
      return 4 * d.channels;
    case FourCC("fl64"):
      return 8 * d.channels;
    case FourCC("raw "):
    case FourCC("twos"):
    case FourCC("sowt"):
    case FourCC("NONE"):
    case FourCC("lpcm"):
      return (d.bits / 8 + (d.bits % 8 != 0 ? 1 : 0)) * d.channels;
    default:
      return 0;
  }
}

/// One frame a sample: its size is believed over a smaller one of the table.
Packing OneFrame(std::uint32_t bytes, std::uint32_t tableSize) {
  return {1, bytes > tableSize ? bytes : 0};
}

}  // namespace

Packing PackingOf(const Description& d, std::uint32_t tableSize) {
  const bool told = d.framesPerPacket > 0 && d.bytesPerPacket > 0;
  if (d.soundVersion == 2) {
    if (!told) return {};
    return d.framesPerPacket > 1 ? Packing{d.framesPerPacket, d.bytesPerPacket}
                                 : OneFrame(d.bytesPerPacket, tableSize);
  }
  if (d.compression == -2) return {};
  if (d.soundVersion == 1 && told) {
    return d.framesPerPacket > 1 ? Packing{d.framesPerPacket, d.bytesPerPacket}
                                 : OneFrame(d.bytesPerPacket, tableSize);
  }
  const Packing fixed = FixedPacking(d.Codec(), d.channels);
  if (fixed.bytes != 0) return fixed;
  return OneFrame(FrameBytes(d), tableSize);
}

}  // namespace mp4
