#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "io/CachedSource.h"
#include "iso/Box.h"
#include "iso/ChildLayout.h"
#include "iso/FieldView.h"

namespace mp4 {

/// How much a tree may take, from what the source holds.
struct TreeLimits {
  std::uint64_t boxes;     ///< boxes held
  std::uint64_t inflated;  ///< bytes of inflated movies
  int depth;

  /// One box per 16 bytes, and half a million for small sources and inflated movies.
  static TreeLimits For(std::uint64_t sourceSize);
};

/// The boxes of a source, read as they are asked for: a sibling's header is read when the walk
/// comes to it, a box's children when somebody wants the first. A bad box ends the walk of its
/// parent and hides nothing else. Everything that was wrong or skipped stands in Problems().
///
/// Compressed movies are inflated when their children are wanted; those lie in a space of their
/// own. Iterative, and linear in the boxes walked. May throw bad_alloc, nothing else.
class BoxTree {
 public:
  /// `source` is borrowed.
  explicit BoxTree(CachedSource* source);
  BoxTree(CachedSource* source, const TreeLimits& limits);

  /// Valid until the next box is read: copy what must last.
  const Box& At(BoxId id) const { return boxes_[id]; }
  std::size_t Count() const { return boxes_.size(); }

  /// The first child, kNoBox when there is none or the box holds no boxes.
  BoxId FirstChild(BoxId id);
  /// The next sibling, kNoBox behind the last.
  BoxId Next(BoxId id);
  /// The first child of a type, and the next sibling of the same type.
  BoxId Child(BoxId parent, std::uint32_t type);
  BoxId NextOfType(BoxId id);
  /// Whether the layout of the box has child boxes at all.
  bool IsContainer(BoxId id);
  /// Payload bytes in front of the first child (0 for a leaf).
  std::uint64_t FixedBytes(BoxId id);
  /// Children that the box announces; negative when it announces none.
  std::int64_t CountedChildren(BoxId id);

  /// Up to `most` (at most CachedSource::kLargestView) bytes of the payload from `from` on, in
  /// place, valid until the next read. Empty when the source does not deliver.
  FieldView Payload(BoxId id, std::uint64_t from = 0,
                    std::size_t most = CachedSource::kLargestView);
  /// `n` bytes of a space in place, or null; the same lifetime and limit.
  const unsigned char* View(std::uint16_t space, std::uint64_t offset, std::size_t n);
  /// The user type of a "uuid" box (16 bytes in place), null for other boxes.
  const unsigned char* UserType(BoxId id);
  std::uint64_t SpaceSize(std::uint16_t space) const;

  /// "moov/trak[2]/mdia": types by '/', each with its ordinal where several are usual or where it
  /// is not the first. Bytes that are not printable ASCII, '/', '[', ']' and '\' stand as \xHH.
  std::string Path(BoxId id) const;

  const std::vector<BoxProblem>& Problems() const { return problems_; }
  void Note(BoxFault fault, BoxId box, std::uint64_t offset, std::uint64_t end);
  /// Problems not kept because there were too many.
  std::uint64_t ProblemsDropped() const { return problemsDropped_; }
  bool LimitMet() const { return limitMet_; }
  CachedSource* Source() { return source_; }

  /// The handler found last and the description it belongs to: every entry asks again, and a
  /// hostile media box has many boxes in front of its handler. Kept by mp4::HandlerOf.
  struct KnownHandler {
    BoxId sampleDescription = kNoBox;
    std::uint32_t type = 0;
  };
  KnownHandler& LastHandler() { return lastHandler_; }

 private:
  /// How far the children of one box have been walked.
  struct Walk {
    ChildLayout layout;
    std::uint16_t space = 0;
    bool done = false;
    BoxId first = kNoBox;
    BoxId last = kNoBox;
    std::uint64_t held = 0;
    std::uint64_t at = 0;
    std::uint64_t end = 0;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> ordinals;  ///< by type, the first few
  };

  Walk& WalkOf(BoxId id);
  void StartWalk(BoxId id, Walk* walk);
  BoxId WalkOn(BoxId parent);
  bool ReadHeader(BoxId parent, const Walk& walk, Box* box);
  bool RestIsZero(const Walk& walk);
  void EndWalk(BoxId parent, Walk* walk);
  std::uint32_t NextOrdinal(BoxId parent, Walk* walk, std::uint32_t type);
  bool Inflate(BoxId id, std::uint64_t from, std::uint16_t* space);

  CachedSource* source_;
  TreeLimits limits_;
  std::vector<Box> boxes_;
  std::vector<Walk> walks_;  ///< the first is nobody's
  std::vector<std::vector<unsigned char>> inflated_;
  std::map<std::uint64_t, std::uint32_t> moreOrdinals_;
  std::vector<BoxProblem> problems_;
  std::uint64_t problemsDropped_ = 0;
  bool limitMet_ = false;
  KnownHandler lastHandler_;
};

}  // namespace mp4
