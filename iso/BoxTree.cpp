#include "iso/BoxTree.h"

#include <algorithm>

#include "io/FourCC.h"
#include "iso/Inflate.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

constexpr std::uint64_t kSpareBoxes = 512 * 1024;
/// Media and tables make real files far larger; what is held for a box takes several times this.
constexpr std::uint64_t kBytesPerBox = 16;
/// All inflated movies together. The box tables of the longest films take a tenth of it.
constexpr std::uint64_t kMostInflated = std::uint64_t{64} << 20;
constexpr int kDeepest = 48;
/// Inflated movies in one tree; each is a space.
constexpr std::size_t kMostSpaces = 64;
constexpr std::size_t kMostProblems = 1000;
/// Zeros behind the last child are believed to be padding after so many, with as many at the end.
constexpr std::uint64_t kPaddingLookedAt = std::uint64_t{16} << 10;
constexpr std::size_t kOrdinalsInWalk = 12;
/// Types counted beside those; no movie has as many, and paths alone show them.
constexpr std::size_t kMostOrdinals = 256 * 1024;

/// Boxes that usually have siblings of their type: their ordinal is always written.
bool IsListed(std::uint32_t type, std::uint32_t parent) {
  switch (type) {
    case FourCC("trak"):
    case FourCC("moof"):
    case FourCC("traf"):
    case FourCC("trun"):
    case FourCC("pssh"):
    case FourCC("uuid"):
    case FourCC("infe"):
    case FourCC("trex"):
      return true;
    default:
      return parent == FourCC("stsd") || parent == FourCC("ipro");
  }
}

}  // namespace

TreeLimits TreeLimits::For(std::uint64_t sourceSize) {
  // What no memory holds needs no counting; the sums cannot overflow then.
  const std::uint64_t size = std::min(sourceSize, std::uint64_t{1} << 56);
  return {size / kBytesPerBox + kSpareBoxes, kMostInflated, kDeepest};
}

BoxTree::BoxTree(CachedSource* source) : BoxTree(source, TreeLimits::For(source->Size())) {}

BoxTree::BoxTree(CachedSource* source, const TreeLimits& limits)
    : source_(source), limits_(limits), walks_(1) {
  Box root;
  root.size = root.end = source->Size();
  boxes_.reserve(64);
  boxes_.push_back(root);
}

std::uint64_t BoxTree::SpaceSize(std::uint16_t space) const {
  return space == 0 ? source_->Size() : inflated_[space - 1U].size();
}

const unsigned char* BoxTree::View(std::uint16_t space, std::uint64_t offset, std::size_t n) {
  if (space == 0) return source_->View(offset, n);
  const std::vector<unsigned char>& bytes = inflated_[space - 1U];
  if (offset > bytes.size() || n > bytes.size() - offset) return nullptr;
  return bytes.data() + offset;
}

FieldView BoxTree::Payload(BoxId id, std::uint64_t from, std::size_t most) {
  const Box& box = boxes_[id];
  const std::uint64_t size = box.PayloadSize();
  if (from >= size) return {};
  most = std::min(most, CachedSource::kLargestView);
  const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(most, size - from));
  const std::uint64_t at = box.PayloadOffset() + from;
  const unsigned char* bytes = View(box.space, at, n);
  if (bytes == nullptr) {
    Note(BoxFault::kNotDelivered, id, at, at + n);
    return {};
  }
  return {bytes, n};
}

const unsigned char* BoxTree::UserType(BoxId id) {
  const Box& box = boxes_[id];
  if (box.type != FourCC("uuid") || box.headerSize < 24) return nullptr;
  return View(box.space, box.PayloadOffset() - 16, 16);
}

void BoxTree::Note(BoxFault fault, BoxId box, std::uint64_t offset, std::uint64_t end) {
  if (fault == BoxFault::kTooManyBoxes || fault == BoxFault::kTooDeep) limitMet_ = true;
  if (problems_.size() < kMostProblems) {
    problems_.push_back({fault, box, offset, end});
  } else {
    ++problemsDropped_;
  }
}

bool BoxTree::IsContainer(BoxId id) { return WalkOf(id).layout.container; }

std::uint64_t BoxTree::FixedBytes(BoxId id) { return WalkOf(id).layout.fixed; }

std::int64_t BoxTree::CountedChildren(BoxId id) { return WalkOf(id).layout.counted; }

BoxId BoxTree::FirstChild(BoxId id) {
  const Walk& walk = WalkOf(id);
  return walk.first != kNoBox ? walk.first : WalkOn(id);
}

BoxId BoxTree::Next(BoxId id) {
  if (id == kRootBox) return kNoBox;
  return boxes_[id].next != kNoBox ? boxes_[id].next : WalkOn(boxes_[id].parent);
}

BoxId BoxTree::Child(BoxId parent, std::uint32_t type) {
  BoxId child = FirstChild(parent);
  while (child != kNoBox && boxes_[child].type != type) child = Next(child);
  return child;
}

BoxId BoxTree::NextOfType(BoxId id) {
  const std::uint32_t type = boxes_[id].type;
  do {
    id = Next(id);
  } while (id != kNoBox && boxes_[id].type != type);
  return id;
}

BoxTree::Walk& BoxTree::WalkOf(BoxId id) {
  if (boxes_[id].walk == 0) {
    Walk walk;
    // Finding the layout may read other boxes, so the note is made afterwards.
    StartWalk(id, &walk);
    walks_.push_back(std::move(walk));
    boxes_[id].walk = static_cast<std::uint32_t>(walks_.size() - 1);
  }
  return walks_[boxes_[id].walk];
}

void BoxTree::StartWalk(BoxId id, Walk* walk) {
  walk->layout = LayoutOf(this, id);
  const Box box = boxes_[id];
  walk->space = box.space;
  walk->end = box.end;
  walk->at = box.PayloadOffset();
  walk->done = !walk->layout.container;
  if (walk->done) return;
  if (box.depth >= limits_.depth) {
    Note(BoxFault::kTooDeep, id, walk->at, walk->end);
    walk->done = true;
  } else if (walk->layout.fixed > box.PayloadSize()) {
    Note(BoxFault::kFieldsCut, id, walk->at, walk->end);
    walk->at = walk->end;
  } else if (walk->layout.compressed) {
    walk->done = !Inflate(id, walk->at + walk->layout.fixed, &walk->space);
    walk->at = 0;
    walk->end = walk->done ? 0 : SpaceSize(walk->space);
  } else {
    walk->at += walk->layout.fixed;
  }
}

bool BoxTree::Inflate(BoxId id, std::uint64_t from, std::uint16_t* space) {
  const Box box = boxes_[id];
  std::vector<unsigned char> plain;
  bool whole = false;
  if (inflated_.size() < kMostSpaces) {
    whole =
        InflateBytes([&](std::uint64_t at, std::size_t n) { return View(box.space, from + at, n); },
                     box.end - from, limits_.inflated, &plain);
  }
  if (!whole) Note(BoxFault::kNotInflated, id, box.offset, box.end);
  if (plain.empty()) return false;
  limits_.inflated -= plain.size();
  inflated_.push_back(std::move(plain));
  *space = static_cast<std::uint16_t>(inflated_.size());
  return true;
}

/// Reads the header of the child behind the last one walked; kNoBox at the end of the parent.
BoxId BoxTree::WalkOn(BoxId parent) {
  Walk& walk = WalkOf(parent);
  if (walk.done) return kNoBox;
  Box box;
  if (!ReadHeader(parent, walk, &box)) {
    EndWalk(parent, &walk);
    return kNoBox;
  }
  const BoxId id = static_cast<BoxId>(boxes_.size());
  box.ordinal = NextOrdinal(parent, &walk, box.type);
  boxes_.push_back(box);
  if (box.IsCut()) {
    const bool byEnd = walk.end == SpaceSize(walk.space);
    Note(byEnd ? BoxFault::kCutByEnd : BoxFault::kOverrunsParent, id, box.offset, box.end);
  }
  (walk.last != kNoBox ? boxes_[walk.last].next : walk.first) = id;
  walk.last = id;
  walk.at = box.end;
  ++walk.held;
  return id;
}

/// False when no box begins where the walk stands; what is wrong there, if anything, is noted.
bool BoxTree::ReadHeader(BoxId parent, const Walk& walk, Box* box) {
  const std::uint64_t left = walk.end - walk.at;
  if (left < 8) {
    if (!RestIsZero(walk)) Note(BoxFault::kRestUnreadable, parent, walk.at, walk.end);
    return false;
  }
  if (boxes_.size() >= limits_.boxes) {
    Note(BoxFault::kTooManyBoxes, parent, walk.at, walk.end);
    return false;
  }
  const std::size_t seen = static_cast<std::size_t>(std::min<std::uint64_t>(left, 16));
  const unsigned char* bytes = View(walk.space, walk.at, seen);
  if (bytes == nullptr) {
    Note(BoxFault::kNotDelivered, parent, walk.at, walk.end);
    return false;
  }
  FieldView fields(bytes, seen);
  const std::uint32_t stored = fields.U32();
  box->type = fields.Type();
  const std::uint64_t large = stored == 1 ? fields.U64() : 0;
  if (stored == 0 && box->type == 0 && RestIsZero(walk)) return false;
  box->parent = parent;
  box->space = walk.space;
  box->depth = static_cast<std::uint8_t>(boxes_[parent].depth + 1);
  box->offset = walk.at;
  box->headerSize = stored == 1 ? 16 : 8;
  box->size = stored == 0 ? left : stored == 1 ? large : stored;
  // One too small for a user type has none.
  if (box->type == FourCC("uuid") && box->size >= box->headerSize + 16U) box->headerSize += 16;
  if (box->size < box->headerSize || !fields.Ok()) {
    const bool still = stored == 1 && fields.Ok() && large == 0;
    Note(still ? BoxFault::kStandsStill : BoxFault::kSmallerThanHeader, parent, walk.at, walk.end);
    return false;
  }
  box->end = walk.at + std::min(box->size, left);
  if (stored == 0 && parent != kRootBox) Note(BoxFault::kSizeZeroInside, parent, walk.at, walk.end);
  return true;
}

bool BoxTree::RestIsZero(const Walk& walk) {
  const auto n = static_cast<std::size_t>(std::min(walk.end - walk.at, kPaddingLookedAt));
  const auto isZero = [&](std::uint64_t from) {
    const unsigned char* bytes = View(walk.space, from, n);
    return bytes != nullptr &&
           std::all_of(bytes, bytes + n, [](unsigned char b) { return b == 0; });
  };
  return isZero(walk.at) && isZero(walk.end - n);
}

void BoxTree::EndWalk(BoxId parent, Walk* walk) {
  walk->done = true;
  if (walk->layout.counted < 0) return;
  const auto counted = static_cast<std::uint64_t>(walk->layout.counted);
  if (walk->held < counted) Note(BoxFault::kFewerThanCounted, parent, walk->at, walk->end);
  if (walk->held > counted) Note(BoxFault::kMoreThanCounted, parent, walk->at, walk->end);
}

/// The first few types of a parent are counted beside its walk, further ones in a table of all.
std::uint32_t BoxTree::NextOrdinal(BoxId parent, Walk* walk, std::uint32_t type) {
  for (auto& [known, count] : walk->ordinals) {
    if (known == type) return ++count;
  }
  if (walk->ordinals.size() < kOrdinalsInWalk) {
    walk->ordinals.emplace_back(type, 1);
    return 1;
  }
  if (moreOrdinals_.size() >= kMostOrdinals) return 1;
  return ++moreOrdinals_[std::uint64_t{parent} << 32 | type];
}

std::string BoxTree::Path(BoxId id) const {
  std::vector<BoxId> up;
  for (; id != kRootBox && id != kNoBox; id = boxes_[id].parent) up.push_back(id);
  std::string path;
  for (auto at = up.rbegin(); at != up.rend(); ++at) {
    const Box& box = boxes_[*at];
    if (!path.empty()) path.push_back('/');
    AppendType(box.type, &path);
    if (box.ordinal > 1 || IsListed(box.type, boxes_[box.parent].type)) {
      path.append("[").append(std::to_string(box.ordinal)).append("]");
    }
  }
  return path;
}

}  // namespace mp4
