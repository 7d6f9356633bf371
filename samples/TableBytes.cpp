#include "samples/TableBytes.h"

#include <algorithm>
#include <new>

#include "io/MakeLazyArray.h"

namespace mp4 {

void TableBytes::Own(LazyArray<unsigned char> bytes, std::size_t n) {
  own_ = std::move(bytes);
  data_ = own_.get();
  size_ = n;
}

void TableBytes::Load(BoxTree* tree, BoxId id, std::uint64_t from, std::uint64_t n,
                      SampleProblems* problems) {
  const Box box = tree->At(id);
  data_ = nullptr;
  size_ = 0;
  if (from >= box.PayloadSize()) return;
  const auto wanted = static_cast<std::size_t>(std::min(n, box.PayloadSize() - from));
  const std::uint64_t at = box.PayloadOffset() + from;
  if (wanted == 0) return;
  // An inflated movie lies in memory for as long as its tree.
  data_ = box.space == 0 ? tree->Source()->InMemory(at, wanted) : tree->View(box.space, at, wanted);
  size_ = data_ != nullptr ? wanted : 0;
  if (data_ != nullptr) return;
  LazyArray<unsigned char> bytes = NewBytes(wanted);
  if (bytes == nullptr) throw std::bad_alloc();
  const std::size_t got = tree->Source()->ReadAt(at, bytes.get(), wanted);
  if (got < wanted) problems->Note(SampleFault::kNotDelivered, box.type, wanted, got, box.offset);
  Own(std::move(bytes), got);
}

std::size_t LoadRows(BoxTree* tree, BoxId id, std::uint64_t countAt, std::size_t width,
                     TableBytes* rows, SampleProblems* problems) {
  const Box box = tree->At(id);
  FieldView fields = tree->Payload(id, countAt, 4);
  const std::uint64_t says = fields.U32();
  if (!fields.Ok()) {
    problems->Note(SampleFault::kCut, box.type, 0, 0, box.offset);
    return 0;
  }
  const std::uint64_t holds = (box.PayloadSize() - countAt - 4) / width;
  if (says > holds) problems->Note(SampleFault::kFewerRows, box.type, says, holds, box.offset);
  rows->Load(tree, id, countAt + 4, std::min(says, holds) * width, problems);
  return rows->size() / width;
}

}  // namespace mp4
