#pragma once

#include <optional>
#include <string>

#include "inspect/Findings.h"
#include "inspect/Movie.h"
#include "iso/FieldView.h"

namespace mp4 {

/// Bytes of descriptors, wherever they stand.
struct DescriptorBytes {
  BoxId box;                            ///< that holds or reads them
  std::string path;                     ///< of what holds them
  const unsigned char* first;           ///< the first of them
  std::optional<std::uint64_t> offset;  ///< of that byte in the file
};

/// The number in an IPMP_DescriptorPointer or IPMP_Descriptor (ISO/IEC 14496-1, 7.2.6.13 and
/// 7.2.6.14); extended ones with 0xFF in front.
std::uint32_t ReadIpmpId(FieldView payload);

/// Notes an IPMP_Descriptor for those that point to it. One with a "sinf" is evidence; what
/// another means nobody can tell.
void InspectIpmpDescriptor(Findings* findings, FieldView payload, const DescriptorBytes& where,
                           MovieFacts* movie);

/// Looks at the descriptors of an "esds" box for protection of its stream. `subject` names the
/// sample entry. Returns the stream's type (ISO/IEC 14496-1, table 6), 0 when unreadable.
std::uint8_t InspectElementaryStream(Findings* findings, BoxId esds, const Subject& subject,
                                     MovieFacts* movie);

/// Looks at the descriptors of an ObjectDescriptorBox "iods" (ISO/IEC 14496-14, 5.5) and of an
/// IPMPControlBox "ipmc" (ISO/IEC 14496-12, 8.12.4).
void InspectInitialObjects(Findings* findings, BoxId iods, MovieFacts* movie);
void InspectIpmpControl(Findings* findings, BoxId ipmc, MovieFacts* movie);

/// Once all descriptors were looked at: a stream that points to one of them is protected, and one
/// that points elsewhere may be.
void ResolveIpmpPointers(Findings* findings, MovieFacts* movie);

}  // namespace mp4
