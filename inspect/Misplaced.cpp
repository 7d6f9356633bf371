#include "inspect/Misplaced.h"

#include "io/FourCC.h"
#include "iso/TypeText.h"

namespace mp4 {

bool IsOnTheWay(std::uint32_t type) {
  switch (type) {
    case FourCC("moov"):
    case FourCC("trak"):
    case FourCC("mdia"):
    case FourCC("minf"):
    case FourCC("stbl"):
    case FourCC("stsd"):
    case FourCC("sinf"):
    case FourCC("schm"):
    case FourCC("schi"):
    case FourCC("tenc"):
    case FourCC("iinf"):
    case FourCC("infe"):
    case FourCC("ipro"):
    case FourCC("traf"):
    case FourCC("senc"):
    case FourCC("cmvd"):
      return true;
    default:
      return false;
  }
}

namespace {

/// First boxes of those on the way.
bool BeginsOneOnTheWay(std::uint32_t type) {
  switch (type) {
    case FourCC("mvhd"):
    case FourCC("tkhd"):
    case FourCC("mdhd"):
    case FourCC("hdlr"):
    case FourCC("vmhd"):
    case FourCC("smhd"):
    case FourCC("nmhd"):
    case FourCC("gmhd"):
    case FourCC("dinf"):
    case FourCC("stts"):
    case FourCC("frma"):
    case FourCC("tfhd"):
    case FourCC("mfhd"):
    case FourCC("dcom"):
    case FourCC("odhe"):
    case FourCC("pitm"):
      return true;
    default:
      return IsOnTheWay(type);
  }
}

/// Boxes with bytes of their own that may look like anything.
bool IsBulk(std::uint32_t type) {
  return type == FourCC("mdat") || type == FourCC("free") || type == FourCC("skip") ||
         type == FourCC("wide") || type == FourCC("udta") || type == FourCC("uuid");
}

/// `from`: payload bytes in front, which full boxes have.
bool HoldsSuchBox(BoxTree* tree, BoxId box, std::uint64_t from) {
  FieldView fields = tree->Payload(box, from, 8);
  if (fields.Left() < 8) return false;
  const std::uint64_t size = fields.U32();
  return size >= 8 && size + from <= tree->At(box).PayloadSize() &&
         BeginsOneOnTheWay(fields.Type());
}

}  // namespace

bool LooksLikeSchemeInfo(BoxTree* tree, BoxId box) {
  FieldView fields = tree->Payload(box, 0, 8);
  const std::uint64_t size = fields.U32();
  const std::uint32_t type = fields.Type();
  return size >= 8 && size <= tree->At(box).PayloadSize() &&
         (type == FourCC("frma") || type == FourCC("schm") || type == FourCC("schi"));
}

void CheckUnknownBox(Findings* findings, BoxId box) {
  BoxTree& tree = findings->Tree();
  const std::uint32_t type = tree.At(box).type;
  if (IsOnTheWay(type)) {
    findings->Doubt(box, "a box \"" + TypeText(type) + "\" stands where none belongs");
  } else if (!IsBulk(type) && tree.At(box).PayloadSize() >= 8 &&
             (HoldsSuchBox(&tree, box, 0) || HoldsSuchBox(&tree, box, 4) ||
              HoldsSuchBox(&tree, box, 8))) {
    findings->Doubt(box, "the unknown box \"" + TypeText(type) + "\" holds boxes of a movie");
  }
}

}  // namespace mp4
