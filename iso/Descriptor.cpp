#include "iso/Descriptor.h"

namespace mp4 {

bool ReadDescriptor(FieldView* fields, Descriptor* descriptor) {
  descriptor->tag = fields->U8();
  std::size_t length = 0;
  bool more = true;
  for (int i = 0; i < 4 && more; ++i) {
    const unsigned byte = fields->U8();
    more = (byte & 0x80) != 0;
    length = length << 7 | (byte & 0x7F);
  }
  if (more || !fields->Ok() || length > fields->Left()) return false;
  descriptor->payload = FieldView(fields->Bytes(length), length);
  return true;
}

}  // namespace mp4
