#include "fuzz/BoxMutator.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <string_view>

#include "io/ByteOrder.h"

namespace fuzz {

namespace {

using Data = std::vector<std::uint8_t>;

struct Node {
  std::size_t at, size;
  int parent;
};

/// Bytes between a container's header and its first child; -1 for a leaf.
int ChildrenAt(std::string_view type) {
  static constexpr std::string_view kContainers[] = {"moov", "trak", "mdia", "minf", "stbl",
                                                     "mvex", "moof", "traf", "udta", "ilst",
                                                     "edts", "cmov", "wave"};
  for (const std::string_view container : kContainers) {
    if (type == container) return 0;
  }
  if (type == "meta") return 4;
  if (type == "stsd") return 8;
  if (type == "mp4a" || type == "drms") return 28;
  if (type == "avc1" || type == "mp4v") return 78;
  return -1;
}

void Parse(const Data& data, std::size_t from, std::size_t to, int parent, int depth,
           std::vector<Node>* nodes) {
  while (to - from >= 8 && nodes->size() < 4096) {
    std::size_t size = mp4::LoadBe32(&data[from]);
    if (size == 0) size = to - from;
    if (size < 8 || size > to - from) return;
    const int index = static_cast<int>(nodes->size());
    nodes->push_back({from, size, parent});
    const std::string_view type(reinterpret_cast<const char*>(&data[from + 4]), 4);
    const int skip = ChildrenAt(type);
    if (skip >= 0 && depth < 12 && size >= 8 + static_cast<std::size_t>(skip)) {
      Parse(data, from + 8 + static_cast<std::size_t>(skip), from + size, index, depth + 1, nodes);
    }
    from += size;
  }
}

/// Adds `delta` to the sizes of a node's ancestors, from `node` up.
void Resize(Data* data, const std::vector<Node>& nodes, int node, std::ptrdiff_t delta) {
  for (; node >= 0; node = nodes[static_cast<std::size_t>(node)].parent) {
    std::uint8_t* field = &(*data)[nodes[static_cast<std::size_t>(node)].at];
    const std::uint32_t old = mp4::LoadBe32(field);
    if (old != 0) mp4::StoreBe32(field, old + static_cast<std::uint32_t>(delta));
  }
}

void ChangePayload(Data* data, const std::vector<Node>& nodes, int pick, std::size_t most,
                   bool mend) {
  const Node node = nodes[static_cast<std::size_t>(pick)];
  const std::size_t room = std::min<std::size_t>(most - data->size() + node.size, node.size + 64);
  Data payload(data->begin() + static_cast<std::ptrdiff_t>(node.at + 8),
               data->begin() + static_cast<std::ptrdiff_t>(node.at + node.size));
  const std::size_t old = payload.size();
  payload.resize(std::max<std::size_t>(room, old + 8) - 8);
  payload.resize(LLVMFuzzerMutate(payload.data(), old, payload.size()));
  const auto delta = static_cast<std::ptrdiff_t>(payload.size()) - static_cast<std::ptrdiff_t>(old);
  if (mend) Resize(data, nodes, pick, delta);
  const auto begin = data->begin() + static_cast<std::ptrdiff_t>(node.at + 8);
  const auto gap = data->erase(begin, begin + static_cast<std::ptrdiff_t>(old));
  data->insert(gap, payload.begin(), payload.end());
}

void Drop(Data* data, const std::vector<Node>& nodes, int pick, bool mend) {
  const Node node = nodes[static_cast<std::size_t>(pick)];
  if (mend) Resize(data, nodes, node.parent, -static_cast<std::ptrdiff_t>(node.size));
  const auto begin = data->begin() + static_cast<std::ptrdiff_t>(node.at);
  data->erase(begin, begin + static_cast<std::ptrdiff_t>(node.size));
}

void CopyBefore(Data* data, const std::vector<Node>& nodes, int from, int to, std::size_t most,
                bool mend) {
  const Node source = nodes[static_cast<std::size_t>(from)];
  const Node target = nodes[static_cast<std::size_t>(to)];
  if (data->size() + source.size > most) return;
  const Data copy(data->begin() + static_cast<std::ptrdiff_t>(source.at),
                  data->begin() + static_cast<std::ptrdiff_t>(source.at + source.size));
  if (mend) Resize(data, nodes, target.parent, static_cast<std::ptrdiff_t>(source.size));
  data->insert(data->begin() + static_cast<std::ptrdiff_t>(target.at), copy.begin(), copy.end());
}

void SetField(Data* data, const Node& node, std::mt19937* random) {
  static constexpr std::uint32_t kValues[] = {
      0,   1,          2,          7,          8,          9,         255,
      256, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0xFFFFFFF8, 0x4000000, 0x10000};
  if (node.size < 12) return;
  const std::size_t words = (node.size - 8) / 4;
  const std::size_t at = node.at + 8 + 4 * ((*random)() % std::min<std::size_t>(words, 64));
  mp4::StoreBe32(&(*data)[at], kValues[(*random)() % std::size(kValues)]);
}

}  // namespace

std::size_t MutateBoxes(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
  std::mt19937 random(seed);
  Data bytes(data, data + size);
  std::vector<Node> nodes;
  Parse(bytes, 0, bytes.size(), -1, 0, &nodes);
  if (nodes.empty() || random() % 8 == 0) return LLVMFuzzerMutate(data, size, most);
  const auto any = [&] { return static_cast<int>(random() % nodes.size()); };
  const bool mend = random() % 8 != 0;
  switch (random() % 6) {
    case 0:
      Drop(&bytes, nodes, any(), mend);
      break;
    case 1:
      CopyBefore(&bytes, nodes, any(), any(), most, mend);
      break;
    case 2:
      SetField(&bytes, nodes[static_cast<std::size_t>(any())], &random);
      break;
    case 3:
      mp4::StoreBe32(&bytes[nodes[static_cast<std::size_t>(any())].at], random() % 64);
      break;
    default:
      ChangePayload(&bytes, nodes, any(), most, mend);
  }
  const std::size_t result = std::min(bytes.size(), most);
  if (result > 0) std::memcpy(data, bytes.data(), result);
  return result;
}

}  // namespace fuzz
