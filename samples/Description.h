#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "iso/BoxTree.h"
#include "samples/ChunkRows.h"
#include "samples/Sample.h"

namespace mp4 {

/// A sample entry (ISO/IEC 14496-12, 8.5.2) or QuickTime sample description: what the samples that
/// name it are, and how they are protected.
struct Description {
  std::uint32_t format = 0;    ///< type of the entry, in the order of mp4::FourCC
  std::uint32_t original = 0;  ///< the format before protection ("frma"), 0 when not told
  bool isProtected = false;    ///< by a "sinf" or by its format
  bool byDefault = false;      ///< whether samples outside of any group are ("tenc")
  std::uint32_t scheme = 0;    ///< of the first "schm", 0 without one
  bool elsewhere = false;      ///< its data reference names another file

  std::uint32_t width = 0;  ///< of video, in pixels
  std::uint32_t height = 0;

  std::uint16_t soundVersion = 0;  ///< QuickTime's; 0 for everything else
  std::uint32_t channels = 0;
  std::uint32_t bits = 0;  ///< of an uncompressed sound sample
  double rate = 0;         ///< sound samples a second
  std::int16_t compression = 0;
  std::uint32_t framesPerPacket = 0;  ///< QuickTime sound, version 1 and 2
  std::uint32_t bytesPerPacket = 0;   ///< of all channels

  std::uint32_t configType = 0;       ///< box of the decoder configuration: "avcC", "esds"... or 0
  std::vector<unsigned char> config;  ///< its payload

  /// The format that decides about the codec.
  std::uint32_t Codec() const { return original != 0 ? original : format; }
};

/// Reads a child of "stsd".
Description ReadDescription(BoxTree* tree, BoxId entry, std::uint32_t handler);

/// What samples have of the description that they name.
struct DescriptionSays {
  bool elsewhere = false;
  Told byDefault = Told::kUnknown;  ///< whether they are protected outside of any group
};

/// `index` counts from 1; nothing is known where there is no such description.
inline DescriptionSays NamedBy(const std::vector<Description>& all, std::uint32_t index) {
  if (index == 0 || index > all.size()) return {};
  const Description& named = all[index - 1];
  return {named.elsewhere, named.byDefault ? Told::kYes : Told::kNo};
}

/// How a constant size and decode deltas of 1 are to be read: QuickTime's sound tables count frames
/// then, and the sample description tells what a packet is.
Packing PackingOf(const Description& description, std::uint32_t tableSize);

}  // namespace mp4
