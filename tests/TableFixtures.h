#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "boxes/base/SampleRecords.h"
#include "io/FourCC.h"
#include "io/mmBufReader.h"
#include "io/mmBuffer.h"
#include "tests/Bytes.h"
#include "tests/OneTrack.h"

/// Payloads of sample tables, whose counts need not be those of their rows. Whole tables with right
/// counts are in MovieFixtures.h.
namespace fixture {

/// Has a box read a whole payload from memory.
template <class AnyBox>
bool ReadPayload(AnyBox* box, const Bytes& payload, Mp4Context* context = nullptr) {
  mmBufReader reader(payload.data(), payload.size());
  return box->ReadData(&reader, static_cast<long long>(payload.size()), context);
}

/// Has a table's bytes claim all of the address space, so that memory is refused to what is
/// appended.
inline void FillAddressSpace(const mmBuffer* entries) {
  auto* full = const_cast<mmBuffer*>(entries);
  full->used = full->capacity = SIZE_MAX;
}

/// Version, flags and a count before the rows.
inline Bytes CountedRows(std::uint32_t count, const std::vector<std::uint32_t>& words) {
  Bytes payload = Bytes().Be32(0).Be32(count);
  for (const std::uint32_t word : words) payload.Be32(word);
  return payload;
}

/// Payload of a time-to-sample box; `count` is what the box declares.
using TimeRuns = std::vector<tagSTTS>;
inline Bytes SttsPayload(std::uint32_t count, const TimeRuns& runs) {
  Bytes payload = Bytes().Be32(0).Be32(count);
  for (const auto& [samples, delta] : runs) payload.Be32(samples).Be32(delta);
  return payload;
}
inline Bytes SttsPayload(const TimeRuns& runs) {
  return SttsPayload(static_cast<std::uint32_t>(runs.size()), runs);
}

inline Bytes StscPayload(const std::vector<tagSTSC>& entries) {
  Bytes payload = Bytes().Be32(0).Be32(static_cast<std::uint32_t>(entries.size()));
  for (const tagSTSC& entry : entries) {
    payload.Be32(entry.firstChunk).Be32(entry.samplesPerChunk).Be32(entry.sampleDescriptionIndex);
  }
  return payload;
}

/// Payload of a sample size box.
inline Bytes StszPayload(std::uint32_t constant, std::uint32_t count,
                         std::initializer_list<std::uint32_t> sizes = {}) {
  Bytes payload = Bytes().Be32(0).Be32(constant).Be32(count);
  for (const std::uint32_t size : sizes) payload.Be32(size);
  return payload;
}

inline Bytes StcoPayload(const std::vector<std::uint32_t>& offsets) {
  return CountedRows(static_cast<std::uint32_t>(offsets.size()), offsets);
}

inline Bytes Co64Payload(const std::vector<std::uint64_t>& offsets) {
  Bytes payload = Bytes().Be32(0).Be32(static_cast<std::uint32_t>(offsets.size()));
  for (const std::uint64_t offset : offsets) payload.Be64(offset);
  return payload;
}

/// Payload of a sync sample box.
inline Bytes StssPayload(std::uint32_t count, std::initializer_list<std::uint32_t> numbers = {}) {
  return CountedRows(count, numbers);
}

/// A description without entries.
inline Bytes EmptyStsd() { return Box("stsd", Bytes().Be32(0).Be32(0)); }

inline constexpr std::uint32_t kSound = mp4::FourCC("soun");
inline constexpr std::uint32_t kVideo = mp4::FourCC("vide");

}  // namespace fixture
