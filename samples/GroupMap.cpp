#include "samples/GroupMap.h"

#include <algorithm>

namespace mp4 {

namespace {

/// Bytes of a "seig" entry that says itself how long it is; 0 when it is cut.
std::size_t LengthOfGuard(const FieldView& at) {
  FieldView entry = at;
  const std::size_t start = entry.At();
  const std::uint8_t first = entry.U8();
  entry.Skip(1);
  const std::uint8_t isProtected = entry.U8();
  if ((first & 0x80) != 0) {
    for (std::uint32_t keys = entry.U16(); keys > 0 && entry.Ok(); --keys) {
      const std::uint8_t vector = entry.U8();
      entry.Skip(16);
      if (vector == 0) entry.Skip(entry.U8());
    }
  } else {
    const std::uint8_t vector = entry.U8();
    entry.Skip(16);
    if (isProtected == 1 && vector == 0) entry.Skip(entry.U8());
  }
  return entry.Ok() ? entry.At() - start : 0;
}

Guard GuardOf(const unsigned char* entry, std::size_t n) {
  if (n < 3) return Guard::kUnreadable;
  return entry[2] != 0 ? Guard::kProtected : Guard::kClear;
}

/// How the lengths of entries are told.
enum class Lengths { kByEntry, kEach, kSame };

/// Reads entries up to the end or the first that is cut. Whether all were whole.
bool TakeEntries(FieldView* fields, std::uint32_t count, Lengths lengths, std::uint32_t same,
                 std::vector<Guard>* entries) {
  for (std::uint32_t i = 0; i < count; ++i) {
    std::size_t length = same;
    if (lengths == Lengths::kEach) {
      if (fields->Left() < 4) return false;
      length = fields->U32();
    } else if (lengths == Lengths::kByEntry) {
      length = LengthOfGuard(*fields);
      if (length == 0) return false;
    }
    const std::size_t held = std::min(length, fields->Left());
    const unsigned char* entry = fields->Bytes(held);
    if (held < length) {
      // Its flag may be in hand.
      if (held >= 3) entries->push_back(GuardOf(entry, held));
      return false;
    }
    entries->push_back(GuardOf(entry, length));
  }
  return true;
}

}  // namespace

GuardDescriptions ReadGuardDescriptions(FieldView payload) {
  GuardDescriptions read;
  FieldView fields = payload;
  const std::uint8_t version = ReadVersionAndFlags(&fields).version;
  fields.Skip(4);  // grouping type
  const std::uint32_t length = version >= 1 ? fields.U32() : 0;
  const std::uint32_t byDefault = version >= 2 ? fields.U32() : 0;
  const std::uint32_t count = fields.U32();
  read.there = true;
  read.byDefault = byDefault;
  if (!fields.Ok()) return read;
  const Lengths lengths = version == 0  ? Lengths::kByEntry
                          : length == 0 ? Lengths::kEach
                                        : Lengths::kSame;
  const bool whole = TakeEntries(&fields, count, lengths, length, &read.entries);
  if (version < 2 || (whole && fields.Left() == 0)) return read;
  // The 2015 edition gave the default length to version 1 alone.
  FieldView older = payload;
  older.Skip(8);
  const std::uint32_t olderDefault = older.U32();
  const std::uint32_t olderCount = older.U32();
  std::vector<Guard> entries;
  if (olderCount > 0 && older.Ok() &&
      TakeEntries(&older, olderCount, Lengths::kByEntry, 0, &entries) && older.Left() == 0) {
    read.entries = std::move(entries);
    read.byDefault = olderDefault;
  }
  return read;
}

GroupStretches ReadSampleToGroup(FieldView fields) {
  GroupStretches map;
  map.there = true;
  const std::uint8_t version = ReadVersionAndFlags(&fields).version;
  fields.Skip(version == 1 ? 8 : 4);
  const std::uint32_t count = fields.U32();
  map.cut = !fields.Ok() || count > fields.Left() / 8;
  const std::size_t rows = std::min<std::size_t>(count, fields.Left() / 8);
  for (std::size_t row = 0; fields.Ok() && row < rows; ++row) {
    const std::uint32_t samples = fields.U32();
    const std::uint32_t index = fields.U32();
    if (samples == 0) continue;
    map.stretches.push_back({samples, static_cast<std::uint32_t>(map.indexes.size()), 1});
    map.indexes.push_back(index);
  }
  return map;
}

namespace {

/// Numbers of 4, 8, 16 or 32 bits one after the other, high nibble first.
class Nibbles {
 public:
  Nibbles(const unsigned char* bytes, std::size_t n)
      : bytes_(bytes), nibbles_(std::uint64_t{n} * 2) {}
  bool Take(unsigned bits, std::uint32_t* value) {
    const unsigned n = bits / 4;
    if (nibbles_ - at_ < n) return false;
    *value = 0;
    for (unsigned i = 0; i < n; ++i, ++at_) {
      const unsigned byte = bytes_[at_ / 2];
      *value = *value << 4 | (at_ % 2 == 0 ? byte >> 4 : byte & 15U);
    }
    return true;
  }

 private:
  const unsigned char* bytes_;
  std::uint64_t nibbles_;
  std::uint64_t at_ = 0;
};

}  // namespace

GroupStretches ReadCompactSampleToGroup(FieldView fields, bool inFragment) {
  GroupStretches map;
  map.there = true;
  const std::uint32_t flags = ReadVersionAndFlags(&fields).flags;
  const unsigned indexBits = 4U << (flags & 3);
  const unsigned countBits = 4U << (flags >> 2 & 3);
  const unsigned patternBits = 4U << (flags >> 4 & 3);
  const bool markedOwn = inFragment && (flags & 0x80) != 0;
  fields.Skip((flags & 0x40) != 0 ? 8 : 4);
  const std::uint32_t count = fields.U32();
  const std::size_t left = fields.Left();
  map.cut = true;
  if (!fields.Ok() || std::uint64_t{count} * (countBits + patternBits) > std::uint64_t{left} * 8) {
    return map;  // the indexes stand behind all patterns: none is in hand
  }
  Nibbles patterns(fields.Bytes(left), left);
  Nibbles indexes = patterns;
  std::uint32_t length = 0;
  std::uint32_t samples = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!indexes.Take(patternBits, &length) || !indexes.Take(countBits, &samples)) return map;
  }
  const std::uint32_t high = 1U << (indexBits - 1);
  for (std::uint32_t i = 0; i < count; ++i) {
    patterns.Take(patternBits, &length);
    patterns.Take(countBits, &samples);
    if (length == 0 && samples == 0) continue;
    if (length == 0) return map;  // nothing to repeat
    const auto first = static_cast<std::uint32_t>(map.indexes.size());
    std::uint32_t held = 0;
    for (std::uint32_t index = 0; held < length && indexes.Take(indexBits, &index); ++held) {
      const bool own = markedOwn && (index & high) != 0;
      map.indexes.push_back(own ? (index & (high - 1)) + 0x10000 : index);
    }
    if (held < length) {
      // As far as no sample needs an index that is missing.
      if (held > 0) map.stretches.push_back({std::min(samples, held), first, held});
      return map;
    }
    if (samples > 0) map.stretches.push_back({samples, first, length});
  }
  map.cut = false;
  return map;
}

namespace {

/// The answer for samples that no map names.
Guard Unnamed(const GuardDescriptions* own, const GuardDescriptions* movie, bool inFragment) {
  if (inFragment && own != nullptr && own->byDefault != 0) {
    const std::uint32_t index = own->byDefault;
    return own->At(index > 0x10000 ? index - 0x10000 : index);
  }
  if (movie != nullptr && movie->byDefault != 0) return movie->At(movie->byDefault);
  return Guard::kNone;
}

Guard Named(std::uint32_t index, const GuardDescriptions* own, const GuardDescriptions* movie,
            bool inFragment) {
  if (index == 0) return Guard::kNone;
  const bool isOwn = inFragment && index > 0x10000;
  const GuardDescriptions* table = isOwn ? own : movie;
  if (table == nullptr) return Guard::kUnreadable;
  return table->At(isOwn ? index - 0x10000 : index);
}

}  // namespace

void GuardMap::Add(std::uint64_t samples, const std::vector<Guard>& pattern) {
  const std::uint64_t start = StartOf(stretches_.size());
  const bool same = std::all_of(pattern.begin(), pattern.end(),
                                [&](Guard guard) { return guard == pattern.front(); });
  if (same && !stretches_.empty() && stretches_.back().length == 1 &&
      patterns_.back() == pattern.front()) {
    stretches_.back().end += samples;
    return;
  }
  const std::size_t length = same ? 1 : pattern.size();
  stretches_.push_back({start + samples, static_cast<std::uint32_t>(patterns_.size()),
                        static_cast<std::uint32_t>(length)});
  patterns_.insert(patterns_.end(), pattern.begin(),
                   pattern.begin() + static_cast<std::ptrdiff_t>(length));
}

GuardMap GuardMap::Of(const GroupStretches& map, const GuardDescriptions* own,
                      const GuardDescriptions* movie, bool inFragment) {
  GuardMap guards;
  guards.rest_ = Unnamed(own, movie, inFragment);
  if (map.cut && guards.rest_ != Guard::kProtected) guards.rest_ = Guard::kUnreadable;
  std::vector<Guard> pattern;
  for (const GroupStretches::Stretch& stretch : map.stretches) {
    pattern.clear();
    for (std::uint32_t i = 0; i < stretch.length; ++i) {
      pattern.push_back(Named(map.indexes[stretch.pattern + i], own, movie, inFragment));
    }
    guards.Add(stretch.samples, pattern);
  }
  return guards;
}

Guard GuardMap::At(std::uint64_t index) const {
  std::uint64_t same = 0;
  return At(index, &same);
}

Guard GuardMap::Find(std::uint64_t index, std::uint64_t* same) const {
  const auto after = [](std::uint64_t value, const Stretch& s) { return value < s.end; };
  const auto stretch = std::upper_bound(stretches_.begin(), stretches_.end(), index, after);
  if (stretch == stretches_.end()) {
    *same = ~std::uint64_t{0} - index;
    return rest_;
  }
  const std::uint64_t start = StartOf(static_cast<std::size_t>(stretch - stretches_.begin()));
  *same = stretch->length == 1 ? stretch->end - index : 1;
  return patterns_[stretch->pattern + static_cast<std::size_t>((index - start) % stretch->length)];
}

bool GuardMap::IsSame(std::uint64_t samples) const {
  std::uint64_t same = 0;
  const Guard first = At(0, &same);
  for (std::uint64_t at = same; at < samples; at += same) {
    if (At(at, &same) != first) return false;
  }
  return true;
}

}  // namespace mp4
