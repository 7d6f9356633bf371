#include "tests/complexity/Shapes.h"

#include "tests/FragmentFixtures.h"

namespace complexity {

namespace {

using namespace fixture;

constexpr std::uint32_t kSamplesPerChunk = 8;
constexpr std::uint32_t kSampleBytes = 64;
constexpr std::uint32_t kAllFields = 0xF00;

std::uint32_t ChunkAt(std::uint32_t id, std::uint32_t i) { return 1000 + (2 * i + id) * 4096; }

Track PlainTrack(std::uint32_t id, std::uint32_t n) {
  Track t;
  t.id = id;
  t.handler = id % 2 == 1 ? "vide" : "soun";
  t.format = id % 2 == 1 ? "avc1" : "mp4a";
  t.times = {{n, 100}};
  t.chunks = {{1, kSamplesPerChunk}};
  t.sizes.clear();
  t.offsets.clear();
  for (std::uint32_t i = 0; i < n; ++i) {
    t.sizes.push_back(kSampleBytes + i % 5);
    if (i % kSamplesPerChunk == 0) t.offsets.push_back(ChunkAt(id, i));
    if (id % 2 == 1 && i % 10 == 0) t.sync.push_back(i + 1);
  }
  return t;
}

/// `tracks` tracks of n samples, each passed through `change`.
template <class Change>
Movie Changed(std::uint32_t n, std::uint32_t tracks, Change&& change) {
  std::vector<Track> all;
  for (std::uint32_t id = 1; id <= tracks; ++id) {
    all.push_back(PlainTrack(id, n));
    change(&all.back());
  }
  return {Ftyp("isom") + Moov(all), {}, n};
}

Bytes EmptyBoxes(std::uint32_t n) {
  Bytes boxes;
  for (std::uint32_t i = 0; i < n; ++i) boxes.Append(Box("free"));
  return boxes;
}

/// A movie with two empty tracks, made for fragments.
Movie ForFragments(const Bytes& fragments, std::uint32_t samples) {
  std::vector<Track> tracks = {PlainTrack(1, 0), PlainTrack(2, 0)};
  tracks[0].sync = {1};
  return {Ftyp("isom") + Moov(tracks, Mvex(Trex(1) + Trex(2))), fragments, samples};
}

Bytes OneSampleRun(std::uint32_t i) { return Trun(kAllFields, 1, {100 + i % 2, 50 + i, 0, i}); }

}  // namespace

Movie Sane(std::uint32_t n) {
  return Changed(n, 2, [](Track*) {});
}

Movie Alternating(std::uint32_t n) {
  return Changed(n, 2, [n](Track* t) {
    t->times.clear();
    for (std::uint32_t i = 0; i < n; ++i) t->times.push_back({1, 100 + i % 2});
  });
}

Movie ChunkASample(std::uint32_t n) {
  return Changed(n, 2, [n](Track* t) {
    t->chunks.clear();
    t->offsets.clear();
    for (std::uint32_t i = 0; i < n; ++i) {
      t->chunks.push_back({i + 1, 1});
      t->offsets.push_back(ChunkAt(t->id, i));
    }
  });
}

Movie OneChunk(std::uint32_t n) {
  return Changed(n, 2, [n](Track* t) {
    t->chunks = {{1, n}};
    t->offsets = {1000};
  });
}

Movie EverySampleSync(std::uint32_t n) {
  return Changed(n, 2, [n](Track* t) {
    t->sync.clear();
    for (std::uint32_t i = 1; i <= n; ++i) t->sync.push_back(i);
  });
}

Movie HugeSyncTable(std::uint32_t n) {
  return Changed(n, 2, [n](Track* t) {
    t->sync.clear();
    for (std::uint32_t i = 0; i < 4 * n; ++i) t->sync.push_back(i / 4 + 1);
  });
}

Movie ZeroCounts(std::uint32_t n) {
  return Changed(n, 2, [n](Track* t) {
    t->times.assign(n, Run{0, 100});
    t->times.push_back({n, 100});
  });
}

Movie FallingCounts(std::uint32_t n) {
  return Changed(n, 2, [n](Track* t) {
    t->times.clear();
    for (std::uint32_t i = 0; i < n / 2; ++i) {
      t->times.push_back({4, 100});
      t->times.push_back({static_cast<std::uint32_t>(-2), 100});
    }
  });
}

Movie ManyEdits(std::uint32_t n) {
  return Changed(n, 2, [n](Track* t) {
    for (std::uint32_t i = 0; i < n; ++i) t->edits.push_back({0, static_cast<int>(100 * i)});
  });
}

Movie ManyEmptyEdits(std::uint32_t n) {
  return Changed(n, 2, [n](Track* t) {
    t->edits.assign(n, Edit{1, -1});
    t->edits.push_back({100 * n, 0});
  });
}

Movie EightTracks(std::uint32_t n) {
  return Changed(n, 8, [](Track*) {});
}

Movie ManyTracks(std::uint32_t n) {
  return Changed(4, n, [](Track*) {});
}

Movie ManyEmptyBoxes(std::uint32_t n) {
  const Bytes empty = EmptyBoxes(n);
  const Track t = PlainTrack(1, 8);
  const Bytes stbl = Box("stbl", Stbl(t) + empty);
  const Bytes mdia = Box("mdia", Mdhd() + Hdlr("vide") + empty + Box("minf", empty + Stbl(t)));
  const Bytes trak = Box("trak", Tkhd(1) + empty + mdia);
  const Bytes moov = Box("moov", Mvhd() + empty + trak + Box("udta", empty));
  return {Ftyp("isom") + empty + moov + stbl, empty, 8};
}

Movie ManyFragments(std::uint32_t n) {
  Bytes fragments;
  for (std::uint32_t i = 0; i < n; ++i) {
    Bytes children = Mfhd(i + 1);
    for (const std::uint32_t id : {1u, 2u}) {
      const Bytes run = Trun(0x201, 4, {200, 10 + i % 3, 20, 30, 40});
      children.Append(Traf(Tfhd(0x20000, id) + run));
    }
    fragments.Append(Moof(children));
  }
  return ForFragments(fragments, 4 * n);
}

Movie ManyTinyRuns(std::uint32_t n) {
  Bytes children = Mfhd(1);
  for (const std::uint32_t id : {1u, 2u}) {
    Bytes runs;
    for (std::uint32_t i = 0; i < n; ++i) runs.Append(OneSampleRun(i));
    children.Append(Traf(Tfhd(0, id) + runs));
  }
  return ForFragments(Moof(children), n);
}

Movie ManyTrackFragments(std::uint32_t n) {
  Bytes children = Mfhd(1);
  for (std::uint32_t i = 0; i < n; ++i) {
    children.Append(Traf(Tfhd(0, 1 + i % 2) + OneSampleRun(i)));
  }
  return ForFragments(Moof(children), n / 2);
}

Movie LongRuns(std::uint32_t n) {
  Words words;
  for (std::uint32_t i = 0; i < n; ++i) {
    words.insert(words.end(), {100 + i % 2, 50 + i, (i % 2) << 16, i});
  }
  Bytes children = Mfhd(1);
  for (const std::uint32_t id : {1u, 2u}) {
    children.Append(Traf(Tfhd(0, id) + Trun(kAllFields, n, words)));
  }
  return ForFragments(Moof(children), n);
}

Movie CountedRuns(std::uint32_t n) {
  Bytes children = Mfhd(1);
  for (const std::uint32_t id : {1u, 2u}) {
    Bytes runs;
    for (std::uint32_t i = 0; i < n; ++i) runs.Append(Trun(0, 1000));
    children.Append(Traf(Tfhd(0, id) + runs));
  }
  return ForFragments(Moof(children), 1000 * n);
}

}  // namespace complexity
