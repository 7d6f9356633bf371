#pragma once

namespace mp4 {

/// Runs what may allocate in a function that must not throw; false when it threw. This is how
/// readers and boxes meet refused memory: none of them catches by itself, or asks for memory in a
/// way that answers null.
template <class Work>
bool WithoutThrowing(Work&& work) {
  try {
    work();
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace mp4
