#include "samples/Movie.h"

#include <algorithm>
#include <new>

#include "io/FourCC.h"
#include "io/Limits.h"
#include "io/MakeLazyArray.h"

namespace mp4 {

namespace {

/// The movie box itself, where a compressed one stands around it.
BoxId Plain(BoxTree* tree, BoxId moov) {
  for (int depth = 0; moov != kNoBox && depth < limits::kDeepestCompressedMovie; ++depth) {
    const BoxId compressed = tree->Child(moov, FourCC("cmov"));
    if (compressed == kNoBox) break;
    const BoxId data = tree->Child(compressed, FourCC("cmvd"));
    const BoxId inner = data != kNoBox ? tree->Child(data, FourCC("moov")) : kNoBox;
    if (inner == kNoBox) break;
    moov = inner;
  }
  return moov;
}

}  // namespace

Movie::Movie(ByteSource* media, ByteSource* initialization) : media_(media), tree_(&media_) {
  if (initialization != nullptr) {
    init_ = std::make_unique<CachedSource>(initialization);
    initTree_ = std::make_unique<BoxTree>(init_.get());
  }
  ReadMovieBox();
  if (tracks_.empty()) ReadFragments();
}

Movie::~Movie() = default;

void Movie::ReadMovieBox() {
  BoxTree* tree = MovieTree();
  moov_ = Plain(tree, tree->Child(kRootBox, FourCC("moov")));
  if (moov_ == kNoBox) {
    problems_.Note(SampleFault::kMissing, FourCC("moov"));
    return;
  }
  const BoxId mvhd = tree->Child(moov_, FourCC("mvhd"));
  if (mvhd != kNoBox) {
    FieldView fields = tree->Payload(mvhd, 0, 32);
    fields.Skip(ReadVersionAndFlags(&fields).version == 1 ? 16 : 8);
    timescale_ = fields.U32();
  }
  for (BoxId trak = tree->Child(moov_, FourCC("trak")); trak != kNoBox;
       trak = tree->NextOfType(trak)) {
    if (tracks_.size() >= limits::kMostTracks) break;
    SampleProblems problems;
    TrackInfo info = ReadTrackInfo(tree, trak, timescale_, &problems);
    tracks_.push_back(std::make_unique<Track>(this, std::move(info), trak));
    tracks_.back()->problems_ = std::move(problems);
    byId_.emplace(tracks_.back()->Info().id, tracks_.back().get());
  }
  for (BoxId mvex = tree->Child(moov_, FourCC("mvex")); mvex != kNoBox;
       mvex = tree->NextOfType(mvex)) {
    for (BoxId trex = tree->Child(mvex, FourCC("trex")); trex != kNoBox;
         trex = tree->NextOfType(trex)) {
      FieldView fields = tree->Payload(trex, 4, 20);
      Track* track = TrackById(fields.U32());
      FragmentDefaults defaults;
      defaults.description = fields.U32();
      defaults.duration = fields.U32();
      defaults.size = fields.U32();
      defaults.flags = fields.U32();
      if (!fields.Ok() || track == nullptr || track->fragments_.defaults) continue;
      track->fragments_.defaults = defaults;
    }
  }
}

Track* Movie::TrackById(std::uint32_t id) const {
  const auto found = byId_.find(id);
  return found != byId_.end() ? found->second : nullptr;
}

FragmentTrack* Movie::TrackOf(std::uint32_t id) {
  Track* track = TrackById(id);
  if (track == nullptr) {
    if (tracks_.size() >= limits::kMostTracks) return nullptr;
    TrackInfo info;
    info.id = id;
    info.inMovie = false;
    tracks_.push_back(std::make_unique<Track>(this, std::move(info), kNoBox));
    track = tracks_.back().get();
    byId_.emplace(id, track);
    track->problems_.Note(SampleFault::kUnknownTrack, FourCC("tfhd"));
  }
  return track->Fragments();
}

void Movie::ReadFragments() {
  if (fragmentsRead_) return;
  fragmentsRead_ = true;
  const bool inPlace = media_.Size() <= SIZE_MAX &&
                       media_.InMemory(0, static_cast<std::size_t>(media_.Size())) != nullptr;
  FragmentReader reader(this, inPlace ? nullptr : &keep_, &problems_);
  const std::uint64_t size = media_.Size();
  for (std::uint64_t at = 0; size - at >= 8;) {
    const auto seen = static_cast<std::size_t>(std::min<std::uint64_t>(size - at, 32));
    const unsigned char* bytes = media_.View(at, seen);
    BoxBytes box;
    if (bytes == nullptr || !ReadBoxAt(bytes, seen, size - at, &box)) break;
    if (box.type == FourCC("moof") && !ReadFragment(at, box, &reader)) break;
    if (box.type == FourCC("!mof")) problems_.Note(SampleFault::kNotRead, box.type, 0, 0, at);
    at += box.size;
  }
}

bool Movie::ReadFragment(std::uint64_t offset, const BoxBytes& header, FragmentReader* reader) {
  const std::uint64_t from = offset + header.headerSize;
  const auto n = static_cast<std::size_t>(header.size - header.headerSize);
  LazyArray<unsigned char> own;
  const unsigned char* bytes = media_.InMemory(from, n);
  if (bytes == nullptr) bytes = media_.View(from, n);
  std::size_t held = n;
  if (bytes == nullptr) {
    own = NewBytes(n);
    if (own == nullptr) throw std::bad_alloc();
    held = media_.ReadAt(from, own.get(), n);
    bytes = own.get();
  }
  if (held < n) problems_.Note(SampleFault::kNotDelivered, header.type, n, held, offset);
  reader->Read(FieldView(bytes, held), offset, ++fragments_);
  return held == n;
}

std::optional<FragmentPlace> Movie::FragmentAt(const Track& track, std::int64_t time) {
  const TrackInfo& info = track.Info();
  return FragmentFinder(&media_, &problems_).Find(info.id, info.timescale, time);
}

std::size_t Movie::FragmentMemory() const {
  std::size_t bytes = keep_.Bytes();
  for (const auto& track : tracks_) {
    const FragmentRuns& runs = track->fragments_.runs;
    bytes +=
        runs.runs.size() * sizeof(FragmentRun) + runs.extras.capacity() * sizeof(FragmentExtra);
  }
  return bytes;
}

const SourceTrouble& Movie::Trouble() const {
  return init_ != nullptr && init_->Failed() ? init_->Trouble() : media_.Trouble();
}

}  // namespace mp4
