#include "iso/EncryptionGroups.h"

#include <algorithm>

namespace mp4 {

namespace {

void ReadKey(FieldView* fields, EncryptionGroup* group, bool mayHaveConstantIv) {
  const std::uint8_t ivSize = fields->U8();
  if (const unsigned char* id = fields->Bytes(16)) {
    group->keyIds.emplace_back();
    std::copy_n(id, 16, group->keyIds.back().begin());
  }
  if (mayHaveConstantIv && ivSize == 0) fields->Skip(fields->U8());
}

void ReadGroup(FieldView* fields, EncryptionGroup* group) {
  constexpr unsigned kMultiKey = 0x80;
  const bool multiKey = (fields->U8() & kMultiKey) != 0;
  fields->Skip(1);  // pattern
  group->isProtected = fields->U8() != 0;
  if (!multiKey) return ReadKey(fields, group, group->isProtected);
  const unsigned keys = fields->U16();
  for (unsigned i = 0; i < keys && fields->Ok(); ++i) ReadKey(fields, group, true);
}

}  // namespace

std::uint32_t ReadGroupingType(FieldView payload) {
  payload.Skip(4);
  return payload.Type();
}

bool ReadEncryptionGroups(FieldView payload, std::vector<EncryptionGroup>* groups) {
  const VersionAndFlags head = ReadVersionAndFlags(&payload);
  payload.Skip(4);
  const std::uint32_t sameLength = head.version >= 1 ? payload.U32() : 0;
  if (head.version >= 2) payload.Skip(4);  // default group
  const std::uint32_t count = payload.U32();
  for (std::uint32_t i = 0; i < count && payload.Ok(); ++i) {
    const std::uint32_t own = head.version >= 1 && sameLength == 0 ? payload.U32() : sameLength;
    if (head.version >= 1 && own == 0) return false;
    const std::size_t length = head.version >= 1 ? own : payload.Left();
    const std::size_t held = std::min(length, payload.Left());
    FieldView entry = payload;
    if (head.version >= 1) entry = FieldView(payload.Bytes(held), held);
    EncryptionGroup group;
    ReadGroup(&entry, &group);
    if (!entry.Ok()) return false;
    groups->push_back(std::move(group));
    if (held < length) return false;
    // Entries of version 0 say nowhere how long they are but in their own fields.
    if (head.version == 0) payload = entry;
  }
  return payload.Ok();
}

}  // namespace mp4
