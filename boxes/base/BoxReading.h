#pragma once

#include <climits>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "boxes/base/FullBoxHeader.h"
#include "io/ByteOrder.h"
#include "io/Charge.h"
#include "io/Prices.h"
#include "io/WithoutThrowing.h"
#include "io/WrapMath.h"
#include "io/mmStreamReader.h"

class Mp4Context;

/// What every box source is made of: the child loop and child creation.
namespace mp4 {

/// A child's header inside a container.
struct ChildHeader {
  std::uint32_t type;
  long long size;     ///< the whole box; a stored 0 already means the rest of the container
  long long payload;  ///< size - 8, negative in a broken file
};

/// What a container's dispatch says about one child.
enum class Child { kRead, kFailed, kUnknown };

/// What the loop does with an unknown child. kEnter counts its size without moving the reader, so
/// the next header is read from inside it: fragment and movie-extends boxes are read that way. In
/// ISO/IEC 14496-12 an unknown box is passed over whole.
enum class UnknownChild { kSkip, kEnter };

struct WalkEnd {
  long long consumed;  ///< declared bytes, a failed child included
  bool failed;
};

/// The child loop of every container below the file's top level. Hosts rely on two departures from
/// ISO/IEC 14496-12: a size of 1 stands for itself instead of announcing a "largesize", and a size
/// of 0 is the rest of the container, where the standard allows it for the last box of a file
/// alone.
///
/// Starts with `consumed` bytes counted, ends when `size` is reached, the count exceeds `most`, a
/// child fails, or the opening's account is spent. The caller skips what remains (most leave it all
/// to the two functions below). `dispatch(const ChildHeader&)` returns a Child and may throw only
/// bad_alloc.
template <class Dispatch>
WalkEnd WalkChildren(mmStreamReader* reader, long long size, long long consumed,
                     UnknownChild unknown, Dispatch&& dispatch, long long most = LLONG_MAX) {
  ScanControl* const scan = reader->Scan();
  while (consumed < size && consumed <= most) {
    if (!ChargeStep(scan)) return {consumed, true};
    unsigned char header[8] = {};
    reader->GetData(header, sizeof header);
    const std::uint32_t stored = LoadBe32(header);
    const long long childSize = stored != 0 ? stored : size - consumed;
    const ChildHeader child{LoadLe32(header + 4), childSize, childSize - 8};
    Child result = Child::kFailed;
    WithoutThrowing([&] { result = dispatch(child); });
    if (result == Child::kUnknown && unknown == UnknownChild::kSkip) reader->Skip(child.payload);
    consumed = WrapAdd(consumed, childSize);
    if (result == Child::kFailed) return {consumed, true};
  }
  return {consumed, false};
}

/// Reads the children of a container behind its first `consumed` bytes and moves to its end, as the
/// sizes count it, even after a failed child. Unknown children are passed over. False when a child
/// failed.
template <class Dispatch>
bool ReadContainer(mmStreamReader* reader, long long size, long long consumed,
                   Dispatch&& dispatch) {
  const WalkEnd end = WalkChildren(reader, size, consumed, UnknownChild::kSkip, dispatch);
  reader->Skip(WrapSub(size, end.consumed));
  return !end.failed;
}

/// The same for a container whose unknown children are entered. After a failed child the reader
/// stays where that left it.
template <class Dispatch>
bool ReadEnteredContainer(mmStreamReader* reader, long long size, Dispatch&& dispatch) {
  const WalkEnd end = WalkChildren(reader, size, 0, UnknownChild::kEnter, dispatch);
  if (!end.failed) reader->Skip(WrapSub(size, end.consumed));
  return !end.failed;
}

/// Reads a child into a box that is created on first sight and reused afterwards.
template <class Box>
Child ReadReused(std::unique_ptr<Box>* slot, mmStreamReader* reader, const ChildHeader& child,
                 Mp4Context* context) {
  if (*slot == nullptr) *slot = std::make_unique<Box>();
  return (*slot)->ReadData(reader, child.payload, context) ? Child::kRead : Child::kFailed;
}

/// Reads a child into a new box that replaces an earlier one of its kind.
template <class Box>
Child ReadReplacing(std::unique_ptr<Box>* slot, mmStreamReader* reader, const ChildHeader& child,
                    Mp4Context* context) {
  *slot = std::make_unique<Box>();
  return (*slot)->ReadData(reader, child.payload, context) ? Child::kRead : Child::kFailed;
}

/// Reads a child into a new box that joins a list when it succeeds.
template <class Box>
Child ReadCollected(std::vector<std::unique_ptr<Box>>* list, mmStreamReader* reader,
                    const ChildHeader& child, Mp4Context* context) {
  if (!Charge(reader, 0, prices::kCollectedBox)) return Child::kFailed;
  auto box = std::make_unique<Box>();
  if (!box->ReadData(reader, child.payload, context)) return Child::kFailed;
  list->push_back(std::move(box));
  return Child::kRead;
}

}  // namespace mp4
