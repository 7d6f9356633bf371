#include "boxes/BoxUDTA.h"

#include "boxes/BoxReading.h"
#include "boxes/TextItem.h"
#include "io/FourCC.h"

bool BoxUDTA::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 0) return false;
  const auto dispatch = [&](const mp4::ChildHeader& child) {
    if (child.type == mp4::FourCC("meta")) {
      mp4::ReadReused(&metaBox, reader, child, context);
      return mp4::Child::kRead;
    }
    const mp4::TextField field = mp4::TextFieldOf(child.type);
    if (field == nullptr) return mp4::Child::kUnknown;
    Read_0xa9xxx(reader, child.payload, mp4::TextIn(context, field), mp4::kTextFieldBytes);
    return mp4::Child::kRead;
  };
  const mp4::WalkEnd end = mp4::WalkChildren(reader, size, 0, mp4::UnknownChild::kSkip, dispatch);
  reader->Skip(mp4::WrapSub(size, end.consumed));
  return !end.failed;
}

bool BoxUDTA::Read_0xa9xxx(mmStreamReader* reader, long long length, wchar_t* field, int bytes) {
  if (reader == nullptr || length < 0) return false;
  const unsigned textLength = reader->GetBe16();
  mp4::ReadTextItem(reader, length, textLength, field, bytes);
  return true;
}
