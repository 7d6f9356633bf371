#include "door/MovieTags.h"

#include <algorithm>
#include <cstring>

#include "door/BoxView.h"
#include "inspect/BoxNames.h"
#include "io/FourCC.h"
#include "iso/TypeText.h"
#include "samples/SampleCursor.h"

namespace mp4 {

namespace {

constexpr std::size_t kMostTags = 500;
constexpr std::size_t kMostChapters = 1000;
constexpr std::size_t kLongestTitle = 1024;

std::string FieldText(BoxTree* tree, BoxId id, const char* name) {
  bool cut = false;
  for (const BoxField& field : FieldsOf(tree, id, &cut)) {
    if (std::strcmp(field.name, name) == 0) return TextOfValue(field.value);
  }
  return {};
}

/// Track and disc numbers: two bytes, the number, then how many there are.
std::string PairText(BoxTree* tree, BoxId data) {
  FieldView fields = tree->Payload(data, 10, 4);
  const std::uint16_t number = fields.U16();
  const std::uint16_t all = fields.U16();
  return std::to_string(number) + (all != 0 ? " of " + std::to_string(all) : "");
}

void TakeItem(BoxTree* tree, BoxId item, const std::vector<std::string>& keys, MovieInfo* info) {
  const std::uint32_t type = tree->At(item).type;
  const BoxId data = tree->Child(item, FourCC("data"));
  if (data == kNoBox) return;
  if (type == FourCC("covr")) {
    info->coverType = FieldText(tree, data, "imageType");
    const std::uint64_t size = tree->At(data).PayloadSize();
    info->coverSize = size < 8 ? 0 : size - 8;
    return;
  }
  TagInfo tag{TypeText(type), std::string(NameOfTag(type)), FieldText(tree, data, "value")};
  // The type of a keyed item is its number among the keys.
  const unsigned char* bytes = reinterpret_cast<const unsigned char*>(&type);
  const std::size_t index = LoadBe32(bytes);
  if (index >= 1 && index <= keys.size()) tag.name = keys[index - 1];
  const BoxId name = tree->Child(item, FourCC("name"));
  if (type == FourCC("----") && name != kNoBox) tag.name = FieldText(tree, name, "name");
  const bool pair = type == FourCC("trkn") || type == FourCC("disk");
  if (pair && tree->At(data).PayloadSize() >= 14) tag.value = PairText(tree, data);
  info->tags.push_back(std::move(tag));
}

std::vector<std::string> KeysOf(BoxTree* tree, BoxId meta) {
  const BoxId box = tree->Child(meta, FourCC("keys"));
  std::vector<std::string> keys;
  if (box == kNoBox) return keys;
  FieldView fields = tree->Payload(box);
  fields.Skip(4);
  const std::uint32_t count = fields.U32();
  while (fields.Left() >= 8 && keys.size() < std::min<std::size_t>(count, kMostTags)) {
    const std::uint32_t size = fields.U32();
    fields.Skip(4);
    const unsigned char* bytes = size >= 8 ? fields.Bytes(size - 8) : nullptr;
    if (bytes == nullptr) break;
    keys.emplace_back(reinterpret_cast<const char*>(bytes),
                      std::min<std::size_t>(size - 8, kLongestTitle));
  }
  return keys;
}

void TakeItems(BoxTree* tree, BoxId meta, MovieInfo* info) {
  const BoxId list = meta != kNoBox ? tree->Child(meta, FourCC("ilst")) : kNoBox;
  if (list == kNoBox) return;
  const std::vector<std::string> keys = KeysOf(tree, meta);
  for (BoxId item = tree->FirstChild(list); item != kNoBox && info->tags.size() < kMostTags;
       item = tree->Next(item)) {
    TakeItem(tree, item, keys, info);
  }
}

/// Times count in 100 nanoseconds.
void TakeChapterList(BoxTree* tree, BoxId list, MovieInfo* info) {
  FieldView fields = tree->Payload(list);
  if (ReadVersionAndFlags(&fields).version == 1) fields.Skip(4);
  for (unsigned left = fields.U8(); left > 0; --left) {
    const double seconds = static_cast<double>(fields.U64()) / 1e7;
    const std::size_t n = fields.U8();
    const unsigned char* title = fields.Bytes(n);
    if (title == nullptr) return;
    info->chapters.push_back({seconds, std::string(reinterpret_cast<const char*>(title), n)});
  }
}

/// The first track that some track names as its chapters, 0 without one.
std::uint32_t ChapterTrackId(BoxTree* tree, BoxId moov) {
  for (BoxId trak = tree->Child(moov, FourCC("trak")); trak != kNoBox;
       trak = tree->NextOfType(trak)) {
    const BoxId references = tree->Child(trak, FourCC("tref"));
    const BoxId chap = references != kNoBox ? tree->Child(references, FourCC("chap")) : kNoBox;
    if (chap != kNoBox) return tree->Payload(chap, 0, 4).U32();
  }
  return 0;
}

/// A text sample is a counted text with boxes behind it (QuickTime, and 3GPP TS 26.245).
std::string TitleOf(const Sample& sample, ByteSource* source) {
  unsigned char bytes[2 + kLongestTitle];
  const std::size_t there =
      source->ReadAt(sample.offset, bytes, std::min<std::size_t>(sample.size, sizeof bytes));
  FieldView fields(bytes, there);
  const std::size_t n = fields.U16();
  const std::size_t shown = std::min(n, fields.Left());
  const unsigned char* text = fields.Bytes(shown);
  return text != nullptr ? std::string(reinterpret_cast<const char*>(text), shown) : std::string();
}

}  // namespace

void TakeTags(BoxTree* tree, BoxId moov, MovieInfo* info) {
  TakeItems(tree, tree->Child(moov, FourCC("meta")), info);
  const BoxId userData = tree->Child(moov, FourCC("udta"));
  if (userData == kNoBox) return;
  TakeItems(tree, tree->Child(userData, FourCC("meta")), info);
  for (BoxId at = tree->FirstChild(userData); at != kNoBox && info->tags.size() < kMostTags;
       at = tree->Next(at)) {
    const std::uint32_t type = tree->At(at).type;
    if (type == FourCC("chpl") && info->chapters.empty()) TakeChapterList(tree, at, info);
    if ((type & 0xFF) != 0xA9) continue;
    info->tags.push_back(
        {TypeText(type), std::string(NameOfTag(type)), FieldText(tree, at, "text")});
  }
}

void TakeChapterTrack(BoxTree* tree, BoxId moov, ByteSource* source, Movie* movie,
                      MovieInfo* info) {
  Track* const track = movie->TrackById(ChapterTrackId(tree, moov));
  if (track == nullptr || track->Info().timescale == 0 || !info->chapters.empty()) return;
  SampleCursor cursor(track);
  Sample sample;
  while (info->chapters.size() < kMostChapters && cursor.Next(&sample)) {
    const double seconds = static_cast<double>(sample.compositionTime) / track->Info().timescale;
    info->chapters.push_back({seconds, TitleOf(sample, source)});
  }
}

}  // namespace mp4
