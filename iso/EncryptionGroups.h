#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "iso/FieldView.h"

namespace mp4 {

/// CencSampleEncryptionInformationGroupEntry "seig" (ISO/IEC 23001-7, 6).
struct EncryptionGroup {
  bool isProtected = false;
  std::vector<std::array<std::uint8_t, 16>> keyIds;  ///< several with the multi-key flag
};

/// The grouping type of a SampleGroupDescriptionBox "sgpd" or SampleToGroupBox "sbgp" or
/// CompactSampleToGroupBox "csgp" (ISO/IEC 14496-12, 8.9); 0 when cut.
std::uint32_t ReadGroupingType(FieldView payload);

/// The "seig" entries of a SampleGroupDescriptionBox, as far as they are at hand. False when the
/// payload ends before the last entry does.
bool ReadEncryptionGroups(FieldView payload, std::vector<EncryptionGroup>* groups);

}  // namespace mp4
