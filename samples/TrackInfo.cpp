#include "samples/TrackInfo.h"

#include <algorithm>

#include "io/FourCC.h"

namespace mp4 {

namespace {

BoxId Below(BoxTree* tree, BoxId box, std::uint32_t type) {
  return box != kNoBox ? tree->Child(box, type) : kNoBox;
}

FieldView PayloadOf(BoxTree* tree, BoxId box) {
  return box != kNoBox ? tree->Payload(box, 0, 512) : FieldView();
}

void ReadTrackHeader(BoxTree* tree, BoxId trak, TrackInfo* info, SampleProblems* problems) {
  FieldView fields = PayloadOf(tree, Below(tree, trak, FourCC("tkhd")));
  const std::uint8_t version = ReadVersionAndFlags(&fields).version;
  fields.Skip(version == 1 ? 16 : 8);
  info->id = fields.U32();
  if (!fields.Ok()) problems->Note(SampleFault::kCut, FourCC("tkhd"));
  fields.Skip(4 + (version == 1 ? 8 : 4) + 16 + 36);
  info->width = fields.U32() / 65536.0;
  info->height = fields.U32() / 65536.0;
}

/// Three letters of five bits each, or a Macintosh code below 0x400.
std::string LanguageOf(std::uint32_t code) {
  if (code == 0x7FFF) return "und";
  if (code < 0x400) return "mac:" + std::to_string(code);
  std::string text;
  for (const int shift : {10, 5, 0}) {
    text.push_back(static_cast<char>(0x60 + (code >> shift & 31)));
  }
  return text;
}

void ReadMediaHeader(BoxTree* tree, BoxId mdia, TrackInfo* info, SampleProblems* problems) {
  FieldView fields = PayloadOf(tree, Below(tree, mdia, FourCC("mdhd")));
  const bool wide = ReadVersionAndFlags(&fields).version == 1;
  fields.Skip(wide ? 16 : 8);
  const std::uint32_t timescale = fields.U32();
  const std::uint64_t duration = wide ? fields.U64() : fields.U32();
  if (fields.Ok()) {
    info->timescale = timescale;
    const std::uint64_t unknown = wide ? ~std::uint64_t{0} : 0xFFFFFFFFU;
    if (duration != unknown) info->duration = duration;
    const std::uint32_t language = fields.U16();
    if (fields.Ok()) info->language = LanguageOf(language);
  }
  if (info->timescale == 0) problems->Note(SampleFault::kZeroTimescale, FourCC("mdhd"));
  // ExtendedLanguageBox ("elng", 8.4.6) wins.
  FieldView extended = PayloadOf(tree, Below(tree, mdia, FourCC("elng")));
  extended.Skip(4);
  std::string tag;
  while (extended.Left() > 0) {
    const char c = static_cast<char>(extended.U8());
    if (c == 0) break;
    tag.push_back(c);
  }
  if (!tag.empty()) info->language = tag;
}

/// Which data references name another file than this one: flag 1 means this one.
std::vector<bool> ReadReferences(BoxTree* tree, BoxId minf) {
  std::vector<bool> elsewhere;
  const BoxId dref = Below(tree, Below(tree, minf, FourCC("dinf")), FourCC("dref"));
  if (dref == kNoBox) return elsewhere;
  for (BoxId entry = tree->FirstChild(dref); entry != kNoBox; entry = tree->Next(entry)) {
    FieldView fields = tree->Payload(entry, 0, 4);
    const std::uint32_t flags = ReadVersionAndFlags(&fields).flags;
    elsewhere.push_back(fields.Ok() && (flags & 1) == 0);
  }
  return elsewhere;
}

void ReadDescriptions(BoxTree* tree, BoxId minf, TrackInfo* info, SampleProblems* problems) {
  const BoxId stsd = Below(tree, Below(tree, minf, FourCC("stbl")), FourCC("stsd"));
  FieldView header = PayloadOf(tree, stsd);
  header.Skip(4);
  const std::uint64_t says = header.U32();
  if (!header.Ok()) {
    problems->Note(SampleFault::kMissing, FourCC("stsd"));
    return;
  }
  const std::vector<bool> elsewhere = ReadReferences(tree, minf);
  BoxId entry = tree->FirstChild(stsd);
  for (; entry != kNoBox && info->descriptions.size() < says; entry = tree->Next(entry)) {
    info->descriptions.push_back(ReadDescription(tree, entry, info->handler));
    const std::size_t reference = tree->Payload(entry, 6, 2).U16();
    info->descriptions.back().elsewhere =
        reference >= 1 && reference <= elsewhere.size() && elsewhere[reference - 1];
  }
  if (info->descriptions.size() < says) {
    problems->Note(SampleFault::kFewerRows, FourCC("stsd"), says, info->descriptions.size());
  }
}

std::optional<CompositionRange> ReadCompositionRange(BoxTree* tree, BoxId stbl,
                                                     SampleProblems* problems) {
  const BoxId cslg = Below(tree, stbl, FourCC("cslg"));
  if (cslg == kNoBox) return std::nullopt;
  FieldView fields = PayloadOf(tree, cslg);
  const bool wide = ReadVersionAndFlags(&fields).version == 1;
  const auto next = [&] { return wide ? fields.S64() : fields.S32(); };
  CompositionRange range;
  range.shift = next();
  range.leastOffset = next();
  range.greatestOffset = next();
  range.start = next();
  range.end = next();
  if (fields.Ok()) return range;
  problems->Note(SampleFault::kCut, FourCC("cslg"));
  return std::nullopt;
}

}  // namespace

bool TrackInfo::IsProtected() const {
  return std::any_of(descriptions.begin(), descriptions.end(),
                     [](const Description& d) { return d.isProtected; });
}

BoxId SampleTableOf(BoxTree* tree, BoxId trak) {
  const BoxId mdia = Below(tree, trak, FourCC("mdia"));
  return Below(tree, Below(tree, mdia, FourCC("minf")), FourCC("stbl"));
}

TrackInfo ReadTrackInfo(BoxTree* tree, BoxId trak, std::uint32_t movieScale,
                        SampleProblems* problems) {
  TrackInfo info;
  ReadTrackHeader(tree, trak, &info, problems);
  const BoxId mdia = Below(tree, trak, FourCC("mdia"));
  ReadMediaHeader(tree, mdia, &info, problems);
  FieldView handler = PayloadOf(tree, Below(tree, mdia, FourCC("hdlr")));
  handler.Skip(8);
  info.handler = handler.Type();
  if (!handler.Ok()) problems->Note(SampleFault::kMissing, FourCC("hdlr"));
  ReadDescriptions(tree, Below(tree, mdia, FourCC("minf")), &info, problems);
  info.composition = ReadCompositionRange(tree, SampleTableOf(tree, trak), problems);
  const BoxId elst = Below(tree, Below(tree, trak, FourCC("edts")), FourCC("elst"));
  if (elst != kNoBox) {
    info.timeline = EditTimeline(ReadEdits(tree, elst, problems), movieScale, info.timescale);
  }
  return info;
}

}  // namespace mp4
