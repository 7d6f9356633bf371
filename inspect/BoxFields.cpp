#include "inspect/BoxFields.h"

#include "inspect/FieldReader.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

/// Lists of types or items whose children are named by what they mean, not by what they are.
FieldParser ByParent(std::uint32_t parent, bool* known) {
  *known = true;
  switch (parent) {
    case FourCC("stsd"):
      return SampleEntryFields;
    case FourCC("tref"):
      return MovieFieldParser(FourCC("tref"));
    case FourCC("iref"):
      return ItemFieldParser(FourCC("iref"));
    case FourCC("ilst"):
      return nullptr;
    default:
      *known = false;
      return nullptr;
  }
}

FieldParser ByType(std::uint32_t type, std::uint32_t parent) {
  // The parsers under these types are those of the children.
  if (type == FourCC("tref") || type == FourCC("iref")) return nullptr;
  if (type == FourCC("uuid")) return UserTypeFields;
  for (const auto find : {MovieFieldParser, TableFieldParser, FragmentFieldParser,
                          ProtectionFieldParser, CodecFieldParser, ItemFieldParser}) {
    const FieldParser parser = find(type);
    if (parser != nullptr) return parser;
  }
  // Texts of user data have the types of tags, and so a layout of their own.
  if (parent == FourCC("udta") && (type & 0xFF) == 0xA9) {
    return UserDataTextFields;
  }
  return MetadataFieldParser(type);
}

}  // namespace

std::vector<BoxField> FieldsOf(BoxTree* tree, BoxId id, bool* cut) {
  *cut = false;
  if (id == kRootBox) return {};
  const Box& box = tree->At(id);
  const std::uint32_t type = box.type;
  const std::uint32_t parent = tree->At(box.parent).type;
  bool known = false;
  FieldParser parser = ByParent(parent, &known);
  if (!known) parser = ByType(type, parent);
  if (parser == nullptr) return {};
  FieldReader fields(tree, id);
  parser(&fields);
  // Of a longer payload only the beginning is looked at.
  *cut = fields.Cut() && tree->At(id).PayloadSize() < CachedSource::kLargestView;
  return fields.Take();
}

}  // namespace mp4
