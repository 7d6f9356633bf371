#pragma once

#include <cstdint>
#include <vector>

#include "boxes/base/Mp4Context.h"
#include "boxes/track/BoxSTBL.h"
#include "fuzz/FuzzBytes.h"
#include "tests/Bytes.h"
#include "tests/ReferenceCursor.h"
#include "tests/ReferenceTables.h"

/// Each twin is a sample table box and the same table in its plainest form, made from the fuzzer's
/// bytes. Move makes one query or append in both; any difference stops the fuzzer.
namespace fuzz {

/// A track record and its reference with the same properties.
class TrackTwin {
 public:
  explicit TrackTwin(FuzzBytes* input);
  void DemandSame() const;
  /// Null for boxes that are read by themselves.
  Mp4Context* ContextOrNull() { return alone ? nullptr : &context; }
  reference::Track* PlainOrNull() { return alone ? nullptr : &plain; }

  Mp4Context context;
  Mp4Context::TRACK* record;
  reference::Track plain;
  bool alone;
};

/// "stts".
class TimeTwin {
 public:
  explicit TimeTwin(FuzzBytes* input);
  void DemandSameState();
  void Move(FuzzBytes* input);

 private:
  void Ask(std::int32_t sample, std::int64_t time);
  void Append(std::uint32_t duration, std::uint32_t count);

  TrackTwin track;
  BoxSTTS box;
  reference::TimeTable plain;
};

/// "stsz".
class SizeTwin {
 public:
  explicit SizeTwin(FuzzBytes* input);
  void DemandSameState();
  void Move(FuzzBytes* input);

 private:
  void Append(std::uint32_t size, std::uint32_t count);

  TrackTwin track;
  BoxSTSZ box;
  reference::SizeTable plain;
};

/// "stss".
class SyncTwin {
 public:
  explicit SyncTwin(FuzzBytes* input);
  void DemandSameState();
  void Move(FuzzBytes* input);

 private:
  BoxSTSS box;
  reference::SyncTable plain;
};

/// "stsc": the cursor, and what is published.
class ChunkTwin {
 public:
  explicit ChunkTwin(FuzzBytes* input);
  void DemandSameState();
  void Move(FuzzBytes* input);

 private:
  void Publish(tagSTSC row);
  void Ready();
  void Append(const tagSTSC& row, std::uint32_t chunks);
  void SeekFar(std::int32_t sample);

  TrackTwin track;
  BoxSTSC box;
  reference_cursor::SampleToChunk plain;
  std::vector<tagSTSC> published;
};

/// "stco" and "co64".
class OffsetTwin {
 public:
  explicit OffsetTwin(FuzzBytes* input);
  void DemandSameState();
  void Move(FuzzBytes* input);

 private:
  TrackTwin track;
  bool narrow;
  BoxSTCO box;
  std::vector<std::uint64_t> rows;
  std::int32_t count = 0;
};

/// "stbl": the cursor over all tables.
class CursorTwin {
 public:
  explicit CursorTwin(FuzzBytes* input);
  void DemandSameState();
  void Move(FuzzBytes* input);

 private:
  Bytes Tables(FuzzBytes* input);
  void Ready();
  void Seek(std::int64_t time);
  void Append(FuzzBytes* input);

  BoxSTBL box;
  reference_cursor::Cursor plain;
};

}  // namespace fuzz
