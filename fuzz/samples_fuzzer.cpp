// The sample index over any bytes: what a walk gives must be what every look-up gives, and a source
// that lies in memory must list what one that is read lists.
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz/BoxMutator.h"
#include "io/CallbackSource.h"
#include "io/MemorySource.h"
#include "samples/Movie.h"
#include "samples/MovieCursor.h"
#include "samples/SampleColumns.h"
#include "samples/SampleCursor.h"

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  return fuzz::MutateBoxes(data, size, most, seed);
}

namespace {

constexpr std::size_t kMostSamples = 300;
constexpr std::size_t kMostTracks = 4;

struct Bytes {
  const std::uint8_t* data;
  std::size_t size;
};
std::int64_t SizeOf(void* user) {
  return static_cast<std::int64_t>(static_cast<const Bytes*>(user)->size);
}
std::int64_t ReadAt(void* user, std::uint64_t offset, void* bytes, std::size_t n) {
  std::memcpy(bytes, static_cast<const Bytes*>(user)->data + offset, n);
  return static_cast<std::int64_t>(n);
}

void Demand(bool holds) {
  if (!holds) __builtin_trap();
}

bool Same(const mp4::Sample& a, const mp4::Sample& b) {
  return a.number == b.number && a.offset == b.offset && a.decodeTime == b.decodeTime &&
         a.compositionTime == b.compositionTime && a.size == b.size && a.duration == b.duration &&
         a.description == b.description && a.fragment == b.fragment && a.sync == b.sync &&
         a.isProtected == b.isProtected && a.depends == b.depends && a.outside == b.outside &&
         a.elsewhere == b.elsewhere && a.partialSync == b.partialSync;
}

std::vector<mp4::Sample> FirstSamples(mp4::Track* track) {
  std::vector<mp4::Sample> samples(kMostSamples);
  mp4::SampleCursor cursor(track);
  samples.resize(cursor.Next(samples.data(), samples.size()));
  return samples;
}

/// Times of real files, for which sums do not wrap.
bool AreSane(const std::vector<mp4::Sample>& samples) {
  for (const mp4::Sample& sample : samples) {
    if (sample.decodeTime < 0 || sample.decodeTime > std::int64_t{1} << 60) return false;
  }
  return true;
}

/// Look-ups by time and sync against all samples.
void CompareSearches(mp4::Track* track, const std::vector<mp4::Sample>& samples) {
  std::uint64_t sync = 0;
  for (const mp4::Sample& asked : samples) {
    if (asked.sync == mp4::Told::kYes) sync = asked.number;
    Demand(track->SyncAtOrBefore(asked.number) == sync);
    if (asked.number % 7 != 1) continue;
    for (const std::int64_t time : {asked.decodeTime, asked.compositionTime + 1}) {
      std::uint64_t decoded = 0;
      const mp4::Sample* composed = nullptr;
      for (const mp4::Sample& sample : samples) {
        if (sample.decodeTime <= time) decoded = sample.number;
        if (sample.compositionTime > time) continue;
        if (composed == nullptr || sample.compositionTime >= composed->compositionTime) {
          composed = &sample;
        }
      }
      Demand(track->NumberAtDecodeTime(time) == decoded);
      Demand(track->NumberAtCompositionTime(time) == (composed != nullptr ? composed->number : 0));
    }
  }
}

void CompareLookUps(mp4::Track* track, const std::vector<mp4::Sample>& samples) {
  const std::uint64_t count = track->SampleCount();
  Demand(samples.size() == std::min<std::uint64_t>(count, kMostSamples));
  for (std::size_t i = 0; i < samples.size(); i += 1 + i / 8) {
    mp4::Sample found;
    Demand(track->At(i + 1, &found) && Same(found, samples[i]));
  }
  mp4::Sample last;
  Demand(track->At(count, &last) == (count > 0) && !track->At(count + 1, &last));
  track->NumberAtPresentationTime(12345);
  track->NumberAtDecodeTime(INT64_MAX);
  track->NumberAtCompositionTime(INT64_MIN);
  track->ShadowOf(count);
  std::uint64_t offsets[16];
  mp4::SampleColumns columns;
  columns.offsets = offsets;
  const std::size_t n = mp4::FillColumns(track, 1, 16, columns);
  for (std::size_t i = 0; i < n; ++i) Demand(offsets[i] == samples[i].offset);
  if (count <= kMostSamples && AreSane(samples)) CompareSearches(track, samples);
}

void WalkTogether(mp4::Movie* movie) {
  for (const auto order : {mp4::MovieCursor::Order::kFile, mp4::MovieCursor::Order::kDecodeTime}) {
    mp4::MovieCursor cursor(movie, order);
    std::size_t track = 0;
    mp4::Sample sample;
    for (std::size_t i = 0; i < kMostSamples && cursor.Next(&track, &sample); ++i) {
      Demand(track < movie->Tracks().size());
    }
  }
}

/// The fragment for a time, which has to be one.
void CompareFragments(const mp4::Track& track, const Bytes& file, mp4::Movie* inMemory,
                      mp4::Movie* read) {
  for (const std::int64_t time : {std::int64_t{0}, std::int64_t{5000}, INT64_MAX}) {
    const auto place = inMemory->FragmentAt(track, time);
    const auto other = read->FragmentAt(track, time);
    Demand(place.has_value() == other.has_value());
    if (!place) continue;
    Demand(place->offset == other->offset && place->decodeTime == other->decodeTime);
    Demand(place->offset <= file.size - 8 &&
           std::memcmp(file.data + place->offset + 4, "moof", 4) == 0);
  }
}

void Compare(const Bytes& file, mp4::Movie* inMemory, mp4::Movie* read) {
  inMemory->ReadFragments();
  read->ReadFragments();
  Demand(inMemory->Tracks().size() == read->Tracks().size());
  for (std::size_t i = 0; i < inMemory->Tracks().size() && i < kMostTracks; ++i) {
    mp4::Track* track = inMemory->Tracks()[i].get();
    mp4::Track* other = read->Tracks()[i].get();
    const std::vector<mp4::Sample> samples = FirstSamples(track);
    const std::vector<mp4::Sample> others = FirstSamples(other);
    Demand(samples.size() == others.size() && track->SampleCount() == other->SampleCount());
    for (std::size_t k = 0; k < samples.size(); ++k) Demand(Same(samples[k], others[k]));
    CompareLookUps(track, samples);
    CompareFragments(*track, file, inMemory, read);
    Demand(track->Problems().Kept().size() == other->Problems().Kept().size());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes{data, size};
  mp4::MemorySource memory(data, size);
  mp4::CallbackSource callbacks(ReadAt, SizeOf, &bytes);
  mp4::Movie movie(&memory);
  mp4::Movie other(&callbacks);
  Compare(bytes, &movie, &other);
  if (movie.Tracks().size() <= kMostTracks) WalkTogether(&movie);
  // The same bytes as a segment and its initialization.
  mp4::Movie segment(&memory, &memory);
  mp4::Movie otherSegment(&callbacks, &memory);
  Compare(bytes, &segment, &otherSegment);
  return 0;
}
