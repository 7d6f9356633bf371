#include "door/MovieInfo.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>

#include "door/BoxView.h"
#include "door/CodecInfo.h"
#include "door/MovieTags.h"
#include "door/ReportJson.h"
#include "inspect/Inspect.h"
#include "io/FourCC.h"
#include "iso/TypeText.h"
#include "samples/Movie.h"
#include "samples/TrackTotals.h"

namespace mp4 {

namespace {

constexpr std::size_t kMostEntries = 16;
constexpr std::size_t kMostEdits = 100;
constexpr std::size_t kMostProblems = 100;

using Fields = std::vector<BoxField>;

Fields FieldsBelow(BoxTree* tree, BoxId parent, std::uint32_t type) {
  const BoxId id = parent != kNoBox ? tree->Child(parent, type) : kNoBox;
  bool cut = false;
  return id != kNoBox ? FieldsOf(tree, id, &cut) : Fields();
}

std::string Text(const Fields& fields, const char* name) {
  for (const BoxField& field : fields) {
    if (std::strcmp(field.name, name) == 0) return TextOfValue(field.value);
  }
  return {};
}

std::uint64_t Number(const Fields& fields, const char* name) {
  for (const BoxField& field : fields) {
    const auto* number = std::get_if<std::uint64_t>(&field.value);
    if (number != nullptr && std::strcmp(field.name, name) == 0) return *number;
  }
  return 0;
}

double Seconds(std::uint64_t units, std::uint32_t timescale) {
  return static_cast<double>(units) / timescale;
}

/// A movie box inside a compressed one stands for it.
BoxId MovieBox(BoxTree* tree) {
  BoxId moov = tree->Child(kRootBox, FourCC("moov"));
  for (int depth = 0; moov != kNoBox && depth < 4; ++depth) {
    const BoxId compressed = tree->Child(moov, FourCC("cmov"));
    const BoxId data = compressed != kNoBox ? tree->Child(compressed, FourCC("cmvd")) : kNoBox;
    const BoxId inner = data != kNoBox ? tree->Child(data, FourCC("moov")) : kNoBox;
    if (inner == kNoBox) break;
    moov = inner;
  }
  return moov;
}

void TakeFileType(BoxTree* tree, MovieInfo* info) {
  for (const BoxField& field : FieldsBelow(tree, kRootBox, FourCC("ftyp"))) {
    if (std::strcmp(field.name, "majorBrand") == 0) info->brand = TextOfValue(field.value);
    const auto* list = std::get_if<std::vector<std::string>>(&field.value);
    if (list != nullptr) info->compatibleBrands = *list;
  }
}

void TakeHeader(BoxTree* tree, BoxId moov, MovieInfo* info) {
  const Fields header = FieldsBelow(tree, moov, FourCC("mvhd"));
  const auto timescale = static_cast<std::uint32_t>(Number(header, "timescale"));
  info->created = Text(header, "creationTime");
  if (timescale == 0) return;
  std::uint64_t duration = Number(header, "duration");
  const BoxId extends = tree->Child(moov, FourCC("mvex"));
  const Fields extended = FieldsBelow(tree, extends, FourCC("mehd"));
  if (!extended.empty()) duration = Number(extended, "fragmentDuration");
  // All ones say that nobody knew.
  if (duration == 0xFFFFFFFF || duration == ~std::uint64_t{0}) return;
  info->seconds = Seconds(duration, timescale);
}

/// The turns that a matrix of a track header (ISO/IEC 14496-12, 8.3.2) may be.
std::optional<int> RotationOf(BoxTree* tree, BoxId header) {
  FieldView fields = tree->Payload(header, 0, 96);
  fields.Skip(ReadVersionAndFlags(&fields).version == 1 ? 48 : 36);
  const std::int32_t a = fields.S32(), b = fields.S32();
  fields.Skip(4);
  const std::int32_t c = fields.S32(), d = fields.S32();
  constexpr std::int32_t kOne = 0x10000;
  if (!fields.Ok()) return std::nullopt;
  if (a == kOne && b == 0 && c == 0 && d == kOne) return 0;
  if (a == 0 && b == kOne && c == -kOne && d == 0) return 90;
  if (a == -kOne && b == 0 && c == 0 && d == -kOne) return 180;
  if (a == 0 && b == -kOne && c == kOne && d == 0) return 270;
  return std::nullopt;
}

void TakeBoxes(BoxTree* tree, BoxId trak, const TrackInfo& info, MovieTrack* track) {
  const BoxId header = tree->Child(trak, FourCC("tkhd"));
  if (header != kNoBox) {
    track->rotation = RotationOf(tree, header);
    track->enabled = (tree->Payload(header, 0, 4).U32() & 1) != 0;
  }
  const BoxId media = tree->Child(trak, FourCC("mdia"));
  track->name = Text(FieldsBelow(tree, media, FourCC("hdlr")), "name");
  const BoxId table = SampleTableOf(tree, trak);
  const BoxId entries = table != kNoBox ? tree->Child(table, FourCC("stsd")) : kNoBox;
  BoxId entry = entries != kNoBox ? tree->FirstChild(entries) : kNoBox;
  for (const Description& description : info.descriptions) {
    if (entry == kNoBox || track->codecs.size() == kMostEntries) break;
    track->codecs.push_back(CodecOf(tree, entry, description));
    entry = tree->Next(entry);
  }
}

void TakeEdits(const TrackInfo& info, std::uint32_t movieScale, MovieTrack* track) {
  for (const Edit& edit : info.timeline.Edits()) {
    if (track->edits.size() == kMostEdits || movieScale == 0 || info.timescale == 0) return;
    EditInfo one;
    one.seconds = Seconds(edit.duration, movieScale);
    if (!edit.IsEmpty()) one.from = static_cast<double>(edit.mediaTime) / info.timescale;
    one.rate = edit.Rate() / 65536.0;
    track->edits.push_back(one);
  }
}

/// The usual duration as a rate when it is constant, else the mean of all samples.
void TakeTotals(const TrackTotals& totals, MovieTrack* track) {
  track->samples = totals.samples;
  track->bytes = totals.bytes;
  track->syncSamples = totals.syncSamples;
  track->wholeTrack = totals.whole;
  track->constantRate = totals.constantRate;
  if (track->timescale == 0) return;
  track->sampleSeconds = Seconds(totals.duration, track->timescale);
  std::uint64_t numerator = track->timescale;
  std::uint64_t denominator = totals.usualDuration;
  if (!totals.constantRate) {
    // No overflow: samples are bounded, and a timescale has 32 bits.
    numerator = totals.samples * track->timescale;
    denominator = totals.duration;
  }
  if (denominator == 0) return;
  const std::uint64_t common = std::gcd(numerator, denominator);
  track->rateNumerator = numerator / common;
  track->rateDenominator = denominator / common;
}

/// Samples left to walk go down with each track.
MovieTrack TrackOf(BoxTree* tree, BoxId trak, Movie* movie, Track* source, std::uint64_t* left) {
  const TrackInfo& info = source->Info();
  MovieTrack track;
  track.id = info.id;
  if (info.handler != 0) track.handler = TypeText(info.handler);
  track.language = info.language;
  track.timescale = info.timescale;
  if (info.duration && info.timescale != 0) track.seconds = Seconds(*info.duration, info.timescale);
  track.width = info.width;
  track.height = info.height;
  if (trak != kNoBox) TakeBoxes(tree, trak, info, &track);
  TakeEdits(info, movie->Timescale(), &track);
  const TrackTotals totals = TotalsOf(source, *left);
  *left -= totals.samples;
  TakeTotals(totals, &track);
  return track;
}

void TakeReport(ByteSource* source, MovieInfo* info) {
  const Report report = Inspect(source, InspectOptions());
  info->verdict = NameOf(report.verdict);
  info->reason = report.reason;
  info->schemes = report.schemes;
  for (const ReportProblem& problem : report.problems) {
    if (info->problems.size() < kMostProblems) {
      info->problems.push_back(problem.boxPath + (problem.boxPath.empty() ? "" : ": ") +
                               problem.text);
    }
  }
}

void TakeTracks(BoxTree* tree, BoxId moov, Movie* movie, MovieInfo* info) {
  std::uint64_t left = MostSamplesWalked(info->fileSize);
  movie->ReadFragments();
  info->fragments = movie->Fragments();
  BoxId trak = moov != kNoBox ? tree->Child(moov, FourCC("trak")) : kNoBox;
  for (const std::unique_ptr<Track>& track : movie->Tracks()) {
    info->tracks.push_back(TrackOf(tree, trak, movie, track.get(), &left));
    if (trak != kNoBox) trak = tree->NextOfType(trak);
    for (const SampleProblem& problem : track->Problems().Kept()) {
      if (info->problems.size() >= kMostProblems) break;
      info->problems.push_back("track " + std::to_string(track->Info().id) + ": " +
                               TextOf(problem));
    }
  }
}

}  // namespace

MovieInfo InfoOf(ByteSource* source) {
  MovieInfo info;
  info.fileSize = source->Size();
  TakeReport(source, &info);
  CachedSource cache(source);
  BoxTree tree(&cache);
  TakeFileType(&tree, &info);
  const BoxId moov = MovieBox(&tree);
  info.hasMovie = moov != kNoBox;
  if (moov != kNoBox) {
    TakeHeader(&tree, moov, &info);
    TakeTags(&tree, moov, &info);
  }
  Movie movie(source);
  TakeTracks(&tree, moov, &movie, &info);
  // Headers of fragmented files often say nothing.
  if (info.seconds.value_or(0) == 0) {
    for (const MovieTrack& track : info.tracks) {
      info.seconds = std::max(info.seconds.value_or(0), track.sampleSeconds);
    }
  }
  if (moov != kNoBox) TakeChapterTrack(&tree, moov, source, &movie, &info);
  return info;
}

}  // namespace mp4
