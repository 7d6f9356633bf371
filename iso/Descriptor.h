#pragma once

#include <cstdint>

#include "iso/FieldView.h"

namespace mp4 {

/// Tags of descriptors (ISO/IEC 14496-1, 7.2.2) and commands (7.2.5) that name protection.
enum DescriptorTag : std::uint8_t {
  kTagObjectDescriptor = 0x01,
  kTagInitialObjectDescriptor = 0x02,
  kTagEs = 0x03,
  kTagIpmpPointer = 0x0A,
  kTagIpmpDescriptor = 0x0B,
  kTagEsIdInc = 0x0E,
  kTagEsIdRef = 0x0F,
  kTagFileInitialObjectDescriptor = 0x10,
  kTagFileObjectDescriptor = 0x11,
  kTagIpmpTools = 0x60,
  kCommandUpdate = 0x01,
  kCommandEsUpdate = 0x03,
  kCommandIpmpUpdate = 0x05,
};

/// A descriptor or a command: both begin with a tag and a length in up to four bytes.
struct Descriptor {
  std::uint8_t tag = 0;
  FieldView payload;
};

/// Reads one and moves behind it. False at the end and when it does not fit.
bool ReadDescriptor(FieldView* fields, Descriptor* descriptor);

}  // namespace mp4
