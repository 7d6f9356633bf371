#include "boxes/tables/BoxSTSC.h"

#include <algorithm>

#include "boxes/base/BoxReading.h"
#include "boxes/base/TableBody.h"
#include "io/FourCC.h"
#include "io/WrapMath.h"

namespace {

constexpr long long kSampleToChunkHeader = 8;  // version, flags, entry count
constexpr auto kEntry = static_cast<std::size_t>(mp4::kSampleToChunkEntry);
/// QuickTime's compression ID of audio whose sample table counts whole packets already.
constexpr std::int32_t kCountsPackets = -2;

std::uint32_t Divided(std::uint32_t samples, std::int32_t divisor) {
  return static_cast<std::uint32_t>(mp4::DividedCount(samples, divisor));
}

}  // namespace

bool BoxSTSC::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 1) return false;
  mp4::SkipFullBoxHeader(reader);
  const std::uint32_t count = reader->GetBe32();
  entryCount = 0;
  marks.Forget();
  onCommonWalk = false;
  cursor.readPos = 0;
  if (!mp4::ReadTableBody(reader, size - kSampleToChunkHeader, kEntry, &entries)) return false;
  entryCount = mp4::ClampCount(count, *entries, kEntry);
  if (context == nullptr) return true;
  fileMode = context->GetFileMode();
  track = context->GetCurrentTrack();
  if (track == nullptr) return true;
  if (fileMode == MP4_FILE_MODE_MOV) LearnPackets();
  return !PublishesEntries() || mp4::WithoutThrowing([this] { PublishAll(); });
}

void BoxSTSC::LearnPackets() {
  samplesPerPacket = static_cast<std::int32_t>(track->samplesPerPacket);
  compressionId = track->compressionId;
  const bool packets = samplesPerPacket >= 1 && compressionId != kCountsPackets;
  if (packets && PublishesEntries()) dividesByPacket = true;
}

bool BoxSTSC::PublishesEntries() const {
  return track != nullptr && track->handlerType == mp4::FourCC("soun");
}

void BoxSTSC::PublishAll() {
  auto& table = track->sampleToChunkTable;
  table.resize(entryCount > 0 ? static_cast<std::size_t>(entryCount) : 0);
  std::int64_t at = 0;
  for (tagSTSC& entry : table) {
    entry.firstChunk = entries->Be32At(at);
    entry.samplesPerChunk = Divided(entries->Be32At(at + 4), Divisor());
    entry.sampleDescriptionIndex = entries->Be32At(at + 8);
    at += mp4::kSampleToChunkEntry;
  }
}

int BoxSTSC::ReadyToDemux() {
  cursor = Walk().Start();
  onCommonWalk = true;
  return 1;
}

unsigned int BoxSTSC::NextSample() {
  if (++cursor.sample == 0) onCommonWalk = false;
  const std::uint32_t done = cursor.sample - cursor.firstSample;
  if (done == static_cast<std::uint32_t>(cursor.samplesInChunk)) Walk().FinishChunk(&cursor);
  return cursor.sample;
}

void BoxSTSC::Seek(int sample) {
  const auto target = static_cast<std::uint32_t>(std::max(sample, 0));
  if (cursor.sample > target) ReadyToDemux();
  if (onCommonWalk) marks.Approach(Walk(), target, &cursor);
  while (cursor.sample != target) Walk().Advance(&cursor, target - cursor.sample);
}

void BoxSTSC::AppendSampleToChunk(unsigned int sample_description_index,
                                  unsigned int samples_per_chunk) {
  AppendSampleToChunks(sample_description_index, samples_per_chunk, 1);
}

bool BoxSTSC::AppendSampleToChunks(unsigned int sample_description_index,
                                   unsigned int samples_per_chunk, std::size_t chunks) {
  if (!mp4::EnsureBuffer(&entries, mp4::kAppendCapacity)) return false;
  if (!entries->MakeRoom(chunks * kEntry)) return false;
  tagSTSC row{0, samples_per_chunk, sample_description_index};
  if (!MakeRoomToPublish(chunks)) return false;
  for (; chunks > 0; --chunks) {
    row.firstChunk = entries->Be32At((std::int64_t{entryCount} - 1) * mp4::kSampleToChunkEntry) + 1;
    AppendRow(row);
    if (PublishesEntries()) Publish(row);
  }
  return true;
}

void BoxSTSC::AppendRow(const tagSTSC& row) {
  // A cursor in the last entry has not seen where this one starts, and never will.
  if (cursor.entry >= mp4::WrapSub32(entryCount, 1)) onCommonWalk = false;
  marks.BeforeAppend(entryCount);
  unsigned char* to = entries->data.get() + entries->used;
  mp4::StoreBe32(to, row.firstChunk);
  mp4::StoreBe32(to + 4, row.samplesPerChunk);
  mp4::StoreBe32(to + 8, row.sampleDescriptionIndex);
  entries->used += kEntry;
  entryCount = mp4::WrapAdd32(entryCount, 1);
}

/// Grows by half like the buffer, so that appends one by one cost the same as many at once.
bool BoxSTSC::MakeRoomToPublish(std::size_t more) {
  if (!PublishesEntries()) return true;
  auto& table = track->sampleToChunkTable;
  if (table.capacity() - table.size() >= more) return true;
  const std::size_t grown = table.capacity() + table.capacity() / 2;
  return mp4::WithoutThrowing([&] { table.reserve(std::max(grown, table.size() + more)); });
}

void BoxSTSC::Publish(tagSTSC row) {
  row.samplesPerChunk = Divided(row.samplesPerChunk, Divisor());
  track->sampleToChunkTable.push_back(row);
}
