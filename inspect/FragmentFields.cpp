#include "inspect/FieldReader.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

void ExtendsHeader(FieldReader* f) {
  f->Full();
  f->ByVersion("fragmentDuration");
}

void TrackExtends(FieldReader* f) {
  f->Full();
  f->U32("trackId");
  f->U32("defaultSampleDescriptionIndex");
  f->U32("defaultSampleDuration");
  f->U32("defaultSampleSize");
  f->U32("defaultSampleFlags");
}

void FragmentHeader(FieldReader* f) {
  f->Full();
  f->U32("sequenceNumber");
}

void TrackFragmentHeader(FieldReader* f) {
  f->Full();
  f->U32("trackId");
  const std::uint32_t flags = f->Flags();
  if ((flags & 0x01) != 0) f->U64("baseDataOffset");
  if ((flags & 0x02) != 0) f->U32("sampleDescriptionIndex");
  if ((flags & 0x08) != 0) f->U32("defaultSampleDuration");
  if ((flags & 0x10) != 0) f->U32("defaultSampleSize");
  if ((flags & 0x20) != 0) f->U32("defaultSampleFlags");
  if ((flags & 0x010000) != 0) f->Show("durationIsEmpty", true);
  if ((flags & 0x020000) != 0) f->Show("defaultBaseIsMoof", true);
}

void DecodeTime(FieldReader* f) {
  f->Full();
  f->ByVersion("baseMediaDecodeTime");
}

void FragmentRun(FieldReader* f) {
  f->Full();
  const std::uint32_t flags = f->Flags();
  const std::uint32_t count = f->U32("sampleCount");
  if ((flags & 0x01) != 0) f->S32("dataOffset");
  if ((flags & 0x04) != 0) f->U32("firstSampleFlags");
  if ((flags & 0xF00) == 0) return;
  f->Rows("samples", count, [flags](FieldView* v) {
    std::string text;
    const auto add = [&](const char* name, const std::string& value) {
      text += (text.empty() ? "" : ", ") + (name + (" " + value));
    };
    if ((flags & 0x100) != 0) add("duration", std::to_string(v->U32()));
    if ((flags & 0x200) != 0) add("size", std::to_string(v->U32()));
    if ((flags & 0x400) != 0) add("flags", std::to_string(v->U32()));
    if ((flags & 0x800) != 0) add("offset", std::to_string(v->S32()));
    return text;
  });
}

void SegmentIndex(FieldReader* f) {
  f->Full();
  f->U32("referenceId");
  f->U32("timescale");
  // 32 bits in version 0 only, whatever later versions may be.
  const bool narrow = f->Version() == 0;
  narrow ? f->U32("earliestPresentationTime") : f->U64("earliestPresentationTime");
  narrow ? f->U32("firstOffset") : f->U64("firstOffset");
  f->Skip(2);
  const std::uint16_t count = f->U16("referenceCount");
  f->Rows("references", count, [](FieldView* v) {
    const std::uint32_t size = v->U32(), duration = v->U32();
    const bool startsWithSync = v->U32() >> 31 != 0;
    return std::to_string(size & 0x7FFFFFFF) + " bytes, duration " + std::to_string(duration) +
           (size >> 31 != 0 ? ", an index" : "") + (startsWithSync ? ", starts with a sync" : "");
  });
}

void SubsegmentIndex(FieldReader* f) {
  f->Full();
  f->U32("subsegmentCount");
}

void RandomAccess(FieldReader* f) {
  f->Full();
  f->U32("trackId");
  const std::uint32_t lengths = f->View()->U32();
  const std::uint32_t count = f->U32("entryCount");
  const bool wide = f->Version() == 1;
  // The three numbers have lengths of their own, in bytes less one.
  const std::size_t rest = (lengths >> 4 & 3) + (lengths >> 2 & 3) + (lengths & 3) + 3;
  f->Rows("entries", count, [wide, rest](FieldView* v) {
    const std::uint64_t time = wide ? v->U64() : v->U32();
    const std::uint64_t offset = wide ? v->U64() : v->U32();
    v->Skip(rest);
    return "time " + std::to_string(time) + " at " + std::to_string(offset);
  });
}

void RandomAccessOffset(FieldReader* f) {
  f->Full();
  f->U32("size");
}

void EventMessage(FieldReader* f) {
  f->Full();
  if (f->Version() == 0) {
    f->Text("schemeIdUri");
    f->Text("value");
  }
  f->U32("timescale");
  if (f->Version() == 1) {
    f->U64("presentationTime");
  } else {
    f->U32("presentationTimeDelta");
  }
  f->U32("eventDuration");
  f->U32("id");
  if (f->Version() == 1) {
    f->Text("schemeIdUri");
    f->Text("value");
  }
}

void ReferenceTime(FieldReader* f) {
  f->Full();
  f->U32("referenceTrackId");
  f->U64("ntpTimestamp");
  f->ByVersion("mediaTime");
}

constexpr FieldParserRow kFragmentParsers[] = {
    {FourCC("mehd"), ExtendsHeader},  {FourCC("trex"), TrackExtends},
    {FourCC("mfhd"), FragmentHeader}, {FourCC("tfhd"), TrackFragmentHeader},
    {FourCC("tfdt"), DecodeTime},     {FourCC("trun"), FragmentRun},
    {FourCC("sidx"), SegmentIndex},   {FourCC("ssix"), SubsegmentIndex},
    {FourCC("tfra"), RandomAccess},   {FourCC("mfro"), RandomAccessOffset},
    {FourCC("emsg"), EventMessage},   {FourCC("prft"), ReferenceTime},
};

}  // namespace

FieldParser FragmentFieldParser(std::uint32_t type) { return FindParser(kFragmentParsers, type); }

}  // namespace mp4
