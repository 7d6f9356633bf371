#include "door/HostTrial.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "door/HostJudgement.h"
#include "io/ByteOrder.h"
#include "io/FourCC.h"
#include "io/WindowReader.h"

namespace mp4 {

namespace {

/// What a call costs, counted as bytes.
constexpr std::uint64_t kCallWork = 64;
/// Inflating a byte costs a few times what reading one does; a movie that was inflated is read from
/// memory, where nobody counts.
constexpr std::uint64_t kInflatedWork = 4;
constexpr std::uint64_t kInflatedMovieWork = std::uint64_t{512} << 10;

/// Counts what the host does and ends it when there is no more to spend, in the way that the host
/// meets refused memory.
class CountingReader final : public WindowReader {
 public:
  CountingReader(const std::vector<unsigned char>& bytes, std::uint64_t most, std::uint64_t* work)
      : bytes_(bytes), most_(most), work_(work) {}

  unsigned char GetByte() override {
    Count(1);
    return WindowReader::GetByte();
  }
  unsigned int GetData(void* dst, unsigned int n) override {
    Count(std::min<std::size_t>(n, bytes_.size()));
    return WindowReader::GetData(dst, n);
  }
  long long SetPos(long long pos) override {
    Count(0);
    return WindowReader::SetPos(pos);
  }
  long long Skip(long long n) override {
    Count(0);
    return WindowReader::Skip(n);
  }
  long long GetSize() override { return static_cast<long long>(bytes_.size()); }

 private:
  void Count(std::size_t n) {
    *work_ += n + kCallWork;
    if (*work_ >= most_) throw std::bad_alloc();
  }
  bool IsOpen() const override { return true; }
  std::size_t ReadAt(long long offset, void* dst, std::size_t n) override {
    const auto at = static_cast<std::size_t>(offset);
    if (at >= bytes_.size()) return 0;
    const std::size_t taken = std::min(n, bytes_.size() - at);
    std::memcpy(dst, bytes_.data() + at, taken);
    return taken;
  }

  const std::vector<unsigned char>& bytes_;
  std::uint64_t most_;
  std::uint64_t* work_;
};

/// A type that the host passes over inside a parent. Some containers of the host enter what they do
/// not know; there it is a child that takes any payload.
const char* PassedOverIn(std::uint32_t parent) {
  switch (parent) {
    case FourCC("mvex"):
      return "mehd";
    case FourCC("moof"):
      return "mfhd";
    case FourCC("traf"):
      return "tfhd";
    default:
      return "free";
  }
}

/// What each trial costs because of compressed movies.
std::uint64_t WorkOfInflating(const std::vector<unsigned char>& bytes) {
  constexpr char kType[] = {'c', 'm', 'v', 'd'};
  std::uint64_t work = 0;
  auto at = bytes.begin();
  while ((at = std::search(at, bytes.end(), kType, kType + 4)) != bytes.end()) {
    work += kInflatedMovieWork;
    if (bytes.end() - at >= 8) work += kInflatedWork * LoadBe32(&*at + 4);
    ++at;
  }
  return work;
}

}  // namespace

HostTrial::HostTrial(HostCopy copy)
    : copy_(std::move(copy)),
      memory_(copy_.bytes.data(), copy_.bytes.size()),
      cache_(&memory_),
      tree_(&cache_),
      inflating_(WorkOfInflating(copy_.bytes)) {}

mp4judge_host_answer HostTrial::Answer(const std::vector<Change>& changes) {
  if (IsSpent()) return MP4JUDGE_HOST_UNREADABLE;
  std::vector<Change> before;
  for (const Change& change : changes) {
    if (change.offset > copy_.bytes.size()) continue;
    auto* at = copy_.bytes.data() + change.offset;
    const std::size_t n =
        std::min<std::size_t>(change.bytes.size(), copy_.bytes.size() - change.offset);
    before.push_back({change.offset, std::vector<unsigned char>(at, at + n)});
    std::copy_n(change.bytes.begin(), n, at);
  }
  work_ += inflating_;
  const mp4judge_host_answer answer =
      HostAnswer(std::make_unique<CountingReader>(copy_.bytes, kMostWork, &work_));
  for (auto change = before.rbegin(); change != before.rend(); ++change) {
    std::copy(change->bytes.begin(), change->bytes.end(),
              copy_.bytes.begin() + static_cast<std::ptrdiff_t>(change->offset));
  }
  return IsSpent() ? MP4JUDGE_HOST_UNREADABLE : answer;
}

std::vector<HostTrial::Change> HostTrial::Without(const std::vector<BoxId>& boxes) {
  std::vector<Change> changes;
  for (const BoxId id : boxes) {
    const Box& box = tree_.At(id);
    if (box.space != 0 || box.size > UINT32_MAX) continue;
    const std::uint32_t parent = box.parent != kRootBox ? tree_.At(box.parent).type : 0;
    const auto size = static_cast<std::uint32_t>(box.end - box.offset);
    std::vector<unsigned char> header;
    for (int shift = 24; shift >= 0; shift -= 8) {
      header.push_back(static_cast<unsigned char>(size >> shift));
    }
    const char* type = PassedOverIn(parent);
    header.insert(header.end(), type, type + 4);
    changes.push_back({box.offset, std::move(header)});
  }
  return changes;
}

}  // namespace mp4
