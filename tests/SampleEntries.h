#pragma once

#include <string>
#include <string_view>

#include "boxes/base/Mp4Context.h"
#include "io/FourCC.h"
#include "io/Mp4StreamReader.h"
#include "io/mmBufReader.h"
#include "tests/Bytes.h"
#include "tests/Fixtures.h"
#include "tests/OneTrack.h"

namespace fixture {

inline std::string AsText(const Bytes& bytes) {
  return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

/// The 82 bytes of a visual sample entry from its format on. The name field takes 32 bytes.
inline Bytes VisualFields(std::string_view format, const Bytes& nameField = Bytes().Fill(32)) {
  return Bytes()
      .Text(format)
      .Fill(8, 0xEE)
      .Fill(16, 0xEE)
      .Be16(640)
      .Be16(480)
      .Fill(12, 0xEE)
      .Be16(1)
      .Append(nameField)
      .Be16(24)
      .Be16(0xFFFF);
}

/// The 32 bytes of a sound description of version 0 from its format on.
inline Bytes AudioFields(std::string_view format, unsigned channels, unsigned sampleSize,
                         unsigned rate, unsigned version = 0, unsigned compressionId = 0) {
  return Bytes()
      .Text(format)
      .Fill(8, 0xEE)
      .Be16(version)
      .Fill(6, 0xEE)
      .Be16(channels)
      .Be16(sampleSize)
      .Be16(compressionId)
      .Be16(0xEEEE)
      .Be16(rate)
      .Be16(0x8000);
}

/// The payload of an "esds" box in its common form, with one-byte lengths.
inline Bytes EsdsPayload(unsigned objectType, const Bytes& info) {
  const auto n = static_cast<unsigned>(info.size());
  return Bytes()
      .Be32(0)
      .Byte(3)
      .Byte(n + 23)
      .Be16(1)
      .Byte(0)
      .Byte(4)
      .Byte(n + 15)
      .Byte(objectType)
      .Byte(0x15)
      .Be24(0x1000)
      .Be32(128000)
      .Be32(96000)
      .Byte(5)
      .Byte(n)
      .Append(info)
      .Byte(6)
      .Byte(1)
      .Byte(2);
}

}  // namespace fixture
