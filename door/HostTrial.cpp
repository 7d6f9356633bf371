#include "door/HostTrial.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "door/HostJudgement.h"
#include "io/ByteOrder.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

/// What a call costs, counted as bytes.
constexpr std::uint64_t kCallWork = 64;
/// Inflating a byte costs a few times what reading one does.
constexpr std::uint64_t kInflatedWork = 4;

/// Counts what is read through it.
class CountingSource final : public ByteSource {
 public:
  CountingSource(const std::vector<unsigned char>& bytes, std::uint64_t* work)
      : bytes_(bytes), work_(work) {
    SetSize(bytes.size());
  }

 private:
  std::size_t Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) override {
    std::memcpy(bytes, bytes_.data() + offset, n);
    *work_ += n + kCallWork;
    return n;
  }

  const std::vector<unsigned char>& bytes_;
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

/// What the compressed movies of a copy announce to inflate to.
std::uint64_t Announced(const std::vector<unsigned char>& bytes) {
  constexpr char kType[] = {'c', 'm', 'v', 'd'};
  std::uint64_t sum = 0;
  auto at = bytes.begin();
  while ((at = std::search(at, bytes.end(), kType, kType + 4)) != bytes.end()) {
    if (bytes.end() - at >= 8) sum += LoadBe32(&*at + 4);
    ++at;
  }
  return sum;
}

}  // namespace

HostTrial::HostTrial(HostCopy copy)
    : copy_(std::move(copy)),
      memory_(copy_.bytes.data(), copy_.bytes.size()),
      cache_(&memory_),
      tree_(&cache_),
      inflating_(kInflatedWork * Announced(copy_.bytes)) {}

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
  CountingSource source(copy_.bytes, &work_);
  work_ += inflating_;
  const mp4judge_host_answer answer = HostAnswer(&source);
  for (auto change = before.rbegin(); change != before.rend(); ++change) {
    std::copy(change->bytes.begin(), change->bytes.end(),
              copy_.bytes.begin() + static_cast<std::ptrdiff_t>(change->offset));
  }
  return answer;
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
