#include "door/Options.h"

#include <algorithm>
#include <cstring>

namespace mp4 {

namespace {

template <class Options>
Options Whole(const Options* given, Options whole) {
  if (given == nullptr) return whole;
  std::memcpy(&whole, given, std::min(given->size, sizeof whole));
  whole.size = sizeof whole;
  return whole;
}

}  // namespace

mp4judge_options WholeOptions(const mp4judge_options* given) {
  return Whole(given, MP4JUDGE_OPTIONS_DEFAULT);
}

mp4judge_tree_options WholeTreeOptions(const mp4judge_tree_options* given) {
  return Whole(given, MP4JUDGE_TREE_OPTIONS_DEFAULT);
}

}  // namespace mp4
