#pragma once

#include <cstdint>

namespace mp4 {

/// A box in a BoxTree.
using BoxId = std::uint32_t;
constexpr BoxId kNoBox = 0xFFFFFFFFU;
/// The source as a whole: the parent of the top-level boxes. Not a box of the file.
constexpr BoxId kRootBox = 0;

/// One box (ISO/IEC 14496-12, 4.2) as its header says, wherever it stands. Offsets count in its
/// space: 0 is the file, others are inflated movies.
struct Box {
  std::uint32_t type = 0;       ///< in the order of mp4::FourCC
  std::uint16_t space = 0;      ///< the bytes that offsets count in
  std::uint8_t headerSize = 0;  ///< 8, 16 with a 64-bit size, and 16 more for a user type
  std::uint8_t depth = 0;       ///< 1 at the top level
  std::uint32_t ordinal = 1;    ///< 1-based among the siblings of this type
  BoxId parent = kNoBox;
  BoxId next = kNoBox;       ///< next sibling, as far as walked; use BoxTree::Next
  std::uint32_t walk = 0;    ///< the tree's note of how its children are walked; 0: not yet
  std::uint64_t offset = 0;  ///< first byte of the header
  std::uint64_t size = 0;    ///< header included; a stored 0 is resolved
  std::uint64_t end = 0;     ///< offset + size, cut to the parent's end

  std::uint64_t PayloadOffset() const { return offset + headerSize; }
  /// Payload bytes that are there, which a cut box has fewer of than its size says.
  std::uint64_t PayloadSize() const { return end > PayloadOffset() ? end - PayloadOffset() : 0; }
  bool IsCut() const { return end - offset < size; }
};

/// What is wrong with a box, or about walking its children.
enum class BoxFault : std::uint8_t {
  kOverrunsParent,     ///< its size goes past the end of its parent
  kCutByEnd,           ///< its size goes past the end of the source
  kSmallerThanHeader,  ///< its size does not cover its own header; what follows is hidden
  kSizeZeroInside,     ///< a size of 0 below the top level: it may cover its siblings
  kStandsStill,        ///< a 64-bit size of 0; what follows is hidden
  kRestUnreadable,     ///< bytes behind the last child that form no box and are not zero
  kFewerThanCounted,   ///< holds fewer children than it announces
  kMoreThanCounted,    ///< holds more children than it announces
  kFieldsCut,          ///< ends before its own fields do
  kNoLayoutFits,       ///< a sample entry whose child boxes cannot be found
  kNotInflated,        ///< a compressed movie that does not inflate, or only in part
  kTooDeep,            ///< nested deeper than the limit; its children were not walked
  kTooManyBoxes,       ///< the limit of boxes was met; what follows was not walked
  kNotDelivered,       ///< the source failed here; what follows is unknown
};

/// A fault with its place. The hidden bytes, if any, begin at `offset` and end at `end`.
struct BoxProblem {
  BoxFault fault;
  BoxId box;             ///< the box itself, or the parent whose child could not be read
  std::uint64_t offset;  ///< in the box's space, or in that of its children
  std::uint64_t end;
};

}  // namespace mp4
