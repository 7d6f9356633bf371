#include <algorithm>

#include "inspect/FieldReader.h"
#include "inspect/FieldText.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

/// Well-known types of values (QuickTime File Format, "Well-known types").
enum ValueType : std::uint32_t { kUtf8 = 1, kJpeg = 13, kPng = 14, kSigned = 21, kUnsigned = 22 };

std::int64_t SignedValue(FieldView* v) {
  const std::size_t n = v->Left();
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < n; ++i) bits = bits << 8 | v->U8();
  const unsigned unused = static_cast<unsigned>(64 - 8 * n);
  return static_cast<std::int64_t>(bits << unused) >> unused;
}

void Value(FieldReader* f) {
  const std::uint32_t type = f->U32("valueType") & 0xFFFFFF;
  f->U32("locale");
  const std::size_t n = f->View()->Left();
  if (type == kUtf8) {
    f->Rest("value");
  } else if (type == kSigned && n >= 1 && n <= 8) {
    f->Show("value", SignedValue(f->View()));
  } else if (type == kUnsigned && n >= 1 && n <= 8) {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < n; ++i) bits = bits << 8 | f->View()->U8();
    f->Show("value", bits);
  } else if (type == kJpeg || type == kPng) {
    f->Show("imageType", std::string(type == kJpeg ? "JPEG" : "PNG"));
    f->Show("imageSize", f->Tree()->At(f->Id()).PayloadSize() - 8);
  } else {
    f->RestHex("value");
  }
}

void NameSpace(FieldReader* f) {
  f->Full();
  f->Rest("meaning");
}

/// Below a free-form item a full box; elsewhere, in user data, the text alone.
void Name(FieldReader* f) {
  if (f->ParentType() == FourCC("----")) f->Full();
  f->Rest("name");
}

void Keys(FieldReader* f) {
  f->Full();
  const std::uint32_t count = f->U32("entryCount");
  f->Rows("keys", count, [](FieldView* v) -> std::string {
    const std::size_t size = v->U32();
    v->Skip(4);
    const unsigned char* bytes = v->Bytes(size < 8 ? 0 : size - 8);
    if (bytes == nullptr || size < 8) return {};
    return std::string(reinterpret_cast<const char*>(bytes), std::min(size - 8, kShownText));
  });
}

/// Times count in 100 nanoseconds.
void Chapters(FieldReader* f) {
  f->Full();
  if (f->Version() == 1) f->Skip(4);
  const std::uint8_t count = f->U8("chapterCount");
  f->Rows("chapters", count, [](FieldView* v) -> std::string {
    const std::uint64_t start = v->U64();
    const std::size_t n = v->U8();
    const unsigned char* bytes = v->Bytes(n);
    if (bytes == nullptr) return {};
    return std::to_string(start / 10000) +
           " ms: " + std::string(reinterpret_cast<const char*>(bytes), n);
  });
}

void CopyrightNotice(FieldReader* f) {
  f->Full();
  f->Language("language");
  f->Text("notice");
}

void TrackKind(FieldReader* f) {
  f->Full();
  f->Text("schemeUri");
  f->Text("value");
}

constexpr FieldParserRow kMetadataParsers[] = {
    {FourCC("data"), Value},     {FourCC("mean"), NameSpace}, {FourCC("name"), Name},
    {FourCC("keys"), Keys},      {FourCC("chpl"), Chapters},  {FourCC("cprt"), CopyrightNotice},
    {FourCC("kind"), TrackKind},
};

}  // namespace

FieldParser MetadataFieldParser(std::uint32_t type) { return FindParser(kMetadataParsers, type); }

void UserDataTextFields(FieldReader* f) {
  const std::size_t length = f->U16("length");
  f->Language("language");
  const std::size_t n = std::min(length, f->View()->Left());
  const unsigned char* bytes = f->View()->Bytes(n);
  if (bytes == nullptr) return;
  f->Show("text", std::string(reinterpret_cast<const char*>(bytes), std::min(n, kShownText)));
}

}  // namespace mp4
