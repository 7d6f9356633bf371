#include "inspect/Misplaced.h"

#include "inspect/BoxNames.h"
#include "inspect/HiddenSchemes.h"
#include "io/FourCC.h"
#include "iso/ProtectedFormats.h"
#include "iso/TypeText.h"
#include "iso/UserType.h"

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
    case FourCC("rinf"):
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

/// First boxes of those on the way and of whole files.
bool BeginsOneOnTheWay(std::uint32_t type) {
  switch (type) {
    case FourCC("ftyp"):
    case FourCC("meta"):
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

/// Whether this is a sample entry that is protected, by the format or by what it holds.
bool IsProtectedEntry(BoxTree* tree, BoxId box) {
  const std::uint32_t type = tree->At(box).type;
  if (IsForProtectedMedia(KindOfFormat(type))) return true;
  return !NameOfFormat(type).empty() && !FindHiddenScheme(tree, box, true).empty();
}

/// Boxes with bytes of their own that may look like anything.
bool IsBulk(std::uint32_t type) {
  return type == FourCC("mdat") || type == FourCC("free") || type == FourCC("skip") ||
         type == FourCC("wide") || type == FourCC("udta");
}

}  // namespace

bool IsBoxBesideEntries(std::uint32_t type) {
  switch (type) {
    case FourCC("stsc"):
    case FourCC("stsz"):
    case FourCC("stz2"):
    case FourCC("stco"):
    case FourCC("co64"):
    case FourCC("stss"):
    case FourCC("ctts"):
    case FourCC("edts"):
    case FourCC("elst"):
    case FourCC("dref"):
    case FourCC("udta"):
    case FourCC("mdat"):
      return true;
    default:
      return BeginsOneOnTheWay(type);
  }
}

namespace {

/// Whether a box whose type is no text, which is broken then, begins with one of them, broken too.
bool IsBrokenParent(BoxTree* tree, BoxId box) {
  FieldView fields = tree->Payload(box, 4, 4);
  return !IsTypeText(tree->At(box).type) && fields.Left() == 4 && BeginsOneOnTheWay(fields.Type());
}

}  // namespace

bool CoversBoxOnTheWay(BoxTree* tree, BoxId box, std::uint64_t from) {
  FieldView fields = tree->Payload(box, from, 8);
  if (fields.Left() < 8) return false;
  const std::uint64_t size = fields.U32();
  return size >= 8 && size + from <= tree->At(box).PayloadSize() &&
         BeginsOneOnTheWay(fields.Type());
}

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
  const UserTypeKind kind = KindOfUserType(&tree, box);
  const bool isPiff =
      kind == UserTypeKind::kTrackEncryption || kind == UserTypeKind::kSampleEncryption;
  if (IsOnTheWay(type) || isPiff) {
    findings->Doubt(box, "a box \"" + TypeText(type) + "\" stands where none belongs");
  } else if (IsProtectedEntry(&tree, box)) {
    findings->Doubt(box, "a sample entry \"" + TypeText(type) + "\" stands where none belongs");
  } else if (!IsBulk(type) && tree.At(box).PayloadSize() >= 8 &&
             // Behind the fields that a full box, or one with a count, has.
             (CoversBoxOnTheWay(&tree, box, 0) || CoversBoxOnTheWay(&tree, box, 4) ||
              CoversBoxOnTheWay(&tree, box, 8) || IsBrokenParent(&tree, box))) {
    findings->Doubt(box, "the unknown box \"" + TypeText(type) + "\" holds boxes of a movie");
  }
}

}  // namespace mp4
