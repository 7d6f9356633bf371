#include "boxes/userdata/BoxUDTA.h"

#include "boxes/base/BoxReading.h"
#include "boxes/userdata/TextItem.h"
#include "io/FourCC.h"

bool BoxUDTA::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 0) return false;
  const auto dispatch = [&](const mp4::ChildHeader& child) {
    if (child.type == mp4::FourCC("meta")) {
      mp4::ReadReused(&metaBox, reader, child, context);
      return mp4::Child::kRead;
    }
    return mp4::ReadTextChild(this, reader, child, context);
  };
  return mp4::ReadContainer(reader, size, 0, dispatch);
}

bool BoxUDTA::Read_0xa9xxx(mmStreamReader* reader, long long length, wchar_t* field, int bytes) {
  if (reader == nullptr || length < 0) return false;
  const unsigned textLength = reader->GetBe16();
  mp4::ReadTextItem(reader, length, textLength, field, bytes);
  return true;
}
