#include "inspect/FieldReader.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

void FileType(FieldReader* f) {
  f->Type("majorBrand");
  f->U32("minorVersion");
  f->Types("compatibleBrands");
}

void MovieHeader(FieldReader* f) {
  f->Full();
  f->Time("creationTime");
  f->Time("modificationTime");
  f->U32("timescale");
  f->ByVersion("duration");
  f->Fixed32("rate");
  f->Fixed16("volume");
  f->Skip(10);
  f->Matrix();
  f->Skip(24);
  f->U32("nextTrackId");
}

void TrackHeader(FieldReader* f) {
  f->Full();
  f->Show("enabled", (f->Flags() & 1) != 0);
  f->Time("creationTime");
  f->Time("modificationTime");
  f->U32("trackId");
  f->Skip(4);
  f->ByVersion("duration");
  f->Skip(8);
  f->S16("layer");
  f->S16("alternateGroup");
  f->Fixed16("volume");
  f->Skip(2);
  f->Matrix();
  f->Fixed32("width");
  f->Fixed32("height");
}

void MediaHeader(FieldReader* f) {
  f->Full();
  f->Time("creationTime");
  f->Time("modificationTime");
  f->U32("timescale");
  f->ByVersion("duration");
  f->Language("language");
}

/// QuickTime's name is counted; the standard's ends in a zero.
void Handler(FieldReader* f) {
  f->Full();
  f->Type("componentType");
  f->Type("handlerType");
  f->Skip(12);
  const std::size_t left = f->View()->Left();
  FieldView first = *f->View();
  if (left > 0 && first.U8() == left - 1) f->Skip(1);
  f->Text("name");
}

void EditList(FieldReader* f) {
  f->Full();
  const std::uint32_t count = f->U32("entryCount");
  const bool wide = f->Version() == 1;
  f->Rows("entries", count, [wide](FieldView* v) {
    const std::uint64_t duration = wide ? v->U64() : v->U32();
    const std::int64_t from = wide ? v->S64() : v->S32();
    const double rate = v->S32() / 65536.0;
    const std::string media = from == -1 ? "nothing" : "from " + std::to_string(from);
    return std::to_string(duration) + ": " + media +
           (rate == 1 ? "" : ", rate " + std::to_string(rate));
  });
}

void VideoHeader(FieldReader* f) {
  f->Full();
  f->U16("graphicsMode");
  f->Rows("opColor", 3, [](FieldView* v) { return std::to_string(v->U16()); });
}

void SoundHeader(FieldReader* f) {
  f->Full();
  f->Fixed16("balance");
}

void CountOnly(FieldReader* f) {
  f->Full();
  f->U32("entryCount");
}

/// A location is there unless flags say that the data is in this file.
void DataEntryUrl(FieldReader* f) {
  f->Full();
  const bool here = (f->Flags() & 1) != 0;
  f->Show("sameFile", here);
  if (f->View()->Left() > 0) f->Text("location");
}

void DataEntryUrn(FieldReader* f) {
  f->Full();
  f->Text("name");
  if (f->View()->Left() > 0) f->Text("location");
}

void ExtendedLanguage(FieldReader* f) {
  f->Full();
  f->Text("language");
}

void TrackReferences(FieldReader* f) {
  f->Rows("trackIds", f->View()->Left() / 4, [](FieldView* v) { return std::to_string(v->U32()); });
}

void ObjectDescriptors(FieldReader* f) {
  f->Full();
  f->RestHex("descriptors");
}

void DataCompression(FieldReader* f) { f->Type("method"); }

void CompressedMovie(FieldReader* f) { f->U32("inflatedSize"); }

void ApertureSize(FieldReader* f) {
  f->Full();
  f->Fixed32("width");
  f->Fixed32("height");
}

constexpr FieldParserRow kMovieParsers[] = {
    {FourCC("ftyp"), FileType},          {FourCC("styp"), FileType},
    {FourCC("mvhd"), MovieHeader},       {FourCC("tkhd"), TrackHeader},
    {FourCC("mdhd"), MediaHeader},       {FourCC("hdlr"), Handler},
    {FourCC("elst"), EditList},          {FourCC("vmhd"), VideoHeader},
    {FourCC("smhd"), SoundHeader},       {FourCC("nmhd"), FullHeaderOnly},
    {FourCC("sthd"), FullHeaderOnly},    {FourCC("dref"), CountOnly},
    {FourCC("stsd"), CountOnly},         {FourCC("url "), DataEntryUrl},
    {FourCC("urn "), DataEntryUrn},      {FourCC("alis"), DataEntryUrl},
    {FourCC("elng"), ExtendedLanguage},  {FourCC("tref"), TrackReferences},
    {FourCC("iods"), ObjectDescriptors}, {FourCC("dcom"), DataCompression},
    {FourCC("cmvd"), CompressedMovie},   {FourCC("clef"), ApertureSize},
    {FourCC("prof"), ApertureSize},      {FourCC("enof"), ApertureSize},
};

}  // namespace

FieldParser MovieFieldParser(std::uint32_t type) { return FindParser(kMovieParsers, type); }

}  // namespace mp4
