#include "boxes/userdata/TextItem.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "io/ConvertUTF.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

static_assert(sizeof(wchar_t) == sizeof(unsigned int), "wide text is UTF-32");

/// A text in bytes, always terminated.
constexpr long long kTextBuffer = 260;
/// A converted text in units, always terminated.
constexpr std::size_t kWideBuffer = 2048;

struct Key {
  std::uint32_t type;
  TextField field;
};

/// The types start with 0xA9, octal 251.
constexpr Key kKeys[] = {
    {FourCC("\251ART"), &Mp4Context::METADATA::artist},
    {FourCC("\251aut"), &Mp4Context::METADATA::artist},
    {FourCC("\251nam"), &Mp4Context::METADATA::name},
    {FourCC("\251trk"), &Mp4Context::METADATA::track},
    {FourCC("\251alb"), &Mp4Context::METADATA::album},
    {FourCC("\251day"), &Mp4Context::METADATA::day},
    {FourCC("\251gen"), &Mp4Context::METADATA::genre},
};

/// `text` is terminated. Its zero goes into the conversion with it, so that a sequence of several
/// bytes may stand at the very end.
void StoreWide(const unsigned char* text, wchar_t* field, int bytes) {
  unsigned int wide[kWideBuffer] = {};
  const std::size_t length = std::strlen(reinterpret_cast<const char*>(text)) + 1;
  ConvertUTF8toUTF32(text, text + length, wide, wide + kWideBuffer - 1, lenientConversion);
  std::memcpy(field, wide, std::min(static_cast<std::size_t>(bytes), sizeof wide));
}

}  // namespace

TextField TextFieldOf(std::uint32_t type) {
  for (const Key& key : kKeys) {
    if (key.type == type) return key.field;
  }
  return nullptr;
}

wchar_t* TextIn(Mp4Context* context, TextField field) {
  return context != nullptr ? context->metadata.*field : nullptr;
}

void ReadText(mmStreamReader* reader, long long n, wchar_t* field, int bytes) {
  unsigned char text[kTextBuffer] = {};
  const long long held = std::min(n, kTextBuffer - 1);
  reader->GetData(text, static_cast<unsigned>(held));
  if (n > held) reader->Skip(n - held);
  if (field != nullptr && bytes > 0) StoreWide(text, field, bytes);
}

void ReadTextItem(mmStreamReader* reader, long long length, unsigned textLength, wchar_t* field,
                  int bytes) {
  long long consumed = 2;
  if (textLength != 0) {
    reader->GetBe16();  // language
    const long long n = std::clamp<long long>(length - 4, 0, textLength);
    ReadText(reader, n, field, bytes);
    consumed = n + 4;
  }
  reader->Skip(length - consumed);
}

}  // namespace mp4
