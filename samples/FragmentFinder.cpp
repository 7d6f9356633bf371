#include "samples/FragmentFinder.h"

#include <algorithm>
#include <new>

#include "io/FourCC.h"
#include "io/MakeLazyArray.h"

namespace mp4 {

namespace {

/// Indexes of indexes that are followed: each lies behind the one that names it.
constexpr int kDeepestIndex = 16;

/// The payload of an index that counts 2^16 references.
constexpr std::uint64_t kLargestIndex = 32 + 12 * 0xFFFF;

/// A number of `bytes` bytes.
std::uint64_t Number(FieldView* fields, unsigned bytes) {
  std::uint64_t number = 0;
  for (; bytes > 0; --bytes) number = number << 8 | fields->U8();
  return number;
}

/// A time in units of another timescale, rounded down.
std::int64_t Rescaled(std::int64_t time, std::uint32_t from, std::uint32_t to) {
  if (from == to) return time;
  const __int128 wide = static_cast<__int128>(time) * to;
  constexpr std::int64_t kLast = INT64_MAX;
  return wide / from > kLast ? kLast : static_cast<std::int64_t>(wide / from);
}

}  // namespace

std::optional<FragmentPlace> FragmentFinder::Find(std::uint32_t track, std::uint32_t timescale,
                                                  std::int64_t time) {
  if (time < 0) return std::nullopt;
  std::optional<FragmentPlace> place = BySegmentIndex(track, timescale, time);
  if (!place) place = ByRandomAccess(track, time);
  return place ? place : ByHeaders(track, time);
}

/// The header of a box that begins in front of `end`. The payload is not in hand.
bool FragmentFinder::HeaderAt(std::uint64_t offset, std::uint64_t end, BoxBytes* box) {
  if (offset > end || end - offset < 8) return false;
  const auto seen = static_cast<std::size_t>(std::min<std::uint64_t>(end - offset, 32));
  const unsigned char* bytes = source_->View(offset, seen);
  return bytes != nullptr && ReadBoxAt(bytes, seen, end - offset, box);
}

FragmentFinder::Payload FragmentFinder::PayloadOf(std::uint64_t offset, const BoxBytes& box,
                                                  std::uint64_t most) {
  Payload payload;
  const std::uint64_t from = offset + box.headerSize;
  const auto n = static_cast<std::size_t>(std::min(most, box.size - box.headerSize));
  const unsigned char* bytes = source_->InMemory(from, n);
  std::size_t held = n;
  if (bytes == nullptr) {
    payload.own = NewBytes(n);
    if (payload.own == nullptr) throw std::bad_alloc();
    held = source_->ReadAt(from, payload.own.get(), n);
    bytes = payload.own.get();
  }
  payload.fields = FieldView(bytes, held);
  return payload;
}

/// The fragment at an offset that an index gives; none, and a problem, where there is none.
std::optional<FragmentPlace> FragmentFinder::Taken(FragmentPlace::By by, std::uint64_t offset,
                                                   std::uint32_t track) {
  BoxBytes box;
  if (!HeaderAt(offset, source_->Size(), &box) || box.type != FourCC("moof")) {
    const bool isSegmentIndex = by == FragmentPlace::By::kSegmentIndex;
    problems_->Note(SampleFault::kNoFragmentThere, isSegmentIndex ? FourCC("sidx") : FourCC("tfra"),
                    0, 0, offset);
    return std::nullopt;
  }
  return FragmentPlace{by, offset, DecodeTime(offset, box, track)};
}

std::optional<std::uint64_t> FragmentFinder::DecodeTime(std::uint64_t offset, const BoxBytes& moof,
                                                        std::uint32_t track) {
  const Payload payload = PayloadOf(offset, moof);
  BoxRun trafs(payload.fields);
  for (BoxBytes traf; trafs.Next(&traf);) {
    if (traf.type != FourCC("traf")) continue;
    std::optional<std::uint32_t> id;
    std::optional<std::uint64_t> time;
    BoxRun children(traf.payload);
    for (BoxBytes box; children.Next(&box);) {
      FieldView fields = box.payload;
      const std::uint8_t version = ReadVersionAndFlags(&fields).version;
      if (box.type == FourCC("tfhd") && !id) {
        id = fields.U32();
      } else if (box.type == FourCC("tfdt") && version <= 1 && !time) {
        const std::uint64_t told = version == 1 ? fields.U64() : fields.U32();
        if (fields.Ok()) time = told;
      }
    }
    if (id == track && time) return time;
  }
  return std::nullopt;
}

/// Over the boxes of the file, past what each index names, to the last one that begins in time.
std::optional<FragmentPlace> FragmentFinder::BySegmentIndex(std::uint32_t track,
                                                            std::uint32_t timescale,
                                                            std::int64_t time) {
  std::optional<Stretch> last;
  BoxBytes box;
  for (std::uint64_t at = 0; HeaderAt(at, source_->Size(), &box);) {
    std::uint64_t next = at + box.size;
    if (box.type == FourCC("moof") && !last) break;
    if (box.type == FourCC("sidx")) {
      const Indexed index = ReadIndex(at, box, track, timescale, time);
      if (index.usable && !index.found) break;
      if (index.usable) last = index.found, next = std::max(next, index.end);
    }
    at = next;
  }
  return last ? FirstIn(*last, track, timescale, time) : std::nullopt;
}

FragmentFinder::Indexed FragmentFinder::ReadIndex(std::uint64_t offset, const BoxBytes& box,
                                                  std::uint32_t track, std::uint32_t timescale,
                                                  std::int64_t time) {
  Indexed index;
  Payload payload = PayloadOf(offset, box, kLargestIndex);
  FieldView& fields = payload.fields;
  const std::uint8_t version = ReadVersionAndFlags(&fields).version;
  const std::uint32_t id = fields.U32();
  const std::uint32_t scale = fields.U32();
  std::uint64_t start = version == 0 ? fields.U32() : fields.U64();
  const std::uint64_t firstOffset = version == 0 ? fields.U32() : fields.U64();
  fields.Skip(2);
  const std::uint32_t count = fields.U16();
  if (!fields.Ok() || version > 1 || id != track || scale == 0 || timescale == 0) return index;
  const std::uint64_t size = source_->Size();
  const auto wanted = static_cast<std::uint64_t>(Rescaled(time, timescale, scale));
  Stretch stretch;
  stretch.offset = offset + box.size;
  if (firstOffset > size - stretch.offset) return index;
  stretch.offset += firstOffset;
  index.usable = true;
  for (std::uint32_t i = 0; i < count && stretch.offset <= size; ++i) {
    const std::uint32_t reference = fields.U32();
    const std::uint32_t duration = fields.U32();
    fields.Skip(4);
    if (!fields.Ok()) {
      problems_->Note(SampleFault::kFewerRows, FourCC("sidx"), count, i, offset);
      break;
    }
    stretch.isIndex = (reference & 0x80000000) != 0;
    stretch.size = reference & 0x7FFFFFFF;
    if (start <= wanted) index.found = stretch;
    start += duration;
    stretch.offset += stretch.size;
  }
  index.end = stretch.offset;
  return index;
}

/// The first fragment of a stretch, and of the stretch in it that another index names.
std::optional<FragmentPlace> FragmentFinder::FirstIn(Stretch stretch, std::uint32_t track,
                                                     std::uint32_t timescale, std::int64_t time) {
  BoxBytes box;
  for (int depth = 0; stretch.isIndex && depth < kDeepestIndex; ++depth) {
    if (!HeaderAt(stretch.offset, source_->Size(), &box) || box.type != FourCC("sidx")) break;
    const Indexed index = ReadIndex(stretch.offset, box, track, timescale, time);
    if (!index.found) break;
    stretch = *index.found;
  }
  const std::uint64_t end = std::min(source_->Size(), stretch.offset + stretch.size);
  std::uint64_t at = stretch.offset;
  while (!stretch.isIndex && HeaderAt(at, end, &box) && box.type != FourCC("moof")) at += box.size;
  if (stretch.isIndex || at >= end) at = stretch.offset;  // which holds none
  return Taken(FragmentPlace::By::kSegmentIndex, at, track);
}

std::optional<FragmentPlace> FragmentFinder::ByRandomAccess(std::uint32_t track,
                                                            std::int64_t time) {
  constexpr std::uint64_t kOffsetBox = 16;
  const std::uint64_t size = source_->Size();
  BoxBytes box;
  if (size < kOffsetBox || !HeaderAt(size - kOffsetBox, size, &box)) return std::nullopt;
  if (box.type != FourCC("mfro") || box.size != kOffsetBox) return std::nullopt;
  FieldView told = box.payload;
  told.Skip(4);
  const std::uint64_t back = told.U32();
  if (back > size || !HeaderAt(size - back, size, &box) || box.type != FourCC("mfra")) {
    problems_->Note(SampleFault::kMissing, FourCC("mfra"), 0, 0, size - kOffsetBox);
    return std::nullopt;
  }
  const Payload payload = PayloadOf(size - back, box);
  BoxRun tables(payload.fields);
  for (BoxBytes table; tables.Next(&table);) {
    if (table.type != FourCC("tfra")) continue;
    const std::optional<std::uint64_t> offset = ReadRandomAccess(table.payload, track, time);
    if (offset) return Taken(FragmentPlace::By::kRandomAccess, *offset, track);
  }
  return std::nullopt;
}

/// Where the last sync sample up to `time` is, if the table is about this track.
std::optional<std::uint64_t> FragmentFinder::ReadRandomAccess(FieldView fields, std::uint32_t track,
                                                              std::int64_t time) {
  const bool wide = ReadVersionAndFlags(&fields).version == 1;
  const std::uint32_t id = fields.U32();
  const std::uint32_t lengths = fields.U32();
  const std::uint32_t count = fields.U32();
  if (!fields.Ok() || id != track) return std::nullopt;
  std::optional<std::uint64_t> found;
  std::uint64_t latest = 0;
  const std::size_t numbers = (lengths >> 4 & 3) + (lengths >> 2 & 3) + (lengths & 3) + 3;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint64_t at = Number(&fields, wide ? 8 : 4);
    const std::uint64_t offset = Number(&fields, wide ? 8 : 4);
    fields.Skip(numbers);
    if (!fields.Ok()) {
      problems_->Note(SampleFault::kFewerRows, FourCC("tfra"), count, i);
      break;
    }
    if (at > static_cast<std::uint64_t>(time) || (found && at < latest)) continue;
    latest = at;
    found = offset;
  }
  return found;
}

std::optional<FragmentPlace> FragmentFinder::ByHeaders(std::uint32_t track, std::int64_t time) {
  std::optional<FragmentPlace> last;
  BoxBytes box;
  for (std::uint64_t at = 0; HeaderAt(at, source_->Size(), &box); at += box.size) {
    if (box.type != FourCC("moof")) continue;
    const std::optional<std::uint64_t> start = DecodeTime(at, box, track);
    if (!start) continue;
    if (*start > static_cast<std::uint64_t>(time)) break;
    last = FragmentPlace{FragmentPlace::By::kHeaders, at, start};
  }
  return last;
}

}  // namespace mp4
