#pragma once

#include <ostream>
#include <vector>

#include "io/MemorySource.h"
#include "samples/Movie.h"
#include "samples/SampleCursor.h"
#include "tests/Bytes.h"
#include "tests/MovieFixtures.h"

/// Movies in memory and what the index says of them.
namespace fixture {

/// A movie over bytes that it keeps, with an initialization segment or without.
struct OpenMovie {
  explicit OpenMovie(const Bytes& file) : bytes(file), source(bytes.data(), bytes.size()) {
    movie = std::make_unique<mp4::Movie>(&source);
  }
  OpenMovie(const Bytes& file, const Bytes& initialization)
      : bytes(file),
        initBytes(initialization),
        source(bytes.data(), bytes.size()),
        init(initBytes.data(), initBytes.size()) {
    movie = std::make_unique<mp4::Movie>(&source, &init);
  }
  mp4::Track& Only() { return *movie->Tracks().at(0); }

  Bytes bytes, initBytes;
  mp4::MemorySource source;
  mp4::MemorySource init{nullptr, 0};
  std::unique_ptr<mp4::Movie> movie;
};

inline std::vector<mp4::Sample> AllSamples(mp4::Track* track) {
  std::vector<mp4::Sample> samples;
  mp4::SampleCursor cursor(track);
  for (mp4::Sample sample; cursor.Next(&sample);) samples.push_back(sample);
  return samples;
}

/// One field of every sample: Column(track, &mp4::Sample::offset).
template <class T>
std::vector<T> Column(mp4::Track& track, T mp4::Sample::*field) {
  std::vector<T> column;
  for (const mp4::Sample& sample : AllSamples(&track)) column.push_back(sample.*field);
  return column;
}

inline bool Has(const mp4::SampleProblems& problems, mp4::SampleFault fault, std::uint32_t box) {
  for (const mp4::SampleProblem& problem : problems.Kept()) {
    if (problem.fault == fault && problem.box == box) return true;
  }
  return false;
}

using Numbers = std::vector<std::uint64_t>;
using TimeList = std::vector<std::int64_t>;

using Tolds = std::vector<mp4::Told>;
constexpr mp4::Told kYes = mp4::Told::kYes;
constexpr mp4::Told kNo = mp4::Told::kNo;

/// A sample table whose boxes a test gives one by one, in a movie of one track behind a media data
/// box that makes the file 10,000 bytes and more.
struct TableMovie {
  std::string handler = "vide";
  Bytes stsd = Stsd(VisualEntry("avc1"));
  Bytes stts = Stts({{4, 100}});
  Bytes stsc = Stsc({{1, 1}});
  Bytes stsz = Stsz({10, 20, 30, 40});
  Bytes stco = Stco({1000, 2000, 3000, 4000});
  Bytes more;    ///< further boxes of the table
  Bytes edts;    ///< before the media
  Bytes mvex;    ///< behind the tracks
  Bytes behind;  ///< behind the movie box
  Bytes dinf = Dinf();

  Bytes Trak(std::uint32_t id = 1) const {
    const Bytes stbl = Box("stbl", stsd + stts + stsc + stsz + stco + more);
    const Bytes minf = Box("minf", (handler == "soun" ? Smhd() : Vmhd()) + dinf + stbl);
    return Box("trak", Tkhd(id) + edts + Box("mdia", Mdhd(1000, 400) + Hdlr(handler) + minf));
  }
  Bytes File() const {
    return Ftyp("isom") + Box("mdat", Bytes().Fill(10000)) +
           Box("moov", Mvhd(1000, 400) + Trak() + mvex) + behind;
  }
};

}  // namespace fixture
