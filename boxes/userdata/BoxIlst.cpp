#include "boxes/userdata/BoxIlst.h"

#include <algorithm>
#include <cstdint>

#include "boxes/base/BoxReading.h"
#include "boxes/userdata/TextItem.h"
#include "io/FourCC.h"

namespace {

/// Type indicator of UTF-8 text in a "data" box.
constexpr std::uint32_t kUtf8 = 1;

/// Bytes of the item that the text reading counts from the "data" box's type on. The item's length
/// less 4 caps it, not the box's own end: text behind which the item goes on takes 4 bytes of what
/// follows, normally the zeros of a next child's size, which end it. Hosts see texts cut this way.
std::uint32_t CountedDataBytes(std::uint32_t size, long long length) {
  return std::min(size, static_cast<std::uint32_t>(length - 4));
}

/// The reader stands behind the item's first two bytes, which are zero: the upper half of the size
/// of a child box.
void ReadDataChild(mmStreamReader* reader, long long length, wchar_t* field, int bytes) {
  reader->Skip(-2);
  const std::uint32_t size = reader->GetBe32();
  const std::uint32_t type = reader->GetLe32();
  const std::uint32_t counted = CountedDataBytes(size, length);
  if (counted == 0 || type != mp4::FourCC("data")) {
    reader->Skip(length - 8);
    return;
  }
  const std::uint32_t indicator = reader->GetBe32();
  reader->GetBe32();  // locale
  if (counted < 12 || indicator != kUtf8) {
    reader->Skip(length - 16);
    return;
  }
  mp4::ReadText(reader, counted - 12, field, bytes);
  reader->Skip(length - (counted + 4LL));
}

}  // namespace

bool BoxIlst::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 0) return false;
  const auto dispatch = [&](const mp4::ChildHeader& child) {
    return mp4::ReadTextChild(this, reader, child, context);
  };
  return mp4::ReadContainer(reader, size, 0, dispatch);
}

bool BoxIlst::Read_0xa9xxx(mmStreamReader* reader, long long length, wchar_t* field, int bytes) {
  if (reader == nullptr || length < 0) return false;
  const unsigned textLength = reader->GetBe16();
  if (textLength != 0) {
    mp4::ReadTextItem(reader, length, textLength, field, bytes);
  } else {
    ReadDataChild(reader, length, field, bytes);
  }
  return true;
}
