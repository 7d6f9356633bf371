#include "iso/ItemInfo.h"

#include <algorithm>

namespace mp4 {

namespace {

constexpr std::size_t kPiece = std::size_t{16} << 10;

std::uint32_t ReadId(FieldView* fields, std::size_t width) {
  return width == 2 ? fields->U16() : fields->U32();
}

}  // namespace

bool ReadItemInfo(FieldView payload, ItemInfo* item) {
  const VersionAndFlags head = ReadVersionAndFlags(&payload);
  if (head.version > 3) return false;
  item->id = ReadId(&payload, head.version == 3 ? 4 : 2);
  item->protection = payload.U16();
  item->type = head.version >= 2 ? payload.Type() : 0;
  return payload.Ok();
}

bool ReadItemReferences(BoxTree* tree, BoxId reference, ItemReferences* references) {
  const std::size_t width = tree->Payload(tree->At(reference).parent, 0, 1).U8() == 0 ? 2 : 4;
  FieldView fields = tree->Payload(reference, 0, width + 2);
  const std::uint32_t from = ReadId(&fields, width);
  const std::uint64_t end = width + 2 + std::uint64_t{fields.U16()} * width;
  if (!fields.Ok()) return false;
  for (std::uint64_t at = width + 2; at < end;) {
    fields = tree->Payload(reference, at, std::min<std::uint64_t>(kPiece, end - at));
    if (fields.Left() < width) return false;
    at += fields.Left() / width * width;
    while (fields.Left() >= width) references->emplace_back(from, ReadId(&fields, width));
  }
  return true;
}

}  // namespace mp4
