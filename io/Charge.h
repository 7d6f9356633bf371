#pragma once

#include <cstdint>

#include "io/ScanControl.h"
#include "io/mmStreamReader.h"

/// Charges to the account of the opening in progress, by the prices of io/Prices.h. A reader that
/// is used outside an opening carries no account and is charged nothing. False when the account
/// refuses.
namespace mp4 {

/// Bytes to be read in bulk, and the memory they will take.
inline bool Charge(mmStreamReader* reader, std::int64_t bytes, std::int64_t memory) {
  ScanControl* scan = reader->Scan();
  return scan == nullptr || (scan->TakeBytes(bytes) && scan->TakeMemory(memory));
}

/// One box header, or one step of a search through a box: it costs as much, and a few small boxes
/// can have the same bytes searched again and again.
inline bool ChargeStep(ScanControl* scan) { return scan == nullptr || scan->TakeHeader(); }
inline bool ChargeStep(mmStreamReader* reader) { return ChargeStep(reader->Scan()); }

}  // namespace mp4
