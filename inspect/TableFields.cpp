#include "inspect/FieldReader.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

void TimeToSample(FieldReader* f) {
  f->Full();
  const std::uint32_t count = f->U32("entryCount");
  f->Rows("entries", count, [](FieldView* v) {
    const std::uint32_t samples = v->U32();
    return std::to_string(samples) + " x " + std::to_string(v->U32());
  });
}

/// Offsets are signed in version 1; writers of version 0 mean it so, too.
void CompositionOffsets(FieldReader* f) {
  f->Full();
  const std::uint32_t count = f->U32("entryCount");
  f->Rows("entries", count, [](FieldView* v) {
    const std::uint32_t samples = v->U32();
    return std::to_string(samples) + " x " + std::to_string(v->S32());
  });
}

void CompositionToDecode(FieldReader* f) {
  f->Full();
  const bool wide = f->Version() == 1;
  for (const char* name :
       {"compositionToDtsShift", "leastDecodeToDisplayDelta", "greatestDecodeToDisplayDelta",
        "compositionStartTime", "compositionEndTime"}) {
    f->Show(name, wide ? f->View()->S64() : std::int64_t{f->View()->S32()});
  }
}

void SampleToChunk(FieldReader* f) {
  f->Full();
  const std::uint32_t count = f->U32("entryCount");
  f->Rows("entries", count, [](FieldView* v) {
    const std::uint32_t chunk = v->U32(), samples = v->U32();
    return "from chunk " + std::to_string(chunk) + ": " + std::to_string(samples) +
           " samples, description " + std::to_string(v->U32());
  });
}

void SampleSizes(FieldReader* f) {
  f->Full();
  const std::uint32_t all = f->U32("sampleSize");
  const std::uint32_t count = f->U32("sampleCount");
  if (all == 0) f->Rows("sizes", count, [](FieldView* v) { return std::to_string(v->U32()); });
}

void CompactSampleSizes(FieldReader* f) {
  f->Full();
  f->Skip(3);
  const std::uint8_t bits = f->U8("fieldSize");
  const std::uint32_t count = f->U32("sampleCount");
  if (bits != 8 && bits != 16) return;
  f->Rows("sizes", count,
          [bits](FieldView* v) { return std::to_string(bits == 8 ? v->U8() : v->U16()); });
}

void ChunkOffsets(FieldReader* f) {
  f->Full();
  const std::uint32_t count = f->U32("entryCount");
  f->Rows("offsets", count, [](FieldView* v) { return std::to_string(v->U32()); });
}

void LargeChunkOffsets(FieldReader* f) {
  f->Full();
  const std::uint32_t count = f->U32("entryCount");
  f->Rows("offsets", count, [](FieldView* v) { return std::to_string(v->U64()); });
}

void SyncSamples(FieldReader* f) {
  f->Full();
  const std::uint32_t count = f->U32("entryCount");
  f->Rows("samples", count, [](FieldView* v) { return std::to_string(v->U32()); });
}

void SampleDependencies(FieldReader* f) {
  f->Full();
  f->RestHex("samples");
}

void SampleToGroup(FieldReader* f) {
  f->Full();
  f->Type("groupingType");
  if (f->Version() == 1) f->U32("groupingTypeParameter");
  const std::uint32_t count = f->U32("entryCount");
  f->Rows("entries", count, [](FieldView* v) {
    const std::uint32_t samples = v->U32();
    return std::to_string(samples) + " x " + std::to_string(v->U32());
  });
}

void CompactSampleToGroup(FieldReader* f) {
  f->Full();
  f->Type("groupingType");
  if ((f->Flags() & 0x40) != 0) f->U32("groupingTypeParameter");
  f->U32("patternCount");
}

void GroupDescriptions(FieldReader* f) {
  f->Full();
  f->Type("groupingType");
  if (f->Version() >= 1) f->U32("defaultLength");
  if (f->Version() >= 2) f->U32("defaultIndex");
  f->U32("entryCount");
  f->RestHex("entries");
}

constexpr FieldParserRow kTableParsers[] = {
    {FourCC("stts"), TimeToSample},         {FourCC("ctts"), CompositionOffsets},
    {FourCC("cslg"), CompositionToDecode},  {FourCC("stsc"), SampleToChunk},
    {FourCC("stsz"), SampleSizes},          {FourCC("stz2"), CompactSampleSizes},
    {FourCC("stco"), ChunkOffsets},         {FourCC("co64"), LargeChunkOffsets},
    {FourCC("stss"), SyncSamples},          {FourCC("stps"), SyncSamples},
    {FourCC("sdtp"), SampleDependencies},   {FourCC("sbgp"), SampleToGroup},
    {FourCC("csgp"), CompactSampleToGroup}, {FourCC("sgpd"), GroupDescriptions},
};

}  // namespace

FieldParser TableFieldParser(std::uint32_t type) { return FindParser(kTableParsers, type); }

}  // namespace mp4
