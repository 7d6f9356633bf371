#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "boxes/base/Mp4Context.h"
#include "boxes/fragments/BoxMOOF.h"
#include "boxes/movie/BoxMOOV.h"
#include "io/FourCC.h"
#include "io/ScanControl.h"
#include "io/mmBufReader.h"
#include "tests/Bytes.h"
#include "tests/MovieFixtures.h"

/// Fragments as bytes, and movies for them to be merged into.
namespace fixture {

inline Bytes Be32s(const Words& words) {
  Bytes out;
  for (const std::uint32_t word : words) out.Be32(word);
  return out;
}

/// "trex": description index 1, duration 1024, size 200, no sync samples, unless told otherwise.
inline Bytes Trex(std::uint32_t id, std::uint32_t duration = 1024, std::uint32_t size = 200,
                  std::uint32_t flags = 0x10000, std::uint32_t description = 1) {
  return FullBox("trex", 0, 0, Be32s({id, description, duration, size, flags}));
}
inline Bytes Mvex(const Bytes& children) { return Box("mvex", children); }
inline Bytes Mfhd(std::uint32_t sequence) { return FullBox("mfhd", 0, 0, Bytes().Be32(sequence)); }
/// "tfhd" with the fields its flags announce, as they stand in the file.
inline Bytes Tfhd(std::uint32_t flags, std::uint32_t id, const Bytes& fields = {}) {
  return FullBox("tfhd", 0, flags, Bytes().Be32(id) + fields);
}
/// "trun" whose words are the optional header fields and the entries.
inline Bytes Trun(std::uint32_t flags, std::uint32_t count, const Words& words = {}) {
  return FullBox("trun", 0, flags, Bytes().Be32(count) + Be32s(words));
}
inline Bytes Traf(const Bytes& children) { return Box("traf", children); }
inline Bytes Moof(const Bytes& children) { return Box("moof", children); }

/// Reads a box's payload: the bytes of a whole box less its header. The position is relative to the
/// start of the payload.
template <class Box>
struct PayloadRead {
  explicit PayloadRead(const Bytes& box, mp4::ScanControl* scan = nullptr)
      : reader(box.data(), box.size()) {
    reader.AttachScan(scan);
    reader.Skip(8);
    ok = read.ReadData(&reader, static_cast<long long>(box.size()) - 8, nullptr);
    position = reader.GetPos() - 8;
  }
  mmBufReader reader;
  Box read;
  bool ok = false;
  long long position = 0;
};

/// A movie whose tracks have the given tables, ready for fragments. Tracks are assembled by hand,
/// so that only the tables and the merge are at work.
class FragmentedMovie {
 public:
  FragmentedMovie() { moov.movieExtendsBox = std::make_unique<BoxMVEX>(); }

  /// Adds a track with empty tables.
  BoxSTBL& AddTrack(int id, const char (&handler)[5]) {
    record = context.AddTrack(id);
    context.SetCurrentTrack(id);
    record->handlerType = mp4::FourCC(handler);
    record->timescale = 1000;
    auto trak = std::make_unique<BoxTRAK>();
    trak->mediaBox = std::make_unique<BoxMDIA>();
    trak->mediaBox->mediaInformationBox = std::make_unique<BoxMINF>();
    auto tables = std::make_unique<BoxSTBL>();
    tables->timeToSampleBox = std::make_unique<BoxSTTS>();
    tables->sampleToChunkBox = std::make_unique<BoxSTSC>();
    tables->sampleSizeBox = std::make_unique<BoxSTSZ>();
    tables->chunkOffsetBox = std::make_unique<BoxSTCO>(mp4::FourCC("stco"));
    tables->syncSampleBox = std::make_unique<BoxSTSS>();
    BoxSTBL& added = *tables;
    trak->mediaBox->mediaInformationBox->sampleTableBox = std::move(tables);
    moov.tracks[id] = std::move(trak);
    Load(added, Stts({}), Stsc({}), Stsz({}), Stco({}), Stss({}));
    return added;
  }

  /// Reads tables over those of the track added last.
  void Load(BoxSTBL& tables, const Bytes& stts, const Bytes& stsc, const Bytes& stsz,
            const Bytes& stco, const Bytes& stss) {
    ReadInto(tables.timeToSampleBox.get(), stts);
    ReadInto(tables.sampleToChunkBox.get(), stsc);
    ReadInto(tables.sampleSizeBox.get(), stsz);
    ReadInto(tables.chunkOffsetBox.get(), stco);
    ReadInto(tables.syncSampleBox.get(), stss);
  }

  void Extend(const Bytes& trex) {
    auto box = std::make_unique<BoxTREX>();
    ReadInto(box.get(), trex);
    moov.movieExtendsBox->trackExtends.push_back(std::move(box));
  }

  /// Reads a "moof" and merges it.
  void Merge(const Bytes& moof) {
    PayloadRead<BoxMOOF> fragment(moof);
    fragment.read.MergeFragment(&context, &moov);
  }

  Mp4Context context;
  BoxMOOV moov;
  Mp4Context::TRACK* record = nullptr;  ///< of the track added last

 private:
  void ReadInto(BoxBase* box, const Bytes& bytes) {
    mmBufReader reader(bytes.data(), bytes.size());
    reader.Skip(8);
    box->ReadData(&reader, static_cast<long long>(bytes.size()) - 8, &context);
  }
};

/// What can be seen of the tables.
inline Words Sizes(BoxSTBL& tables) {
  Words sizes;
  const auto count = static_cast<int>(tables.sampleSizeBox->GetSampleCount());
  for (int i = 0; i < count; ++i) sizes.push_back(tables.sampleSizeBox->GetSampleSize(i));
  return sizes;
}
/// Decoding times of all samples and the end of the last.
inline std::vector<long long> DecodeTimes(BoxSTBL& tables) {
  std::vector<long long> times;
  const int count = tables.timeToSampleBox->GetTotalSamples();
  for (int i = 0; i <= count; ++i) times.push_back(tables.timeToSampleBox->GetPTS(i));
  return times;
}
inline std::vector<std::uint64_t> Offsets(BoxSTBL& tables) {
  std::vector<std::uint64_t> offsets;
  for (int i = 0; tables.chunkOffsetBox->GetChunkOffset(i) != ~0ULL; ++i) {
    offsets.push_back(tables.chunkOffsetBox->GetChunkOffset(i));
  }
  return offsets;
}
/// 1-based numbers of the sync samples up to sample `last`.
inline Words SyncSamples(BoxSTBL& tables, int last) {
  Words numbers;
  for (int i = 0; tables.syncSampleBox->GetEntryCount() > 0 && i < last; ++i) {
    const auto before = tables.syncSampleBox->GetSampleIndexBeforeThis(i);
    if (before == static_cast<std::uint32_t>(i)) numbers.push_back(before + 1);
  }
  // The walk gives 0 for samples before the first entry, sync sample or not.
  if (!numbers.empty() && tables.syncSampleBox->GetSampleIndex(0) != 1 && numbers[0] == 1) {
    numbers.erase(numbers.begin());
  }
  return numbers;
}

}  // namespace fixture
