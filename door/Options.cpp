#include "door/Options.h"

#include <algorithm>
#include <cstring>

mp4judge_options mp4::WholeOptions(const mp4judge_options* given) {
  mp4judge_options whole = MP4JUDGE_OPTIONS_DEFAULT;
  if (given == nullptr) return whole;
  std::memcpy(&whole, given, std::min(given->size, sizeof whole));
  whole.size = sizeof whole;
  return whole;
}
