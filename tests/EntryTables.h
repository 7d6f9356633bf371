#pragma once

#include <initializer_list>
#include <utility>

#include "boxes/base/Mp4Context.h"
#include "io/FourCC.h"
#include "io/Mp4StreamReader.h"
#include "io/mmBufReader.h"
#include "tests/Bytes.h"
#include "tests/Fixtures.h"

namespace entry_tables {

/// A context whose current track has the handler given.
class OneTrack {
 public:
  explicit OneTrack(const char (&handler)[5], MP4_FILE_MODE mode = MP4_FILE_MODE_MP4) {
    track = context.AddTrack(1);
    context.SetCurrentTrack(1);
    context.fileMode = mode;
    track->handlerType = mp4::FourCC(handler);
  }

  Mp4Context context;
  Mp4Context::TRACK* track;
};

/// Has a box read a whole payload from memory.
template <class Box>
bool ReadPayload(Box* box, const Bytes& payload, Mp4Context* context = nullptr) {
  mmBufReader reader(payload.data(), payload.size());
  return box->ReadData(&reader, static_cast<long long>(payload.size()), context);
}

/// A file on disk, opened for a box to read.
class OpenedFile {
 public:
  explicit OpenedFile(const Bytes& bytes) : file(bytes) { reader.SetFilePath(file.wide().c_str()); }

  TempFile file;
  Mp4StreamReader reader;
};

using TimeRuns = std::initializer_list<std::pair<std::uint32_t, std::uint32_t>>;

/// Payload of a time-to-sample box; `count` is what the box declares.
inline Bytes SttsPayload(std::uint32_t count, TimeRuns runs) {
  Bytes payload = Bytes().Be32(0).Be32(count);
  for (const auto& [samples, delta] : runs) payload.Be32(samples).Be32(delta);
  return payload;
}
inline Bytes SttsPayload(TimeRuns runs) {
  return SttsPayload(static_cast<std::uint32_t>(runs.size()), runs);
}

/// Payload of a sample size box.
inline Bytes StszPayload(std::uint32_t constant, std::uint32_t count,
                         std::initializer_list<std::uint32_t> sizes = {}) {
  Bytes payload = Bytes().Be32(0).Be32(constant).Be32(count);
  for (const std::uint32_t size : sizes) payload.Be32(size);
  return payload;
}

/// Payload of a sync sample box.
inline Bytes StssPayload(std::uint32_t count, std::initializer_list<std::uint32_t> numbers = {}) {
  Bytes payload = Bytes().Be32(0).Be32(count);
  for (const std::uint32_t number : numbers) payload.Be32(number);
  return payload;
}

}  // namespace entry_tables

using namespace entry_tables;
