#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "boxes/base/Mp4Context.h"
#include "boxes/tables/BoxSTCO.h"
#include "boxes/tables/BoxSTSC.h"
#include "io/FourCC.h"
#include "io/mmBufReader.h"
#include "tests/Bytes.h"

namespace chunk_tables {

/// Table payloads, whole boxes and track records for the tests of the sample tables.

/// Version, flags and a count before the rows.
inline Bytes CountedRows(std::uint32_t count, const std::vector<std::uint32_t>& words) {
  Bytes payload;
  payload.Be32(0).Be32(count);
  for (const std::uint32_t word : words) payload.Be32(word);
  return payload;
}

inline Bytes StscPayload(const std::vector<tagSTSC>& entries) {
  Bytes payload;
  payload.Be32(0).Be32(static_cast<std::uint32_t>(entries.size()));
  for (const tagSTSC& entry : entries) {
    payload.Be32(entry.firstChunk).Be32(entry.samplesPerChunk).Be32(entry.sampleDescriptionIndex);
  }
  return payload;
}

inline Bytes StcoPayload(const std::vector<std::uint32_t>& offsets) {
  return CountedRows(static_cast<std::uint32_t>(offsets.size()), offsets);
}

inline Bytes Co64Payload(const std::vector<std::uint64_t>& offsets) {
  Bytes payload;
  payload.Be32(0).Be32(static_cast<std::uint32_t>(offsets.size()));
  for (const std::uint64_t offset : offsets) payload.Be64(offset);
  return payload;
}

/// {count, delta} pairs.
inline Bytes SttsPayload(const std::vector<tagSTTS>& entries) {
  Bytes payload;
  payload.Be32(0).Be32(static_cast<std::uint32_t>(entries.size()));
  for (const tagSTTS& entry : entries) payload.Be32(entry.sampleCount).Be32(entry.sampleDelta);
  return payload;
}

inline Bytes StszPayload(const std::vector<std::uint32_t>& sizes) {
  Bytes payload;
  payload.Be32(0).Be32(0).Be32(static_cast<std::uint32_t>(sizes.size()));
  for (const std::uint32_t size : sizes) payload.Be32(size);
  return payload;
}

inline Bytes ConstantStszPayload(std::uint32_t size, std::uint32_t count) {
  return Bytes().Be32(0).Be32(size).Be32(count);
}

inline Bytes StssPayload(const std::vector<std::uint32_t>& numbers) {
  return CountedRows(static_cast<std::uint32_t>(numbers.size()), numbers);
}

/// A description without entries.
inline Bytes EmptyStsd() { return Box("stsd", Bytes().Be32(0).Be32(0)); }

/// Has a box read a whole payload from memory.
template <class AnyBox>
bool ReadFrom(AnyBox* box, const Bytes& payload, Mp4Context* context = nullptr) {
  mmBufReader reader(payload.data(), payload.size());
  return box->ReadData(&reader, static_cast<long long>(payload.size()), context);
}

/// A context whose one track, ID 1, is current.
struct OneTrack {
  explicit OneTrack(std::uint32_t handler) {
    track = context.AddTrack(1);
    context.SetCurrentTrack(1);
    track->handlerType = handler;
  }
  /// QuickTime audio whose sample table counts the samples inside packets.
  void Packetised(std::uint32_t samplesPerPacket, std::int32_t compressionId = 0) {
    context.SetMovMode();
    track->samplesPerPacket = samplesPerPacket;
    track->compressionId = compressionId;
  }

  Mp4Context context;
  Mp4Context::TRACK* track = nullptr;
};

inline constexpr std::uint32_t kSound = mp4::FourCC("soun");
inline constexpr std::uint32_t kVideo = mp4::FourCC("vide");

}  // namespace chunk_tables

using namespace chunk_tables;
