#include "iso/TrackEncryption.h"

#include <algorithm>

namespace mp4 {

namespace {

void ReadKeyId(FieldView* fields, TrackEncryption* encryption) {
  const unsigned char* id = fields->Bytes(16);
  if (id != nullptr) std::copy_n(id, 16, encryption->keyId.begin());
}

/// The initialization vector of samples that have none of their own. Some writers store it for
/// samples that are clear by default, too, so the bytes left decide.
void ReadConstantIv(FieldView* fields, TrackEncryption* encryption) {
  if (encryption->ivSize != 0 || fields->Left() == 0) return;
  const std::size_t n = fields->U8();
  const unsigned char* iv = n <= fields->Left() ? fields->Bytes(n) : nullptr;
  if (iv != nullptr) encryption->constantIv.assign(iv, iv + n);
}

}  // namespace

bool ReadTrackEncryption(FieldView payload, TrackEncryption* encryption) {
  const VersionAndFlags head = ReadVersionAndFlags(&payload);
  if (head.version > 1) return false;
  payload.Skip(1);
  const std::uint8_t pattern = payload.U8();
  if (head.version == 1) {
    encryption->cryptBlocks = pattern >> 4;
    encryption->skipBlocks = pattern & 15;
  }
  encryption->isProtected = payload.U8() != 0;
  encryption->ivSize = payload.U8();
  ReadKeyId(&payload, encryption);
  const bool whole = payload.Ok();
  if (whole) ReadConstantIv(&payload, encryption);
  return whole;
}

bool ReadPiffTrackEncryption(FieldView payload, TrackEncryption* encryption) {
  payload.Skip(4);
  constexpr std::uint32_t kNotEncrypted = 0;
  encryption->isProtected = payload.U24() != kNotEncrypted;
  encryption->ivSize = payload.U8();
  ReadKeyId(&payload, encryption);
  return payload.Ok();
}

}  // namespace mp4
