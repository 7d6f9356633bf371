#include "iso/ChildLayout.h"

#include "io/FourCC.h"
#include "iso/BoxTree.h"
#include "iso/SampleEntryLayout.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

ChildLayout Boxes(std::uint64_t fixed = 0) { return {true, false, fixed, -1}; }

/// A full box with an entry count of `width` bytes.
ChildLayout Counted(BoxTree* tree, BoxId id, std::uint64_t width) {
  FieldView fields = tree->Payload(id, 4, 4);
  const std::uint32_t count = width == 2 ? fields.U16() : fields.U32();
  return {true, false, 4 + width, fields.Ok() ? static_cast<std::int64_t>(count) : -1};
}

/// ItemInfoBox: the count has 16 bits in version 0, 32 later.
ChildLayout CountedItems(BoxTree* tree, BoxId id) {
  return Counted(tree, id, tree->Payload(id, 0, 1).U8() == 0 ? 2 : 4);
}

/// MetaBox is a full box in ISO files and a plain one in QuickTime: there the first child stands
/// where version and flags, which are zero, would.
ChildLayout Meta(BoxTree* tree, BoxId id) {
  FieldView fields = tree->Payload(id, 0, 8);
  const std::uint64_t size = fields.U32();
  const std::uint32_t type = fields.Type();
  const bool fits = size == 1 || (size >= 8 && size <= tree->At(id).PayloadSize());
  return Boxes(type == FourCC("hdlr") || (fits && IsTypeText(type)) ? 0 : 4);
}

/// OMADRMDiscreteHeadersBox: a content type, then the common headers.
ChildLayout DiscreteHeaders(BoxTree* tree, BoxId id) {
  return Boxes(5 + std::uint64_t{tree->Payload(id, 4, 1).U8()});
}

/// OMADRMCommonHeadersBox: three texts, then boxes.
ChildLayout CommonHeaders(BoxTree* tree, BoxId id) {
  FieldView fields = tree->Payload(id, 4, 16);
  fields.Skip(10);
  const std::uint64_t contentId = fields.U16();
  const std::uint64_t issuer = fields.U16();
  const std::uint64_t textual = fields.U16();
  return Boxes(20 + contentId + issuer + textual);
}

ChildLayout ByParent(BoxTree* tree, BoxId id, std::uint32_t parent, bool* known) {
  *known = true;
  switch (parent) {
    case FourCC("stsd"):
      if (IsSampleEntry(*tree, id)) return SampleEntryLayout(tree, id);
      break;
    case FourCC("ilst"):
      return {tree->At(id).type != FourCC("free"), false, 0, -1};
    case FourCC("tref"):
    case FourCC("dref"):
    case FourCC("iref"):
    case FourCC("ipco"):
    case FourCC("keys"):
    case FourCC("grpl"):
      return {};
    case FourCC("cmov"):
      if (tree->At(id).type == FourCC("cmvd")) return {true, true, 4, -1};
      return {};
    default:
      break;
  }
  *known = false;
  return {};
}

ChildLayout ByType(BoxTree* tree, BoxId id) {
  switch (tree->At(id).type) {
    case FourCC("moov"):
    case FourCC("trak"):
    case FourCC("mdia"):
    case FourCC("minf"):
    case FourCC("stbl"):
    case FourCC("dinf"):
    case FourCC("edts"):
    case FourCC("mvex"):
    case FourCC("moof"):
    case FourCC("traf"):
    case FourCC("mfra"):
    case FourCC("udta"):
    case FourCC("tref"):
    case FourCC("sinf"):
    case FourCC("schi"):
    case FourCC("rinf"):
    case FourCC("cinf"):
    case FourCC("wave"):
    case FourCC("cmov"):
    case FourCC("rmra"):
    case FourCC("rmda"):
    case FourCC("iprp"):
    case FourCC("ipco"):
    case FourCC("meco"):
    case FourCC("strk"):
    case FourCC("strd"):
    case FourCC("tapt"):
    case FourCC("gmhd"):
    case FourCC("hnti"):
    case FourCC("hinf"):
    case FourCC("grpl"):
    case FourCC("ilst"):
    case FourCC("ludt"):
    case FourCC("trgr"):
    case FourCC("mdri"):
    case FourCC("clip"):
    case FourCC("matt"):
    case FourCC("paen"):
    case FourCC("mpvd"):
      return Boxes();
    case FourCC("odrm"):
    case FourCC("odkm"):
    case FourCC("adkm"):
    case FourCC("ahdr"):
    case FourCC("aprm"):
    case FourCC("akey"):
    case FourCC("iref"):
      return Boxes(4);
    case FourCC("srpp"):
      return Boxes(20);
    case FourCC("stsd"):
    case FourCC("dref"):
      return Counted(tree, id, 4);
    case FourCC("ipro"):
      return Counted(tree, id, 2);
    case FourCC("iinf"):
      return CountedItems(tree, id);
    case FourCC("meta"):
      return Meta(tree, id);
    case FourCC("odhe"):
      return DiscreteHeaders(tree, id);
    case FourCC("ohdr"):
      return CommonHeaders(tree, id);
    case FourCC("!mov"):
    case FourCC("!mof"):
      return {true, true, 0, -1};
    default:
      return {};
  }
}

}  // namespace

ChildLayout LayoutOf(BoxTree* tree, BoxId id) {
  if (id == kRootBox) return Boxes();
  const BoxId parent = tree->At(id).parent;
  bool known = false;
  const ChildLayout layout = ByParent(tree, id, tree->At(parent).type, &known);
  return known ? layout : ByType(tree, id);
}

}  // namespace mp4
