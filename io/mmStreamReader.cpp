#include "io/mmStreamReader.h"

mmStreamReader::~mmStreamReader() = default;

unsigned int mmStreamReader::GetLe16() {
  const unsigned int low = GetByte();
  const unsigned int high = GetByte();
  return low | high << 8;
}

unsigned int mmStreamReader::GetBe16() {
  const unsigned int high = GetByte();
  const unsigned int low = GetByte();
  return high << 8 | low;
}

unsigned int mmStreamReader::GetLe24() {
  const unsigned int low = GetByte();
  return low | (GetLe16() << 8 & 0xFFFF00U);
}

unsigned int mmStreamReader::GetBe24() {
  const unsigned int high = GetByte();
  return (high << 16 & 0xFF0000U) | GetBe16();
}

unsigned int mmStreamReader::GetLe32() {
  const unsigned int low = GetLe16();
  return low | GetLe16() << 16;
}

unsigned int mmStreamReader::GetBe32() {
  const unsigned int high = GetBe16();
  return high << 16 | GetBe16();
}

unsigned long long mmStreamReader::GetLe64() {
  const unsigned long long low = GetLe32();
  return low | static_cast<unsigned long long>(GetLe32()) << 32;
}

unsigned long long mmStreamReader::GetBe64() {
  const unsigned long long high = GetBe32();
  return high << 32 | GetBe32();
}
