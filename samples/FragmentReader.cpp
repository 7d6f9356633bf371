#include "samples/FragmentReader.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "io/FourCC.h"

namespace mp4 {

namespace {

/// PIFF's sample encryption box.
constexpr unsigned char kSampleEncryption[16] = {0xA2, 0x39, 0x4F, 0x52, 0x5A, 0x9B, 0x4F, 0x14,
                                                 0xA2, 0x44, 0x6C, 0x42, 0x7C, 0x64, 0x8D, 0xF4};

bool IsNotSync(std::uint32_t flags) { return (flags >> 16 & 1) != 0; }

/// The boxes of a track fragment that count.
struct Boxes {
  std::optional<BoxBytes> header, time, map, descriptions, depends;
  bool encryption = false;
  bool runs = false;
  std::uint64_t samples = 0;  ///< as the runs claim
};

bool IsGuard(const BoxBytes& box) {
  FieldView fields = box.payload;
  fields.Skip(4);
  return fields.Type() == FourCC("seig");
}

std::uint32_t SamplesOf(FieldView run) {
  run.Skip(4);
  return run.U32();
}

void KeepFirst(std::optional<BoxBytes>* kept, const BoxBytes& box) {
  if (!*kept) *kept = box;
}

Boxes FindBoxes(FieldView payload) {
  Boxes found;
  BoxRun children(payload);
  for (BoxBytes box; children.Next(&box);) {
    switch (box.type) {
      case FourCC("tfhd"):
        KeepFirst(&found.header, box);
        break;
      case FourCC("tfdt"):
        KeepFirst(&found.time, box);
        break;
      case FourCC("trun"):
        found.runs = true;
        found.samples += SamplesOf(box.payload);
        break;
      case FourCC("sdtp"):
        KeepFirst(&found.depends, box);
        break;
      case FourCC("senc"):
        found.encryption = true;
        break;
      case FourCC("uuid"):
        if (std::memcmp(box.userType, kSampleEncryption, 16) == 0) found.encryption = true;
        break;
      case FourCC("sbgp"):
      case FourCC("csgp"):
        if (IsGuard(box)) KeepFirst(&found.map, box);
        break;
      case FourCC("sgpd"):
        if (IsGuard(box)) KeepFirst(&found.descriptions, box);
        break;
      default:
        break;
    }
  }
  return found;
}

}  // namespace

struct FragmentReader::TrackFragment {
  FragmentTrack* track = nullptr;
  Boxes boxes;
  std::optional<std::uint64_t> base;
  std::optional<std::uint64_t> at;  ///< where the next run without an offset begins
  std::uint64_t samples = 0;        ///< of its runs so far, listed or not
  std::optional<std::uint32_t> description, duration, size, flags;

  std::shared_ptr<const GuardMap> guards;  ///< null when one answer holds for all
  Told same = Told::kUnknown;              ///< that answer
  Told byDefault = Told::kUnknown;
  const unsigned char* depends = nullptr;
  std::uint64_t dependsCount = 0;
};

void FragmentReader::Read(FieldView payload, std::uint64_t offset, std::uint32_t fragment) {
  moof_ = offset;
  number_ = fragment;
  dataEnd_ = offset;
  BoxRun children(payload);
  for (BoxBytes box; children.Next(&box);) {
    if (box.type == FourCC("traf")) ReadTrackFragment(box.payload);
  }
}

void FragmentReader::ReadTrackFragment(FieldView payload) {
  TrackFragment traf;
  traf.boxes = FindBoxes(payload);
  FieldView header = traf.boxes.header ? traf.boxes.header->payload : FieldView();
  const std::uint32_t flags = ReadVersionAndFlags(&header).flags;
  const std::uint32_t id = header.U32();
  const auto given = [&](std::uint32_t bit) -> std::optional<std::uint32_t> {
    if ((flags & bit) == 0) return std::nullopt;
    return header.U32();
  };
  if ((flags & 0x1) != 0) traf.base = header.U64();
  traf.description = given(0x2);
  traf.duration = given(0x8);
  traf.size = given(0x10);
  traf.flags = given(0x20);
  if (!header.Ok() || !traf.boxes.header) {
    const bool there = traf.boxes.header.has_value();
    problems_->Note(there ? SampleFault::kCut : SampleFault::kMissing, FourCC("tfhd"), 0, 0, moof_);
    if (traf.boxes.runs) dataEnd_.reset();
    return;
  }
  FragmentTrack* track = traf.track = tracks_->TrackOf(id);
  if (track == nullptr) {
    if (traf.boxes.runs) dataEnd_.reset();
    return;
  }
  if (track->defaults) {
    const FragmentDefaults& defaults = *track->defaults;
    if (!traf.description) traf.description = defaults.description;
    if (!traf.duration) traf.duration = defaults.duration;
    if (!traf.size) traf.size = defaults.size;
    if (!traf.flags) traf.flags = defaults.flags;
  } else if (!track->noDefaultsNoted) {
    track->noDefaultsNoted = true;
    track->problems->Note(SampleFault::kNoDefaults, FourCC("trex"));
  }
  if (!traf.description && track->descriptions->size() == 1) traf.description = 1;
  if (traf.boxes.time) {
    FieldView time = traf.boxes.time->payload;
    const std::uint8_t version = ReadVersionAndFlags(&time).version;
    const std::uint64_t value = version == 1 ? time.U64() : time.U32();
    if (version <= 1 && time.Ok()) {
      track->time = value;
    } else {
      track->problems->Note(SampleFault::kCut, FourCC("tfdt"), 0, 0, moof_);
    }
  }
  if (!traf.base) traf.base = (flags & 0x020000) != 0 ? moof_ : dataEnd_;
  if ((flags & 0x010000) != 0) {
    if (traf.boxes.runs)
      track->problems->Note(SampleFault::kRunsInEmpty, FourCC("trun"), 0, 0, moof_);
    track->time += traf.duration.value_or(0);
    return;
  }
  Guards(&traf);
  traf.at = traf.base;
  BoxRun children(payload);
  for (BoxBytes box; children.Next(&box);) {
    if (box.type != FourCC("trun")) continue;
    ReadRun(&traf, box.payload);
    dataEnd_ = traf.at;
  }
}

/// What holds outside of groups, and the groups of this fragment.
void FragmentReader::Guards(TrackFragment* traf) {
  traf->byDefault = NamedBy(*traf->track->descriptions, traf->description.value_or(0)).byDefault;
  if (traf->byDefault == Told::kUnknown && traf->boxes.encryption) traf->byDefault = Told::kYes;
  traf->same = traf->byDefault;
  const GuardDescriptions* movie = traf->track->movieGuards;
  const Boxes& boxes = traf->boxes;
  if (boxes.map || boxes.descriptions || (movie != nullptr && movie->byDefault != 0)) {
    GuardDescriptions own;
    if (boxes.descriptions) own = ReadGuardDescriptions(boxes.descriptions->payload);
    GroupStretches map;
    if (boxes.map) {
      map = boxes.map->type == FourCC("sbgp") ? ReadSampleToGroup(boxes.map->payload)
                                              : ReadCompactSampleToGroup(boxes.map->payload, true);
      if (map.cut) {
        traf->track->problems->Note(SampleFault::kGroupsUnreadable, boxes.map->type, 0, 0, moof_);
      }
    }
    GuardMap guards = GuardMap::Of(map, own.there ? &own : nullptr, movie, true);
    if (guards.IsSame(boxes.samples)) {
      traf->same = ToldBy(guards.At(0), traf->byDefault);
    } else {
      traf->guards = std::make_shared<const GuardMap>(std::move(guards));
    }
  }
  if (boxes.depends) {
    FieldView fields = boxes.depends->payload;
    fields.Skip(4);
    const std::size_t n = fields.Left();
    const unsigned char* bytes = fields.Bytes(n);
    traf->depends = keep_ != nullptr ? keep_->Keep(bytes, n) : bytes;
    traf->dependsCount = n;
  }
}

void FragmentReader::ReadRun(TrackFragment* traf, FieldView fields) {
  const std::uint32_t flags = ReadVersionAndFlags(&fields).flags;
  FragmentRun run;
  const std::uint32_t says = fields.U32();
  const std::int64_t dataOffset = (flags & 0x1) != 0 ? fields.S32() : 0;
  run.firstTold = (flags & 0x4) != 0;
  if (run.firstTold) run.firstFlags = fields.U32();
  if (!fields.Ok()) {
    traf->track->problems->Note(SampleFault::kCut, FourCC("trun"), 0, 0, moof_);
    traf->at.reset();
    return;
  }
  if ((flags & 0x1) != 0) {
    traf->at = traf->base;
    if (traf->at) *traf->at += static_cast<std::uint64_t>(dataOffset);
  }
  run.fields = static_cast<std::uint8_t>(flags >> 8 & 15);
  run.count = says;
  if (const std::size_t width = run.Width(); width != 0 && says > fields.Left() / width) {
    run.count = static_cast<std::uint32_t>(fields.Left() / width);
    traf->track->problems->Note(SampleFault::kFewerRows, FourCC("trun"), says, run.count, moof_);
  }
  run.rows = fields.Bytes(run.count * run.Width());
  run.duration = traf->duration.value_or(0);
  run.size = traf->size.value_or(0);
  run.flags = traf->flags.value_or(0);
  run.flagsTold = traf->flags.has_value();
  run.description = traf->description.value_or(0);
  run.fragment = number_;
  // The flags of a row win over those of the first sample, and those over the defaults.
  if ((run.fields & FragmentRun::kFlags) != 0) {
    run.firstTold = run.flagsTold = true;
  } else if (!run.firstTold) {
    run.firstFlags = run.flags;
    run.firstTold = run.flagsTold;
  }
  const bool sized = traf->size.has_value() || (run.fields & FragmentRun::kSize) != 0;
  const bool listed = traf->at.has_value() && sized;
  if (!listed && run.count > 0) {
    traf->track->problems->Note(SampleFault::kPlaceUnknown, FourCC("trun"), run.count, 0, moof_);
    traf->at.reset();
  }
  if (run.count > 0) AddRuns(traf, run, listed);
}

namespace {

/// Sums over the rows of a run, and what they say of sync samples.
struct RunTotals {
  std::uint64_t duration = 0;
  std::uint64_t size = 0;
  std::int32_t leastOffset = 0;
  std::int32_t greatestOffset = 0;
  bool anySync = false;
};

RunTotals TotalsOf(const FragmentRun& run) {
  RunTotals totals;
  const std::uint64_t count = run.count;
  const std::size_t width = run.Width();
  const unsigned char* field = run.rows;
  const unsigned char* end = run.rows + count * width;
  if ((run.fields & FragmentRun::kDuration) != 0) {
    for (const unsigned char* p = field; p < end; p += width) totals.duration += LoadBe32(p);
    field += 4;
  } else {
    totals.duration = count * run.duration;
  }
  if ((run.fields & FragmentRun::kSize) != 0) {
    for (const unsigned char* p = field; p < end; p += width) totals.size += LoadBe32(p);
    field += 4;
  } else {
    totals.size = count * run.size;
  }
  if ((run.fields & FragmentRun::kFlags) != 0) {
    std::uint32_t all = ~0U;
    for (const unsigned char* p = field; p < end; p += width) all &= LoadBe32(p);
    totals.anySync = !IsNotSync(all);
    field += 4;
  } else {
    totals.anySync = (run.firstTold && !IsNotSync(run.firstFlags)) ||
                     (count > 1 && run.flagsTold && !IsNotSync(run.flags));
  }
  if ((run.fields & FragmentRun::kOffset) != 0) {
    for (const unsigned char* p = field; p < end; p += width) {
      const auto offset = static_cast<std::int32_t>(LoadBe32(p));
      totals.leastOffset = std::min(totals.leastOffset, offset);
      totals.greatestOffset = std::max(totals.greatestOffset, offset);
    }
  }
  return totals;
}

/// A time behind which no sample of the run is composed; times that wrap are behind everything.
std::int64_t ComposedBy(const FragmentRun& run, const RunTotals& totals) {
  constexpr std::int64_t kLatest = std::numeric_limits<std::int64_t>::max();
  constexpr std::uint64_t kFar = std::uint64_t{1} << 62;
  if (run.decodeTime >= kFar || totals.duration >= kFar - run.decodeTime) return kLatest;
  return static_cast<std::int64_t>(run.decodeTime + totals.duration) + totals.greatestOffset;
}

}  // namespace

std::uint32_t FragmentReader::ExtraFor(TrackFragment* traf, FragmentRun* run) {
  run->isProtected = traf->same;
  if (traf->guards == nullptr && traf->depends == nullptr) return 0;
  FragmentRuns& runs = traf->track->runs;
  FragmentExtra extra;
  extra.guards = traf->guards;
  extra.shift = traf->samples - (runs.first + runs.samples);
  extra.depends = traf->depends;
  extra.dependsCount = traf->dependsCount;
  extra.byDefault = traf->byDefault;
  runs.extras.push_back(std::move(extra));
  return static_cast<std::uint32_t>(runs.extras.size());
}

/// Adds a run in pieces whose rows are soon summed up.
void FragmentReader::AddRuns(TrackFragment* traf, FragmentRun run, bool listed) {
  FragmentTrack* track = traf->track;
  FragmentRuns& runs = track->runs;
  const std::size_t width = run.Width();
  if (listed) {
    run.extra = ExtraFor(traf, &run);
    if (keep_ != nullptr) run.rows = keep_->Keep(run.rows, run.count * width);
  }
  traf->samples += run.count;
  for (std::uint32_t left = run.count; left > 0; left -= run.count) {
    run.count = width != 0 ? std::min(left, kRunRows) : left;
    const RunTotals totals = TotalsOf(run);
    if (listed) {
      run.firstSample = runs.first + runs.samples;
      run.decodeTime = track->time;
      run.offset = *traf->at;
      const auto index = static_cast<std::uint32_t>(runs.runs.size());
      run.syncRun = totals.anySync ? index + 1 : index > 0 ? runs.runs.back().syncRun : 0;
      if (index > 0 && run.decodeTime < runs.endTime) runs.timesRise = false;
      run.composedBy = ComposedBy(run, totals);
      if (index > 0) run.composedBy = std::max(run.composedBy, runs.runs.back().composedBy);
      runs.runs.push_back(run);
      runs.samples += run.count;
      runs.leastOffset = std::min(runs.leastOffset, totals.leastOffset);
      runs.greatestOffset = std::max(runs.greatestOffset, totals.greatestOffset);
      *traf->at += totals.size;
    }
    track->time += totals.duration;
    if (listed) runs.endTime = track->time;
    if (width != 0) run.rows += run.count * width;
    run.firstFlags = run.flags;
    run.firstTold = run.flagsTold;
  }
}

}  // namespace mp4
