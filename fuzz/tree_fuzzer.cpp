// The box tree alone, all of it: every box lies in its parent behind its siblings, or is said to be
// broken; bytes in memory, from callbacks and in a file make the same tree, in whatever order it is
// walked; and few boxes, levels and inflated bytes are as many as were allowed.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "fuzz/BoxMutator.h"
#include "fuzz/FuzzBytes.h"
#include "fuzz/MemoryFile.h"
#include "inspect/BoxFields.h"
#include "inspect/TreeProblems.h"
#include "io/CallbackSource.h"
#include "io/FileSource.h"
#include "io/MemorySource.h"

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  return fuzz::MutateBoxes(data, size, most, seed);
}

namespace {

using fuzz::Demand;

/// Met by most inputs.
constexpr mp4::TreeLimits kTiny{40, 2000, 6};
/// A text of more boxes takes too long; inflated movies may hold as many.
constexpr std::size_t kMostWritten = 10000;

struct Input {
  const std::uint8_t* data;
  std::size_t size;
};

std::int64_t SizeOf(void* user) {
  return static_cast<std::int64_t>(static_cast<const Input*>(user)->size);
}
/// Often fewer bytes than are asked for.
std::int64_t ReadAt(void* user, std::uint64_t offset, void* bytes, std::size_t n) {
  const auto* input = static_cast<const Input*>(user);
  Demand(n > 0 && offset < input->size && n <= input->size - offset);
  const std::size_t some = offset % 2 == 0 ? (n + 1) / 2 : n;
  std::memcpy(bytes, input->data + offset, some);
  return static_cast<std::int64_t>(some);
}

void WalkLevelByLevel(mp4::BoxTree* tree) {
  for (mp4::BoxId id = 0; id < tree->Count(); ++id) {
    for (mp4::BoxId child = tree->FirstChild(id); child != mp4::kNoBox;) child = tree->Next(child);
  }
}

/// Children before siblings, as an inspection goes.
void WalkDown(mp4::BoxTree* tree) {
  std::vector<mp4::BoxId> way{mp4::kRootBox};
  while (!way.empty()) {
    const mp4::BoxId child = tree->FirstChild(way.back());
    if (child != mp4::kNoBox) {
      way.push_back(child);
      continue;
    }
    mp4::BoxId next = mp4::kNoBox;
    while (!way.empty() && next == mp4::kNoBox) {
      next = tree->Next(way.back());
      way.pop_back();
    }
    if (next != mp4::kNoBox) way.push_back(next);
  }
}

/// What every box of every tree must be.
void DemandSound(mp4::BoxTree* tree, const mp4::TreeLimits& limits) {
  Demand(tree->Count() <= std::max<std::uint64_t>(limits.boxes, 1));
  std::set<mp4::BoxId> broken;
  for (const mp4::BoxProblem& problem : tree->Problems()) broken.insert(problem.box);
  std::uint64_t inflated = 0;
  std::uint16_t spaces = 0;
  for (mp4::BoxId id = 1; id < tree->Count(); ++id) {
    const mp4::Box box = tree->At(id);
    const mp4::Box parent = tree->At(box.parent);
    Demand(box.parent < id && box.depth == parent.depth + 1 && box.depth <= limits.depth);
    // At least a header of eight bytes, so that no walk stands still.
    Demand(box.size >= box.headerSize && box.headerSize >= 8 && box.end - box.offset >= 8);
    Demand(box.end > box.offset && box.end <= tree->SpaceSize(box.space));
    if (box.space == parent.space) {
      Demand(box.offset >= parent.PayloadOffset() && box.end <= parent.end);
    } else {
      while (spaces < box.space) inflated += tree->SpaceSize(++spaces);
    }
    if (box.IsCut()) Demand(broken.count(id) != 0 || tree->ProblemsDropped() != 0);
    const mp4::BoxId next = tree->Next(id);
    if (next == mp4::kNoBox) continue;
    const mp4::Box sibling = tree->At(next);
    Demand(sibling.parent == box.parent && sibling.offset == box.end && !box.IsCut());
  }
  Demand(inflated <= limits.inflated);
}

std::string TextOf(const mp4::FieldValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* number = std::get_if<std::uint64_t>(&value)) return std::to_string(*number);
  if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
  if (const auto* number = std::get_if<double>(&value)) return std::to_string(*number);
  if (const auto* rows = std::get_if<std::vector<std::string>>(&value)) {
    std::string all;
    for (const std::string& row : *rows) all.append(row).push_back(',');
    return all;
  }
  return std::get<bool>(value) ? "true" : "false";
}

/// A tree in words that do not depend on the order in which it was walked. Boxes alone when it is
/// large.
std::string TextOf(mp4::BoxTree* tree) {
  if (tree->Count() > kMostWritten) return std::to_string(tree->Count());
  std::vector<std::string> lines;
  for (mp4::BoxId id = 0; id < tree->Count(); ++id) {
    const mp4::Box box = tree->At(id);
    std::string line = tree->Path(id);
    for (const std::uint64_t number :
         {box.offset, box.size, box.end, std::uint64_t{box.headerSize}, tree->FixedBytes(id),
          static_cast<std::uint64_t>(tree->CountedChildren(id))})
      line.append(" ").append(std::to_string(number));
    bool cut = false;
    for (const mp4::BoxField& field : mp4::FieldsOf(tree, id, &cut))
      line.append(" ").append(field.name).append("=").append(TextOf(field.value));
    lines.push_back(line + (cut ? " cut" : ""));
  }
  for (const mp4::BoxProblem& problem : tree->Problems())
    lines.push_back(tree->Path(problem.box) + ": " + mp4::TextOfProblem(*tree, problem));
  std::sort(lines.begin(), lines.end());
  std::string all;
  for (const std::string& line : lines) all.append(line).push_back('\n');
  return all;
}

using WalkAll = void (*)(mp4::BoxTree* tree);

std::string TreeOf(mp4::ByteSource* source, const mp4::TreeLimits& limits, WalkAll walk) {
  mp4::CachedSource cache(source);
  mp4::BoxTree tree(&cache, limits);
  walk(&tree);
  DemandSound(&tree, limits);
  return TextOf(&tree);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input{data, size};
  mp4::MemorySource memory(data, size);
  for (const mp4::TreeLimits& limits : {mp4::TreeLimits::For(size), kTiny}) {
    const std::string expected = TreeOf(&memory, limits, WalkLevelByLevel);
    mp4::CallbackSource callbacks(ReadAt, SizeOf, &input);
    Demand(TreeOf(&callbacks, limits, WalkLevelByLevel) == expected);
    const fuzz::MemoryFile file(data, size);
    const auto onDisk = mp4::FileSource::Open(file.name(), nullptr);
    Demand(onDisk != nullptr && TreeOf(onDisk.get(), limits, WalkLevelByLevel) == expected);
    const bool few = limits.boxes != kTiny.boxes;
    const std::string downwards = TreeOf(&memory, limits, WalkDown);
    // Which boxes a limit leaves out depends on the order.
    if (few && expected.size() > 20) Demand(downwards == expected);
  }
  return 0;
}
