#include "iso/SampleEntryLayout.h"

#include <algorithm>
#include <initializer_list>

#include "io/FourCC.h"
#include "iso/BoxTree.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

/// Bytes of an entry in front of its boxes, after the box header (ISO/IEC 14496-12, 12.1 to 12.10).
constexpr std::uint64_t kPlainEntry = 8;
constexpr std::uint64_t kVisualEntry = 78;
constexpr std::uint64_t kAudioEntry = 28;
constexpr std::uint64_t kSoundVersion1 = 44;
constexpr std::uint64_t kSoundVersion2 = 64;
constexpr std::uint64_t kVolumetricEntry = 40;

bool IsVisual(std::uint32_t handler) {
  return handler == FourCC("vide") || handler == FourCC("auxv") || handler == FourCC("pict");
}

/// QuickTime sound descriptions say in their version how long they are. Version 1 exists in MPEG-4
/// files too (AudioSampleEntryV1, in a sample description of version 1), and has no more fields.
std::uint64_t AudioLength(BoxTree* tree, BoxId entry) {
  const std::uint32_t version = tree->Payload(entry, 8, 2).U16();
  if (version == 2) return kSoundVersion2;
  const bool quickTime = tree->Payload(tree->At(entry).parent, 0, 1).U8() == 0;
  return version == 1 && quickTime ? kSoundVersion1 : kAudioEntry;
}

/// Length up to the end of so many zero-terminated strings behind the common fields.
std::uint64_t LengthOfStrings(BoxTree* tree, BoxId entry, int strings) {
  FieldView fields = tree->Payload(entry);
  fields.Skip(kPlainEntry);
  while (strings > 0 && fields.Left() > 0) {
    if (fields.U8() == 0) --strings;
  }
  return fields.At();
}

/// Encrypted subtitles keep the strings of their original format, up to three: the first place
/// where a box could begin.
std::uint64_t LengthOfSubtitle(BoxTree* tree, BoxId entry) {
  for (int strings = 0; strings <= 3; ++strings) {
    const std::uint64_t length = LengthOfStrings(tree, entry, strings);
    FieldView header = tree->Payload(entry, length, 8);
    const std::uint64_t size = header.U32();
    const std::uint32_t type = header.Type();
    if (header.Ok() && size >= 8 && length + size <= tree->At(entry).PayloadSize() &&
        IsTypeText(type))
      return length;
  }
  return kPlainEntry;
}

/// Formats whose length the handler alone does not tell; 0 for others.
std::uint64_t LengthByFormat(BoxTree* tree, BoxId entry) {
  switch (tree->At(entry).type) {
    case FourCC("encv"):
    case FourCC("drmi"):
    case FourCC("resv"):
    case FourCC("icpv"):
    case FourCC("avc1"):
    case FourCC("avc3"):
    case FourCC("hvc1"):
    case FourCC("hev1"):
    case FourCC("av01"):
    case FourCC("vp08"):
    case FourCC("vp09"):
    case FourCC("mp4v"):
      return kVisualEntry;
    case FourCC("enca"):
    case FourCC("drms"):
    case FourCC("aavd"):
    case FourCC("mp4a"):
    case FourCC("resa"):
      return AudioLength(tree, entry);
    case FourCC("enc3"):
    case FourCC("res3"):
      return kVolumetricEntry;
    case FourCC("tx3g"):
      return 38;
    case FourCC("text"):  // QuickTime: a justified text with a counted font name
      return 51 + std::uint64_t{tree->Payload(entry, 50, 1).U8()};
    case FourCC("tmcd"):
      return 26;
    case FourCC("stxt"):
    case FourCC("sbtt"):
    case FourCC("mett"):
      return LengthOfStrings(tree, entry, 2);
    case FourCC("stpp"):
    case FourCC("metx"):
      return LengthOfStrings(tree, entry, 3);
    case FourCC("encu"):
      return LengthOfSubtitle(tree, entry);
    case FourCC("rtp "):
    case FourCC("srtp"):
    case FourCC("rrtp"):
    case FourCC("rsrp"):
    case FourCC("prtp"):
    case FourCC("sm2t"):
    case FourCC("fdp "):
      return 16;
    case FourCC("pm2t"):
    case FourCC("rm2t"):
      return 15;
    case FourCC("mp4s"):
    case FourCC("encs"):
    case FourCC("wvtt"):
    case FourCC("c608"):
    case FourCC("p608"):
    case FourCC("c708"):
    case FourCC("urim"):
    case FourCC("mebx"):
      return kPlainEntry;
    default:
      return 0;
  }
}

std::uint64_t UsualLength(BoxTree* tree, BoxId entry) {
  const std::uint64_t known = LengthByFormat(tree, entry);
  if (known != 0) return known;
  const std::uint32_t handler = HandlerOf(tree, tree->At(entry).parent);
  if (IsVisual(handler)) return kVisualEntry;
  if (handler == FourCC("soun")) return AudioLength(tree, entry);
  if (handler == FourCC("volv")) return kVolumetricEntry;
  return kPlainEntry;
}

enum class Tiling { kNone, kEmpty, kBoxes };

/// Whether boxes with readable types fill the entry from `fixed` payload bytes to its end. Less
/// than a header may be left over when it is zero: QuickTime ends descriptions with a zero word.
Tiling TilingFrom(BoxTree* tree, const Box& entry, std::uint64_t fixed) {
  std::uint64_t at = entry.PayloadOffset() + fixed;
  if (at > entry.end) return Tiling::kNone;
  bool any = false;
  while (entry.end - at >= 8) {
    const unsigned char* bytes = tree->View(entry.space, at, 8);
    if (bytes == nullptr) return Tiling::kNone;
    FieldView header(bytes, 8);
    const std::uint64_t size = header.U32();
    const std::uint32_t type = header.Type();
    if (size < 8 || size > entry.end - at || (type != 0 && !IsTypeText(type))) return Tiling::kNone;
    at += size;
    any = true;
  }
  const auto rest = static_cast<std::size_t>(entry.end - at);
  const unsigned char* bytes = tree->View(entry.space, at, rest);
  const bool zero =
      bytes != nullptr && std::all_of(bytes, bytes + rest, [](auto b) { return b == 0; });
  if (!zero) return Tiling::kNone;
  return any ? Tiling::kBoxes : Tiling::kEmpty;
}

}  // namespace

bool IsSampleEntry(const BoxTree& tree, BoxId id) {
  const BoxId parent = tree.At(id).parent;
  if (parent == kNoBox || tree.At(parent).type != FourCC("stsd")) return false;
  const BoxId above = tree.At(parent).parent;
  return above == kNoBox || tree.At(above).type != FourCC("stsd");
}

namespace {

std::uint32_t FindHandler(BoxTree* tree, BoxId sampleDescription) {
  const std::uint32_t path[] = {FourCC("stbl"), FourCC("minf"), FourCC("mdia")};
  BoxId at = sampleDescription;
  for (const std::uint32_t type : path) {
    at = tree->At(at).parent;
    if (at == kNoBox || tree->At(at).type != type) return 0;
  }
  const BoxId handler = tree->Child(at, FourCC("hdlr"));
  return handler != kNoBox ? tree->Payload(handler, 8, 4).Type() : 0;
}

}  // namespace

std::uint32_t HandlerOf(BoxTree* tree, BoxId sampleDescription) {
  if (tree->LastHandler().sampleDescription != sampleDescription)
    tree->LastHandler() = {sampleDescription, FindHandler(tree, sampleDescription)};
  return tree->LastHandler().type;
}

ChildLayout SampleEntryLayout(BoxTree* tree, BoxId entry) {
  const std::uint64_t usual = UsualLength(tree, entry);
  const Box box = tree->At(entry);
  if (TilingFrom(tree, box, usual) != Tiling::kNone) return {true, false, usual, -1};
  for (const std::uint64_t length :
       {kPlainEntry, kAudioEntry, kSoundVersion1, kSoundVersion2, kVisualEntry, kVolumetricEntry,
        std::uint64_t{16}, std::uint64_t{38}, std::uint64_t{26}}) {
    if (TilingFrom(tree, box, length) == Tiling::kBoxes) return {true, false, length, -1};
  }
  const std::uint64_t from = std::min(box.end, box.PayloadOffset() + usual);
  const bool isShort = usual > box.PayloadSize();
  tree->Note(isShort ? BoxFault::kFieldsCut : BoxFault::kNoLayoutFits, entry, from, box.end);
  return {true, false, usual, -1};
}

}  // namespace mp4
