#include "inspect/FieldReader.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

void PrimaryItem(FieldReader* f) {
  f->Full();
  f->Version() == 0 ? f->U16("itemId") : f->U32("itemId");
}

void ItemInformation(FieldReader* f) {
  f->Full();
  f->Version() == 0 ? f->U16("entryCount") : f->U32("entryCount");
}

void ItemEntry(FieldReader* f) {
  f->Full();
  f->Version() == 3 ? f->U32("itemId") : f->U16("itemId");
  f->U16("protectionIndex");
  if (f->Version() >= 2) {
    f->Type("itemType");
    f->Text("itemName");
    return;
  }
  f->Text("itemName");
  f->Text("contentType");
}

std::uint64_t Sized(FieldView* v, unsigned bytes) {
  return bytes == 4 ? v->U32() : bytes == 8 ? v->U64() : 0;
}

void ItemLocations(FieldReader* f) {
  f->Full();
  const std::uint16_t sizes = f->View()->U16();
  const unsigned offset = sizes >> 12, length = sizes >> 8 & 15, base = sizes >> 4 & 15;
  const unsigned index = f->Version() == 0 ? 0 : sizes & 15;
  const std::uint32_t count = f->Version() < 2 ? f->U16("itemCount") : f->U32("itemCount");
  f->Rows("items", count, [&](FieldView* v) {
    const std::uint32_t id = f->Version() < 2 ? v->U16() : v->U32();
    std::string text = "item " + std::to_string(id);
    if (f->Version() > 0) text += ", method " + std::to_string(v->U16() & 15);
    v->Skip(2);
    const std::uint64_t from = Sized(v, base);
    const std::uint16_t extents = v->U16();
    for (std::uint16_t i = 0; i < extents && v->Ok(); ++i) {
      Sized(v, index);
      const std::uint64_t at = from + Sized(v, offset);
      const std::uint64_t size = Sized(v, length);
      if (i < kShownRows) text += ", " + std::to_string(size) + " bytes at " + std::to_string(at);
      // Extents of no width at all take no bytes; there is nothing to read on for.
      if (index + offset + length == 0) break;
    }
    return text;
  });
}

/// The version of the parent says how wide item ids are.
void ItemReference(FieldReader* f) {
  const BoxId parent = f->Tree()->At(f->Id()).parent;
  const bool wide = f->Tree()->Payload(parent, 0, 1).U8() != 0;
  *f->View() = f->Tree()->Payload(f->Id());
  wide ? f->U32("fromItemId") : f->U16("fromItemId");
  const std::uint16_t count = f->U16("referenceCount");
  f->Rows("toItemIds", count,
          [wide](FieldView* v) { return std::to_string(wide ? v->U32() : v->U16()); });
}

void SpatialExtents(FieldReader* f) {
  f->Full();
  f->U32("width");
  f->U32("height");
}

void PixelInformation(FieldReader* f) {
  f->Full();
  const std::uint8_t channels = f->U8("channelCount");
  f->Rows("bitsPerChannel", channels, [](FieldView* v) { return std::to_string(v->U8()); });
}

void Rotation(FieldReader* f) {
  f->Show("degreesAnticlockwise", std::uint64_t{f->View()->U8() & 3U} * 90);
}

void Mirroring(FieldReader* f) { f->Show("axis", std::uint64_t{f->View()->U8() & 1U}); }

void AuxiliaryType(FieldReader* f) {
  f->Full();
  f->Text("auxType");
}

void Associations(FieldReader* f) {
  f->Full();
  f->U32("entryCount");
}

constexpr FieldParserRow kItemParsers[] = {
    {FourCC("pitm"), PrimaryItem},      {FourCC("iinf"), ItemInformation},
    {FourCC("infe"), ItemEntry},        {FourCC("iloc"), ItemLocations},
    {FourCC("iref"), ItemReference},    {FourCC("ispe"), SpatialExtents},
    {FourCC("pixi"), PixelInformation}, {FourCC("irot"), Rotation},
    {FourCC("imir"), Mirroring},        {FourCC("auxC"), AuxiliaryType},
    {FourCC("ipma"), Associations},
};

}  // namespace

FieldParser ItemFieldParser(std::uint32_t type) { return FindParser(kItemParsers, type); }

}  // namespace mp4
