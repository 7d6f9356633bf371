#include "door/HostReading.h"

#include "door/HostCulprit.h"
#include "inspect/Words.h"
#include "io/FourCC.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

/// Files below this size the host does not read.
constexpr std::uint64_t kSmallestForHost = 20;

/// A cause in words, for a box without which the host answers otherwise.
std::string CauseOf(BoxTree* tree, BoxId id) {
  const Box box = tree->At(id);
  const std::uint32_t parent = box.parent != kRootBox ? tree->At(box.parent).type : 0;
  const FieldView header(tree->View(box.space, box.offset, 4), 4);
  FieldView size = header;
  if (box.depth > 1 && box.headerSize >= 16 && box.size >= 16 && size.U32() == 1) {
    return "a 64-bit size below the top level";
  }
  if (box.type == FourCC("edts")) {
    const BoxId list = tree->Child(id, FourCC("elst"));
    FieldView fields = list != kNoBox ? tree->Payload(list, 0, 8) : FieldView();
    if (fields.U8() == 1) return "an edit list in 64-bit form";
    if (list == kNoBox) return "an edit box without an edit list";
  }
  if (box.type == FourCC("tref")) return "track references of several kinds";
  const std::string type = Quoted(TypeText(box.type));
  if (parent == 0) return "the box " + type;
  const std::string in = " in " + Quoted(TypeText(parent));
  const bool entered =
      parent == FourCC("mvex") || parent == FourCC("moof") || parent == FourCC("traf");
  return "a " + type + in + (entered ? ", which it enters" : "");
}

std::string PlaceOf(HostTrial* trial, BoxId id) {
  const std::uint64_t offset = trial->Copy().OffsetInSource(trial->Tree().At(id).offset);
  return trial->Tree().Path(id) + ", byte " + Grouped(offset);
}

bool BeginsForHost(std::uint32_t type) {
  switch (type) {
    case FourCC("ftyp"):
    case FourCC("wide"):
    case FourCC("free"):
    case FourCC("skip"):
    case FourCC("mdat"):
    case FourCC("pnot"):
    case FourCC("moov"):
      return true;
    default:
      return false;
  }
}

/// What is missing that the host wants of every movie.
std::string MissingPart(BoxTree* tree, BoxId movie) {
  const auto lacks = [&](BoxId in, std::uint32_t type) {
    return tree->Child(in, type) == kNoBox
               ? "there is no " + Quoted(TypeText(type)) + " in " + tree->Path(in)
               : std::string();
  };
  std::string missing = lacks(movie, FourCC("mvhd"));
  if (missing.empty()) missing = lacks(movie, FourCC("trak"));
  BoxId track = tree->Child(movie, FourCC("trak"));
  for (; missing.empty() && track != kNoBox; track = tree->NextOfType(track)) {
    missing = lacks(track, FourCC("mdia"));
    if (!missing.empty()) break;
    const BoxId media = tree->Child(track, FourCC("mdia"));
    for (const std::uint32_t type : {FourCC("mdhd"), FourCC("hdlr"), FourCC("minf")}) {
      if (missing.empty()) missing = lacks(media, type);
    }
    if (!missing.empty()) break;
    missing = lacks(tree->Child(media, FourCC("minf")), FourCC("stbl"));
  }
  return missing;
}

bool IsReadable(mp4judge_host_answer answer) { return answer != MP4JUDGE_HOST_UNREADABLE; }

}  // namespace

std::string DescribeCulprit(HostTrial* trial, const std::vector<BoxId>& boxes) {
  std::string text = CauseOf(&trial->Tree(), boxes.front()) + " (" + PlaceOf(trial, boxes.front());
  if (boxes.size() > 1) text += ", and " + std::to_string(boxes.size() - 1) + " more";
  return text + ")";
}

std::string WhyHostDoesNotBegin(CachedSource* source) {
  if (source->Size() < kSmallestForHost) {
    return "the file is shorter than " + std::to_string(kSmallestForHost) + " bytes";
  }
  FieldView header(source->View(0, 8), source->View(0, 8) != nullptr ? 8 : 0);
  header.Skip(4);
  const std::uint32_t type = header.Type();
  if (!header.Ok() || BeginsForHost(type)) return {};
  return "it begins with " + Quoted(TypeText(type)) + ", not with \"ftyp\" or a box of a movie";
}

std::string WhyHostFails(HostTrial* trial) {
  if (IsReadable(trial->Answer({}))) return {};
  const BoxId movie = trial->Tree().Child(kRootBox, FourCC("moov"));
  if (movie == kNoBox) return "there is no movie box at the top level";
  const std::vector<BoxId> culprit = FindCulprit(trial, IsReadable);
  if (culprit.empty()) return MissingPart(&trial->Tree(), movie);
  return "its reader fails over " + DescribeCulprit(trial, culprit) +
         "; without that it reads a movie";
}

}  // namespace mp4
