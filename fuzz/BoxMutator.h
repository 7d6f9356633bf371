#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Mutations that know boxes: a box is changed, copied, moved or dropped, and the sizes of the
/// boxes around it are mended most of the time, so that the fuzzer reaches what lies behind them.
namespace fuzz {

/// Changes `data` (of `size` bytes, room for `most`) and returns the new size.
std::size_t MutateBoxes(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed);

}  // namespace fuzz

/// The fuzzer's own mutation of a byte range; the replay program brings a stand-in.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);
