#include "boxes/base/BoxBase.h"

BoxBase::~BoxBase() = default;

bool BoxBase::ReadData(mmStreamReader* reader, long long size, Mp4Context* /*context*/) {
  if (reader == nullptr) return false;
  reader->Skip(size);
  return true;
}
