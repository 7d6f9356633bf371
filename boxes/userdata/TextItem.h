#pragma once

#include <cstdint>

#include "boxes/base/BoxReading.h"
#include "boxes/base/Mp4Context.h"
#include "io/mmStreamReader.h"

/// What the user data and the item list share: the keys they know and the reading of a text.
namespace mp4 {

/// One of the six texts of the metadata block.
using TextField = wchar_t (Mp4Context::METADATA::*)[260];

/// Bytes of one such text.
constexpr int kTextFieldBytes = sizeof(Mp4Context::METADATA::artist);

/// The text that an item of this type fills; null for any other type.
TextField TextFieldOf(std::uint32_t type);

/// That text in a context; null without a context.
wchar_t* TextIn(Mp4Context* context, TextField field);

/// Reads an item by the reader of its parent, whose result does not matter, into the text that the
/// item's type fills.
template <class Parent>
Child ReadTextChild(Parent* parent, mmStreamReader* reader, const ChildHeader& item,
                    Mp4Context* context) {
  const TextField field = TextFieldOf(item.type);
  if (field == nullptr) return Child::kUnknown;
  parent->Read_0xa9xxx(reader, item.payload, TextIn(context, field), kTextFieldBytes);
  return Child::kRead;
}

/// Reads `n` bytes of UTF-8 and stores `bytes` bytes of wide text at `field`: the text up to its
/// first zero byte or ill-formed sequence, then zeros. At most 259 bytes are read, the rest is
/// skipped. Stores nothing when `field` is null; at most 2,048 characters are stored.
void ReadText(mmStreamReader* reader, long long n, wchar_t* field, int bytes);

/// Reads a QuickTime text item of `length` bytes (at least 0) whose first two bytes, the text
/// length in bytes, are read already: a language code, then the text. A text length of 0 stores
/// nothing; one that exceeds the item ends with it. Leaves the reader at the item's end.
void ReadTextItem(mmStreamReader* reader, long long length, unsigned textLength, wchar_t* field,
                  int bytes);

}  // namespace mp4
