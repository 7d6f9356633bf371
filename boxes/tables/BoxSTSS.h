#pragma once

#include <cstdint>
#include <limits>
#include <memory>

#include "boxes/base/BoxBase.h"
#include "boxes/base/Mp4Context.h"
#include "boxes/tables/PrefixIndex.h"
#include "io/mmBuffer.h"

namespace mp4 {

/// The largest 0-based sync sample before a row of the sync sample table.
struct SyncState {
  static constexpr std::size_t kRowBytes = 4;
  SyncState After(const unsigned char* row) const;

  std::int32_t most = std::numeric_limits<std::int32_t>::min();
};

}  // namespace mp4

/// Sync sample box "stss" (ISO/IEC 14496-12, SyncSampleBox): the 1-based numbers of the samples
/// that decode by themselves, compared as signed. A track without the box has only such samples.
class MP4JUDGE_API BoxSTSS : public BoxBase {
 public:
  /// Fails on a null reader, a negative size, or when memory is refused. The count alone says how
  /// much is read. A table that comes out empty sets the track's `syncTableState` to -1.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  /// Negative when the file declares a negative count.
  int GetEntryCount() { return entryCount; }
  /// The value at byte `i` of the table: see ByteOffsetOf in the source. All ones out of range.
  unsigned int GetSampleIndex(int i);
  /// The last 0-based sync sample at or before `sample` (0-based), 0 when the first is later; all
  /// ones when no table was read. Entries are looked at in order up to the first later one.
  /// O(log n), amortised constant for samples asked in rising order.
  unsigned int GetSampleIndexBeforeThis(int sample);

  /// Adds a 1-based sample number behind the last; returns the bytes then held.
  unsigned int AppendRAP(unsigned int sampleNumber);

  /// The rows as file bytes, null before the first.
  const mmBuffer* GetEntries() const { return entries.get(); }
  /// False once memory was refused: a sync sample is missing.
  bool IsIntact() const { return intact; }

 private:
  std::unique_ptr<mmBuffer> entries;
  std::int32_t entryCount = 0;
  bool intact = true;
  mp4::PrefixIndex<mp4::SyncState> index;
};
