#include "io/mmBufReader.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <utility>

#include "io/NewArray.h"
#include "io/WrapMath.h"

mmBufReader::mmBufReader(const void* bytes, std::size_t n) {
  const std::size_t length = std::min<std::size_t>(n, INT_MAX);
  if (bytes == nullptr || length == 0) return;
  data = mp4::NewArray<unsigned char>(length);
  if (data == nullptr) return;
  std::memcpy(data.get(), bytes, length);
  capacity = size = static_cast<int>(length);
}

mmBufReader::mmBufReader(std::unique_ptr<unsigned char[]> bytes, std::size_t n)
    : data(std::move(bytes)) {
  if (data != nullptr) capacity = size = static_cast<int>(std::min<std::size_t>(n, INT_MAX));
}

unsigned char mmBufReader::GetByte() {
  const unsigned char byte = pos >= 0 && pos < size ? data[static_cast<std::size_t>(pos)] : 0;
  pos = mp4::WrapAdd32(pos, 1);
  return byte;
}

unsigned int mmBufReader::GetData(void* dst, unsigned int n) {
  auto* out = static_cast<unsigned char*>(dst);
  const long long from = pos;
  const long long to = from + n;
  const long long first = std::clamp<long long>(0, from, to);
  const long long last = std::clamp<long long>(size, first, to);
  if (n > 0) {
    std::memset(out, 0, static_cast<std::size_t>(first - from));
    if (last > first) {
      std::memcpy(out + (first - from), data.get() + first, static_cast<std::size_t>(last - first));
    }
    std::memset(out + (last - from), 0, static_cast<std::size_t>(to - last));
  }
  pos = mp4::Truncate32(to);
  return n;
}

long long mmBufReader::GetPos() { return pos; }

long long mmBufReader::SetPos(long long p) {
  pos = mp4::Truncate32(p);
  return pos;
}

long long mmBufReader::GetSize() { return size; }

long long mmBufReader::Skip(long long n) {
  pos = mp4::Truncate32(mp4::WrapAdd(pos, n));
  return pos;
}

bool mmBufReader::IsEnd() { return pos >= size; }
