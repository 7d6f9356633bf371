#include <algorithm>
#include <climits>
#include <cstring>

#include "demux/Mp4Demux.h"
#include "demux/Mp4FileMode.h"
#include "io/ByteOrder.h"
#include "io/MakeLazyArray.h"
#include "io/WithoutThrowing.h"

namespace {

constexpr int kBlockSizeWithoutContext = 0x200000;
constexpr long long kBlockTail = 32;

/// The capacity for blocks of up to `n` bytes; 0 when none is needed or none that large can be had.
int CapacityFor(int n) {
  const long long capacity = (static_cast<long long>(n) + kBlockTail) & ~15LL;
  return n > 0 && capacity <= INT_MAX ? static_cast<int>(capacity) : 0;
}

std::unique_ptr<Mp4BlockBuffer> MakeBlockBuffer(int n) {
  std::unique_ptr<Mp4BlockBuffer> buffer;
  mp4::WithoutThrowing([&] { buffer = std::make_unique<Mp4BlockBuffer>(); });
  const int capacity = CapacityFor(n);
  if (buffer == nullptr || capacity == 0) return buffer;
  buffer->data = mp4::MakeLazyArray<unsigned char>(static_cast<std::size_t>(capacity + kBlockTail));
  if (buffer->data != nullptr) buffer->capacity = capacity;
  return buffer;
}

}  // namespace

const MP4_FILE_MODE Mp4Demux::m_arSupportedMode[12] = {
    MP4_FILE_MODE_MP4,     MP4_FILE_MODE_3GP,     MP4_FILE_MODE_3G2,     MP4_FILE_MODE_PSP,
    MP4_FILE_MODE_MOV,     MP4_FILE_MODE_UNKNOWN, MP4_FILE_MODE_UNKNOWN, MP4_FILE_MODE_UNKNOWN,
    MP4_FILE_MODE_UNKNOWN, MP4_FILE_MODE_UNKNOWN, MP4_FILE_MODE_UNKNOWN, MP4_FILE_MODE_UNKNOWN};

int Mp4Demux::GetMaxBlockSize() {
  if (context == nullptr) return kBlockSizeWithoutContext;
  int largest = 0;
  for (const auto& track : context->tracks) {
    if (track != nullptr) largest = std::max(largest, static_cast<int>(track->maxSampleSize));
  }
  return largest;
}

bool Mp4Demux::ReadyToDemux() {
  if (movieBox == nullptr || context == nullptr) return false;
  const int largest = GetMaxBlockSize();
  if (blockBuffer == nullptr || blockBuffer->capacity < largest) {
    blockBuffer.reset();
    blockBuffer = MakeBlockBuffer(largest);
  }
  // Unready tracks show when samples are asked for, not here: hosts open silent movies too.
  movieBox->ReadyToDemux();
  return true;
}

bool Mp4Demux::IsSupportedFormat(unsigned int tag) {
  if (tag == 0) return false;
  return std::any_of(std::begin(m_arSupportedMode), std::end(m_arSupportedMode), [tag](auto mode) {
    const Mp4FileModeInfo* row = GetFileModeInfo(mode);
    unsigned char bytes[4];
    std::memcpy(bytes, row->tag, sizeof bytes);
    return mp4::LoadLe32(bytes) == tag;
  });
}
