#pragma once

#include <gtest/gtest.h>

#include "io/Mp4StreamReader.h"
#include "io/mmBufReader.h"
#include "tests/Fixtures.h"

/// Runs a test body on a file reader and on a memory reader over the same bytes.
template <class Body>
void OnBothReaders(const Bytes& bytes, Body&& body) {
  {
    SCOPED_TRACE("file");
    FileReader file(bytes);
    body(file.reader);
  }
  {
    SCOPED_TRACE("memory");
    mmBufReader memory(bytes.data(), bytes.size());
    body(memory);
  }
}

/// A reader whose own GetByte hands out 1, 2, 3, ... whatever its source holds.
template <class Reader>
class CountingReader : public Reader {
 public:
  unsigned char GetByte() override { return ++last_; }

 private:
  unsigned char last_ = 0;
};

/// The composed getters each take their bytes from GetByte, in order.
inline void ExpectComposedGetters(mmStreamReader& reader) {
  EXPECT_EQ(reader.GetLe16(), 0x0201u);
  EXPECT_EQ(reader.GetBe16(), 0x0304u);
  EXPECT_EQ(reader.GetLe24(), 0x070605u);
  EXPECT_EQ(reader.GetBe24(), 0x08090Au);
  EXPECT_EQ(reader.GetLe32(), 0x0E0D0C0Bu);
  EXPECT_EQ(reader.GetBe32(), 0x0F101112u);
  EXPECT_EQ(reader.GetLe64(), 0x1A19181716151413ull);
  EXPECT_EQ(reader.GetBe64(), 0x1B1C1D1E1F202122ull);
}

/// Bytes 1, 2, 3, ... modulo 256.
inline Bytes CountingFromOne(std::size_t n) {
  Bytes bytes;
  for (std::size_t i = 1; i <= n; ++i) bytes.Byte(static_cast<unsigned>(i));
  return bytes;
}
