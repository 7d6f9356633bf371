#include "fuzz/TableTwins.h"

#include <algorithm>

#include "io/FourCC.h"
#include "io/mmBufReader.h"

namespace fuzz {

namespace {

constexpr std::uint32_t kMostRows = 700;
/// Samples up to which the plain tables are walked or filled one by one.
constexpr std::uint32_t kNear = 4000;

template <class Box>
void Read(Box* box, const Bytes& payload, Mp4Context* context) {
  mmBufReader reader(payload.data(), payload.size());
  Demand(box->ReadData(&reader, static_cast<long long>(payload.size()), context));
}

/// Rows that are there, and the count that is declared.
struct Shape {
  explicit Shape(FuzzBytes* input) {
    const std::uint32_t b = input->Byte();
    rows = b < 250 ? b : b == 255 ? kMostRows : (b - 248) * 65;
    declared = input->Bit() ? input->Number() : rows;
  }
  std::uint32_t rows;
  std::uint32_t declared;
};

/// The rows a box counts: as declared, but no more than there are.
std::int32_t Counted(const Shape& shape) {
  return std::min(static_cast<std::int32_t>(shape.declared), static_cast<std::int32_t>(shape.rows));
}

bool IsFar(std::uint32_t sample) { return sample > kNear; }

}  // namespace

TrackTwin::TrackTwin(FuzzBytes* input) : record(context.AddTrack(1)) {
  constexpr std::uint32_t kHandlers[] = {mp4::FourCC("vide"), mp4::FourCC("soun"),
                                         mp4::FourCC("soun"), mp4::FourCC("text")};
  const std::uint32_t flags = input->Byte();
  context.SetCurrentTrack(1);
  context.fileMode = (flags & 4) != 0 ? MP4_FILE_MODE_MOV : MP4_FILE_MODE_MP4;
  record->handlerType = kHandlers[flags & 3];
  record->format = (flags & 8) != 0 ? mp4::FourCC("samr") : mp4::FourCC("mp4a");
  record->compressionId = (flags & 16) != 0 ? -2 : 0;
  alone = (flags & 0xE0) == 0xE0;
  if ((flags & 0x20) != 0) {
    record->samplesPerPacket = input->Number();
    record->bytesPerFrame = input->Number();
    record->bitsPerSample = input->Number();
    record->channels = input->Number();
  }
  if ((flags & 0x40) != 0) record->timescale = static_cast<std::int32_t>(input->Number());
  if ((flags & 0x80) != 0) record->duration = input->Time();

  plain.video = record->handlerType == mp4::FourCC("vide");
  plain.audio = record->handlerType == mp4::FourCC("soun");
  plain.quickTime = context.fileMode == MP4_FILE_MODE_MOV;
  plain.samr = record->format == mp4::FourCC("samr");
  plain.compressionId = record->compressionId;
  plain.samplesPerPacket = record->samplesPerPacket;
  plain.bytesPerFrame = record->bytesPerFrame;
  plain.bitsPerSample = record->bitsPerSample;
  plain.channels = record->channels;
  plain.timescale = record->timescale;
  plain.duration = record->duration;
}

void TrackTwin::DemandSame() const {
  Demand(record->numSamples == plain.numSamples && record->duration == plain.duration);
  Demand(record->frameRateNum == plain.frameRateNum && record->frameRateDen == plain.frameRateDen);
  Demand(record->bitRate == plain.bitRate && record->maxSampleSize == plain.maxSampleSize);
  Demand(record->totalSampleBytes == plain.totalSampleBytes);
  Demand(record->constSampleCount == plain.constSampleCount);
  Demand(record->constSampleSize == plain.constSampleSize);
}

TimeTwin::TimeTwin(FuzzBytes* input) : track(input) {
  const Shape shape(input);
  std::vector<reference::TimeRow> rows;
  Bytes payload = Bytes().Be32(0).Be32(shape.declared);
  for (std::uint32_t i = 0; i < shape.rows; ++i) {
    rows.push_back({input->Number(), input->Number()});
    payload.Be32(rows.back().count).Be32(rows.back().delta);
  }
  payload.Fill(input->Below(8), 0x5A);
  Read(&box, payload, track.ContextOrNull());
  plain.Read(rows, shape.declared, track.PlainOrNull());
}

void TimeTwin::DemandSameState() {
  Demand(box.GetTotalSamples() == plain.totalSamples && box.GetEntryCount() == plain.entryCount);
  track.DemandSame();
  const auto& table = track.record->timeToSampleTable;
  Demand(table.size() == plain.published.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    Demand(table[i].sampleCount == plain.published[i].count);
    Demand(table[i].sampleDelta == plain.published[i].delta);
  }
}

void TimeTwin::Ask(std::int32_t sample, std::int64_t time) {
  Demand(box.GetSampleDuration(sample) == plain.GetSampleDuration(sample));
  Demand(box.GetPTS(sample) == plain.GetPTS(sample));
  Demand(box.GetSampleIndexBefore(time) == plain.GetSampleIndexBefore(time));
}

void TimeTwin::Append(std::uint32_t duration, std::uint32_t count) {
  const long long rows = static_cast<long long>(plain.held.size());
  const long long most = box.MostRowsFor(duration, count);
  box.AppendTimes(duration, count);
  for (std::uint32_t i = 0; i < count; ++i) plain.AppendTime(duration);
  Demand(static_cast<long long>(plain.held.size()) - rows <= most);
}

void TimeTwin::Move(FuzzBytes* input) {
  switch (input->Below(8)) {
    case 0:
      Append(input->Number(), input->Below(100));
      break;
    case 1:
      box.OptimizeAudio();
      plain.OptimizeAudio();
      DemandSameState();
      break;
    case 2:
      for (std::int32_t first = input->Byte(), i = first; i < first + 30; ++i) Ask(i, i * 10);
      break;
    case 3: {
      const auto sample = static_cast<std::int32_t>(input->Number());
      Ask(sample, reference::Sub64(plain.GetPTS(sample), input->Below(3)));
      break;
    }
    default: {
      const auto sample = static_cast<std::int32_t>(input->Number());
      Ask(sample, input->Time());
    }
  }
}

SizeTwin::SizeTwin(FuzzBytes* input) : track(input) {
  const Shape shape(input);
  const std::uint32_t constant = input->Bit() ? input->Number() : 0;
  std::vector<std::uint32_t> rows;
  Bytes payload = Bytes().Be32(0).Be32(constant).Be32(shape.declared);
  for (std::uint32_t i = 0; i < shape.rows; ++i) {
    rows.push_back(input->Number());
    payload.Be32(rows.back());
  }
  payload.Fill(input->Below(4), 0x5A);
  Read(&box, payload, track.ContextOrNull());
  plain.Read(constant, shape.declared, rows, track.PlainOrNull());
}

void SizeTwin::DemandSameState() {
  Demand(box.GetSampleCount() == plain.count && box.GetConstantSize() == plain.constant);
  Demand(box.GetLargestSize() == plain.largest);
  track.DemandSame();
  const auto& table = track.record->sampleSizeTable;
  Demand(table.size() == plain.published.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    Demand(table[i].sampleSize == plain.published[i]);
  }
}

/// A constant form of very many samples is too much for the plain table to spell out.
void SizeTwin::Append(std::uint32_t size, std::uint32_t count) {
  const bool spells = plain.constant != 0 || plain.held.empty();
  if (spells && IsFar(plain.count) && (size != plain.constant || size == 0)) return;
  box.AppendSizes(size, count);
  for (std::uint32_t i = 0; i < count; ++i) plain.AppendSize(size);
}

void SizeTwin::Move(FuzzBytes* input) {
  switch (input->Below(5)) {
    case 0:
      Append(input->Number(), input->Below(200));
      break;
    case 1:
      Append(plain.constant, input->Below(200));
      break;
    case 2: {
      const auto first = static_cast<std::int32_t>(input->Number());
      const auto wide = static_cast<std::int32_t>(input->Below(2) * 1500 + input->Byte());
      const std::int32_t end = reference::Wrap32(std::int64_t{first} + wide);
      Demand(box.SumSizes(first, end) == plain.SumSizes(first, end));
      break;
    }
    case 3:
      DemandSameState();
      break;
    default: {
      const auto sample = static_cast<std::int32_t>(input->Number());
      Demand(box.GetSampleSize(sample) == plain.GetSampleSize(sample));
    }
  }
}

SyncTwin::SyncTwin(FuzzBytes* input) {
  const Shape shape(input);
  const bool ascending = input->Bit();
  const auto counted = static_cast<std::uint32_t>(std::max(Counted(shape), 0));
  std::vector<std::uint32_t> rows;
  Bytes payload = Bytes().Be32(0).Be32(shape.declared);
  for (std::uint32_t i = 0; i < shape.rows; ++i) {
    const std::uint32_t before = ascending && !rows.empty() ? rows.back() : 0;
    rows.push_back(before + input->Number());
    payload.Be32(rows.back());
  }
  Read(&box, payload, nullptr);
  rows.resize(counted);
  plain.Read(rows);
  plain.entryCount = Counted(shape);
  plain.buffer = static_cast<std::int32_t>(shape.declared) >= 1;
}

void SyncTwin::DemandSameState() { Demand(box.GetEntryCount() == plain.entryCount); }

void SyncTwin::Move(FuzzBytes* input) {
  if (input->Below(3) == 0) {
    const std::uint32_t number = input->Number();
    plain.AppendRAP(number);
    Demand(box.AppendRAP(number) == plain.held.size() * 4);
    return;
  }
  const auto first = static_cast<std::int32_t>(input->Number());
  for (std::int32_t n = input->Below(4); n >= 0; --n) {
    const std::int32_t i = reference::Wrap32(std::int64_t{first} + n);
    Demand(box.GetSampleIndexBeforeThis(i) == plain.GetSampleIndexBeforeThis(i));
    Demand(box.GetSampleIndex(i) == plain.GetSampleIndex(i));
  }
}

ChunkTwin::ChunkTwin(FuzzBytes* input) : track(input) {
  const Shape shape(input);
  const bool ascending = input->Bit();
  Bytes payload = Bytes().Be32(0).Be32(shape.declared);
  std::vector<tagSTSC> rows;
  for (std::uint32_t i = 0; i < shape.rows; ++i) {
    const std::uint32_t before = ascending && !rows.empty() ? rows.back().firstChunk : 0;
    rows.push_back({before + input->Number(), input->Number(), i});
    plain.Add(rows.back());
    payload.Be32(rows.back().firstChunk).Be32(rows.back().samplesPerChunk).Be32(i);
  }
  Read(&box, payload, track.ContextOrNull());
  const auto packet = static_cast<std::int32_t>(track.plain.samplesPerPacket);
  const bool packets = track.plain.quickTime && track.plain.audio && packet >= 1;
  if (packets && track.plain.compressionId != -2 && !track.alone) plain.divisor = packet;
  plain.count = Counted(shape);
  for (std::int32_t i = 0; i < plain.count; ++i) Publish(rows[static_cast<std::size_t>(i)]);
  if (input->Bit()) Ready();
}

void ChunkTwin::Publish(tagSTSC row) {
  if (track.alone || !track.plain.audio) return;
  const auto samples = static_cast<std::int32_t>(row.samplesPerChunk) / plain.divisor;
  row.samplesPerChunk = static_cast<std::uint32_t>(samples);
  published.push_back(row);
}

void ChunkTwin::DemandSameState() {
  Demand(box.GetCurSampleIndex() == plain.sample && box.GetCurChunkIndex() == plain.chunk);
  Demand(box.GetFirstSampleInCurChunk() == plain.first);
  const auto& table = track.record->sampleToChunkTable;
  Demand(table.size() == published.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    Demand(table[i].firstChunk == published[i].firstChunk);
    Demand(table[i].samplesPerChunk == published[i].samplesPerChunk);
    Demand(table[i].sampleDescriptionIndex == published[i].sampleDescriptionIndex);
  }
}

void ChunkTwin::Ready() {
  Demand(box.ReadyToDemux() == 1);
  plain.ReadyToDemux();
}

void ChunkTwin::Append(const tagSTSC& row, std::uint32_t chunks) {
  Demand(box.AppendSampleToChunks(row.sampleDescriptionIndex, row.samplesPerChunk, chunks));
  for (; chunks > 0; --chunks) {
    Publish(plain.AppendSampleToChunk(row.sampleDescriptionIndex, row.samplesPerChunk));
  }
}

/// Too far for the plain cursor: that the box comes back from there is what counts.
void ChunkTwin::SeekFar(std::int32_t sample) {
  box.Seek(sample);
  Demand(box.GetCurSampleIndex() == static_cast<std::uint32_t>(sample));
  Ready();
}

void ChunkTwin::Move(FuzzBytes* input) {
  switch (input->Below(6)) {
    case 0:
      Ready();
      break;
    case 1: {
      const tagSTSC row{0, input->Number(), input->Byte()};
      Append(row, input->Below(5));
      break;
    }
    case 2:
      for (int n = input->Byte(); n > 0; --n) Demand(box.NextSample() == plain.NextSample());
      break;
    default: {
      const auto sample = static_cast<std::int32_t>(std::min(input->Number(), 0x7FFFFFFFu));
      if (IsFar(static_cast<std::uint32_t>(sample))) return SeekFar(sample);
      box.Seek(sample);
      plain.Seek(sample);
    }
  }
  DemandSameState();
}

OffsetTwin::OffsetTwin(FuzzBytes* input)
    : track(input), narrow(input->Bit()), box(narrow ? mp4::FourCC("stco") : mp4::FourCC("co64")) {
  const Shape shape(input);
  Bytes payload = Bytes().Be32(0).Be32(shape.declared);
  for (std::uint32_t i = 0; i < shape.rows; ++i) {
    rows.push_back(narrow ? input->Number() : static_cast<std::uint64_t>(input->Time()));
    if (narrow) {
      payload.Be32(static_cast<std::uint32_t>(rows.back()));
    } else {
      payload.Be64(rows.back());
    }
  }
  Read(&box, payload, track.ContextOrNull());
  count = Counted(shape);
}

void OffsetTwin::DemandSameState() {
  const auto& table = track.record->chunkOffsetTable;
  const bool publishes = track.plain.audio && !track.alone;
  Demand(table.size() == static_cast<std::size_t>(publishes ? std::max(count, 0) : 0));
  for (std::size_t i = 0; i < table.size(); ++i) Demand(table[i].chunkOffset == rows[i]);
}

void OffsetTwin::Move(FuzzBytes* input) {
  if (input->Below(3) == 0) {
    const auto offset = static_cast<std::uint64_t>(input->Time());
    box.AppendChunk(offset);
    rows.push_back(narrow ? offset & 0xFFFFFFFF : offset);
    ++count;
    DemandSameState();
    return;
  }
  const auto k = static_cast<std::int32_t>(input->Number());
  const bool holds = k >= 0 && k < count;
  Demand(box.GetChunkOffset(k) == (holds ? rows[static_cast<std::size_t>(k)] : ~std::uint64_t{0}));
}

CursorTwin::CursorTwin(FuzzBytes* input) {
  Read(&box, Tables(input), nullptr);
  Ready();
}

Bytes CursorTwin::Tables(FuzzBytes* input) {
  auto& tables = plain.tables;
  Bytes times, chunks, sizes, offsets, syncs;
  for (std::uint32_t n = input->Byte(); n > 0; --n) {
    tables.times.push_back({input->Number(), input->Number()});
    times.Be32(tables.times.back().sampleCount).Be32(tables.times.back().sampleDelta);
  }
  std::uint32_t chunk = input->Below(3);
  for (std::uint32_t n = input->Byte(); n > 0; --n) {
    const tagSTSC row{chunk, input->Number(), 1};
    plain.chunks.Add(row);
    chunks.Be32(row.firstChunk).Be32(row.samplesPerChunk).Be32(1);
    chunk += input->Number();
  }
  if (input->Bit()) tables.constantSize = input->Number();
  for (std::uint32_t n = input->Byte(); n > 0 && tables.constantSize == 0; --n) {
    tables.sizes.push_back(input->Number());
    sizes.Be32(tables.sizes.back());
  }
  for (std::uint32_t n = input->Byte(); n > 0; --n) {
    tables.offsets.push_back(static_cast<std::uint64_t>(input->Time()));
    offsets.Be64(tables.offsets.back());
  }
  tables.hasSyncs = input->Bit();
  for (std::uint32_t n = tables.hasSyncs ? input->Byte() : 0; n > 0; --n) {
    tables.syncs.push_back(input->Number());
    syncs.Be32(tables.syncs.back());
  }
  const auto table = [](const char* type, const Bytes& rows, std::size_t width) {
    const auto count = static_cast<std::uint32_t>(rows.size() / width);
    return Box(type, Bytes().Be32(0).Be32(count) + rows);
  };
  const Bytes sizeBox = Bytes().Be32(0).Be32(tables.constantSize) +
                        Bytes().Be32(static_cast<std::uint32_t>(tables.sizes.size())) + sizes;
  Bytes all = table("stsd", {}, 1) + table("stts", times, 8) + table("stsc", chunks, 12) +
              Box("stsz", sizeBox) + table("co64", offsets, 8);
  return tables.hasSyncs ? all + table("stss", syncs, 4) : all;
}

void CursorTwin::Ready() {
  Demand(box.ReadyToDemux(nullptr) == 1);
  plain.ReadyToDemux();
}

void CursorTwin::DemandSameState() {
  Demand(box.curTime == plain.curTime && box.curOffset == plain.curOffset);
  Demand(box.curSize == plain.curSize && box.curDuration == plain.curDuration);
  Demand(box.curSample == plain.curSample && box.curChunk == plain.curChunk);
  Demand(box.sampleCount == plain.sampleCount);
}

void CursorTwin::Seek(std::int64_t time) {
  if (IsFar(static_cast<std::uint32_t>(plain.SeekTarget(time)))) {
    box.Seek(time);
    return Ready();
  }
  Demand(box.Seek(time) == plain.Seek(time));
}

/// One more sample in a chunk of its own, as a fragment adds it.
void CursorTwin::Append(FuzzBytes* input) {
  auto& tables = plain.tables;
  const auto offset = static_cast<std::uint64_t>(input->Time());
  const std::uint32_t duration = input->Number();
  if (tables.constantSize == 0 && !tables.sizes.empty()) {
    tables.sizes.push_back(input->Number());
    box.sampleSizeBox->AppendSize(tables.sizes.back());
  }
  box.timeToSampleBox->AppendTime(duration);
  box.chunkOffsetBox->AppendChunk(offset);
  box.sampleToChunkBox->AppendSampleToChunk(1, 1);
  if (!tables.times.empty() && tables.times.back().sampleDelta == duration) {
    ++tables.times.back().sampleCount;
  } else {
    tables.times.push_back({1, duration});
  }
  tables.offsets.push_back(offset);
  plain.chunks.AppendSampleToChunk(1, 1);
  if (!tables.hasSyncs) return;
  tables.syncs.push_back(input->Number());
  box.syncSampleBox->AppendRAP(tables.syncs.back());
}

void CursorTwin::Move(FuzzBytes* input) {
  switch (input->Below(6)) {
    case 0:
      Ready();
      break;
    case 1:
      Append(input);
      break;
    case 2:
      for (int n = input->Byte(); n > 0; --n) Demand(box.Next() == plain.Next());
      break;
    default:
      Seek(input->Time());
  }
  DemandSameState();
}

}  // namespace fuzz
