#include "io/ScanControl.h"

#include <algorithm>

#include "io/Limits.h"

namespace mp4 {

ScanControl::ScanControl(std::int64_t sourceSize, ScanControl* outer)
    : sourceSize(sourceSize),
      tablesUnread(outer != nullptr && outer->tablesUnread),
      account(outer != nullptr ? outer->account : &own) {
  if (outer == nullptr) {
    own.memory += Share(limits::kMemoryPerSourceByte);
    own.merge += Share(limits::kMergePerSourceByte);
    own.inflated = Share(limits::kInflatedPerSourceByte) + limits::kInflatedTotal;
  }
  account->headers +=
      sourceSize / (outer != nullptr ? limits::kBytesPerInflatedHeader : limits::kBytesPerHeader);
  account->bytes += Share(limits::kBytesReadPerSourceByte);
}

ScanControl::Account::Account()
    : headers(limits::kSpareHeaders),
      bytes(limits::kSpareBytesRead),
      memory(limits::kSpareMemory),
      merge(limits::kSpareMerge) {}

std::int64_t ScanControl::Share(std::int64_t perByte) const {
  return std::min(sourceSize, limits::kLargestCountedSource) * perByte;
}

}  // namespace mp4
