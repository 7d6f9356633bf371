#include "samples/FragmentRuns.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "io/ByteOrder.h"
#include "io/MakeLazyArray.h"
#include "samples/Search.h"

namespace mp4 {

namespace {

constexpr std::size_t kFirstBlock = std::size_t{4} << 10;
constexpr std::size_t kLargestBlock = std::size_t{256} << 10;

}  // namespace

void FragmentExtra::Show(Sample* sample) const {
  const std::uint64_t index = sample->number - 1 + shift;
  if (guards != nullptr) sample->isProtected = ToldBy(guards->At(index), byDefault);
  if (index < dependsCount) sample->depends = depends[index];
}

RunPlace FragmentRun::PlaceOf(std::uint64_t samples) const {
  const std::size_t width = Width();
  RunPlace place{rows, samples * size, samples * duration};
  if (width == 0) return place;
  const unsigned char* end = rows + samples * width;
  const unsigned char* field = rows;
  if ((fields & kDuration) != 0) {
    place.duration = 0;
    for (const unsigned char* p = field; p < end; p += width) place.duration += LoadBe32(p);
    field += 4;
  }
  if ((fields & kSize) != 0) {
    place.bytes = 0;
    for (const unsigned char* p = field; p < end; p += width) place.bytes += LoadBe32(p);
  }
  place.rows = end;
  return place;
}

std::size_t FragmentRuns::Find(std::uint64_t sample) const {
  return LastNotAbove(runs.size(),
                      GuessPlace(sample - first, PlacesPer(samples, runs.size()), runs.size()),
                      sample, [this](std::size_t i) { return runs[i].firstSample; });
}

std::uint64_t FragmentRun::LastAtTime(std::uint64_t time) const {
  const std::uint64_t last = count - 1U;
  if ((fields & kDuration) == 0) {
    return duration != 0 ? std::min(last, (time - decodeTime) / duration) : last;
  }
  const std::size_t width = Width();
  std::uint64_t index = 0;
  std::uint64_t end = decodeTime + LoadBe32(rows);
  while (index < last && end <= time) end += LoadBe32(rows + ++index * width);
  return index;
}

std::uint64_t FragmentRun::LastSync(std::uint64_t last) const {
  const auto isSync = [](bool told, std::uint32_t value) { return told && (value >> 16 & 1) == 0; };
  if ((fields & kFlags) == 0) {
    if (last > 0 && isSync(flagsTold, flags)) return last + 1;
    return isSync(firstTold, firstFlags) ? 1 : 0;
  }
  const std::size_t width = Width();
  const std::size_t before = WidthOf(fields & 3);
  for (std::uint64_t number = last + 1; number > 0; --number) {
    if (isSync(true, LoadBe32(rows + (number - 1) * width + before))) return number;
  }
  return 0;
}

void FragmentRuns::FindLeastTimes() {
  if (leastTimes_.size() == runs.size()) return;
  leastTimes_.resize(runs.size());
  std::uint64_t least = ~std::uint64_t{0};
  for (std::size_t i = runs.size(); i > 0; --i) {
    least = std::min(least, runs[i - 1].decodeTime);
    leastTimes_[i - 1] = least;
  }
}

std::size_t FragmentRuns::LastAtTime(std::uint64_t time) {
  const std::size_t n = runs.size();
  if (n == 0) return n;
  if (!timesRise) FindLeastTimes();
  const auto key = [this](std::size_t i) {
    return timesRise ? runs[i].decodeTime : leastTimes_[i];
  };
  const std::uint64_t start = key(0);
  if (start > time) return n;
  const std::uint64_t length = endTime > start ? endTime - start : 0;
  return LastNotAbove(n, GuessPlace(time - start, PlacesPer(length, n), n), time, key);
}

/// Blocks grow with what is kept, so that the unused rest stays a small part.
const unsigned char* RowKeep::Keep(const unsigned char* rows, std::size_t n) {
  if (n == 0) return nullptr;
  if (n > left_) {
    const std::size_t size = std::max(n, std::clamp(bytes_ / 4, kFirstBlock, kLargestBlock));
    LazyArray<unsigned char> block = NewBytes(size);
    if (block == nullptr) throw std::bad_alloc();
    next_ = block.get();
    left_ = size;
    bytes_ += size;
    blocks_.push_back(std::move(block));
  }
  std::memcpy(next_, rows, n);
  const unsigned char* kept = next_;
  next_ += n;
  left_ -= n;
  return kept;
}

}  // namespace mp4
