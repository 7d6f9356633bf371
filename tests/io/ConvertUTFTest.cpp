#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "io/ConvertUTF.h"

namespace {

struct Converted {
  ConversionResult result;
  std::vector<unsigned> units;
};

constexpr unsigned kUntouched = 0xABABABAB;

/// Converts exactly the bytes given, into `room` units.
Converted ConvertRange(const std::string& bytes, std::size_t room = 64,
                       ConversionFlags flags = lenientConversion) {
  std::vector<unsigned char> source(bytes.begin(), bytes.end());
  source.reserve(1);  // not null, even when empty
  std::vector<unsigned> target(room + 1, kUntouched);
  const ConversionResult result = ConvertUTF8toUTF32(source.data(), source.data() + source.size(),
                                                     target.data(), target.data() + room, flags);
  EXPECT_EQ(target[room], kUntouched);
  std::size_t written = 0;
  while (written < room && target[written] != kUntouched) ++written;
  for (std::size_t i = written; i < room; ++i) EXPECT_EQ(target[i], kUntouched);
  target.resize(written);
  return {result, target};
}

/// Converts a text with the terminating zero in the range, as the library does.
Converted ConvertText(const std::string& text, ConversionFlags flags = lenientConversion) {
  return ConvertRange(text + std::string(1, '\0'), 64, flags);
}

using Units = std::vector<unsigned>;

}  // namespace

TEST(ConvertUTF, AsciiConvertsByteForByte) {
  const Converted text = ConvertText("Hello");
  EXPECT_EQ(text.result, conversionOK);
  EXPECT_EQ(text.units, (Units{'H', 'e', 'l', 'l', 'o', 0}));
}

TEST(ConvertUTF, EmptyRangeIsFine) {
  EXPECT_EQ(ConvertRange("").result, conversionOK);
  EXPECT_TRUE(ConvertRange("").units.empty());
  EXPECT_EQ(ConvertRange("", 0).result, conversionOK);
}

TEST(ConvertUTF, FirstAndLastValueOfEachLength) {
  const struct {
    const char* bytes;
    unsigned value;
  } kCases[] = {
      {"\x01", 0x01},
      {"\x7F", 0x7F},
      {"\xC2\x80", 0x80},
      {"\xDF\xBF", 0x7FF},
      {"\xE0\xA0\x80", 0x800},
      {"\xED\x9F\xBF", 0xD7FF},
      {"\xEE\x80\x80", 0xE000},
      {"\xEF\xBF\xBF", 0xFFFF},
      {"\xF0\x90\x80\x80", 0x10000},
      {"\xF4\x8F\xBF\xBF", 0x10FFFF},
  };
  for (const auto& c : kCases) {
    const Converted text = ConvertText(c.bytes);
    EXPECT_EQ(text.result, conversionOK) << std::hex << c.value;
    EXPECT_EQ(text.units, (Units{c.value, 0})) << std::hex << c.value;
  }
}

TEST(ConvertUTF, IllFormedSequencesStopInBothModes) {
  const char* const kCases[] = {
      "\x80",  // a continuation byte leads nothing
      "\xBF",
      "\xC0\x80",  // over-long forms
      "\xC1\xBF",
      "\xE0\x9F\xBF",
      "\xF0\x8F\xBF\xBF",
      "\xED\xA0\x80",  // surrogates
      "\xED\xBF\xBF",
      "\xF4\x90\x80\x80",  // above 0x10FFFF
      "\xF5\x80\x80\x80",
      "\xF7\xBF\xBF\xBF",
      "\xF8\x88\x80\x80\x80",  // five and six bytes
      "\xFB\xBF\xBF\xBF\xBF",
      "\xFC\x84\x80\x80\x80\x80",
      "\xFF\xBF\xBF\xBF\xBF\xBF",
      "\xC3(",  // a byte that continues nothing
      "\xE2(\xA1",
      "\xE2\x82(",
      "\xF0\x90\x80(",
      "\xC3\xC3",
  };
  for (const char* bytes : kCases) {
    for (const ConversionFlags flags : {strictConversion, lenientConversion}) {
      const Converted text = ConvertText("ab" + std::string(bytes) + "cd", flags);
      EXPECT_EQ(text.result, sourceIllegal) << bytes;
      EXPECT_EQ(text.units, (Units{'a', 'b'})) << bytes;
    }
  }
}

TEST(ConvertUTF, TruncatedSequenceExhaustsTheSource) {
  for (const char* bytes : {"\xC3", "\xE2", "\xE2\x82", "\xF0", "\xF0\x9F", "\xF0\x9F\x8E"}) {
    EXPECT_EQ(ConvertRange("a" + std::string(bytes)).result, sourceExhausted);
    EXPECT_EQ(ConvertRange("a" + std::string(bytes)).units, Units{'a'});
    EXPECT_EQ(ConvertText("a" + std::string(bytes)).units, Units{'a'});
  }
}

TEST(ConvertUTF, SequenceMustEndBeforeTheLastByteOfTheRange) {
  // Deliberate: the zero behind a text belongs to the range, and lets its last sequence through.
  EXPECT_EQ(ConvertRange("a\xC3\xA9").result, sourceExhausted);
  EXPECT_EQ(ConvertRange("a\xC3\xA9").units, Units{'a'});
  EXPECT_EQ(ConvertText("a\xC3\xA9").result, conversionOK);
  EXPECT_EQ(ConvertText("a\xC3\xA9").units, (Units{'a', 0xE9, 0}));
  EXPECT_EQ(ConvertRange("a\xC3\xA9z").units, (Units{'a', 0xE9, 'z'}));
}

TEST(ConvertUTF, FullTargetStopsWithTheUnitsThatFit) {
  const Converted exact = ConvertRange("abc", 3);
  EXPECT_EQ(exact.result, conversionOK);
  EXPECT_EQ(exact.units, (Units{'a', 'b', 'c'}));
  const Converted full = ConvertRange("abc", 2);
  EXPECT_EQ(full.result, targetExhausted);
  EXPECT_EQ(full.units, (Units{'a', 'b'}));
  EXPECT_EQ(ConvertRange("a", 0).result, targetExhausted);
}

TEST(ConvertUTF, NullPointersReportFailure) {
  const unsigned char source[] = {'a', 0};
  unsigned target[4] = {};
  EXPECT_NE(ConvertUTF8toUTF32(nullptr, source + 2, target, target + 4, lenientConversion),
            conversionOK);
  EXPECT_NE(ConvertUTF8toUTF32(source, nullptr, target, target + 4, lenientConversion),
            conversionOK);
  EXPECT_NE(ConvertUTF8toUTF32(nullptr, nullptr, nullptr, nullptr, strictConversion), conversionOK);
  EXPECT_EQ(ConvertUTF8toUTF32(source, source + 2, nullptr, target + 4, lenientConversion),
            targetExhausted);
  EXPECT_EQ(ConvertUTF8toUTF32(source, source + 2, target, nullptr, lenientConversion),
            targetExhausted);
  EXPECT_EQ(target[0], 0u);
}

TEST(ConvertUTF, TrailingBytesFollowTheLeadByte) {
  for (int lead = 0; lead < 256; ++lead) {
    int expected = 0;
    if (lead >= 0xC0) expected = 1;
    if (lead >= 0xE0) expected = 2;
    if (lead >= 0xF0) expected = 3;
    if (lead >= 0xF8) expected = 4;
    if (lead >= 0xFC) expected = 5;
    EXPECT_EQ(trailingBytesForUTF8[lead], expected) << lead;
  }
}

TEST(ConvertUTF, OffsetsAreTheSumOfTheMarkBits) {
  // For two bytes: 0xC0 << 6, plus 0x80; and so on, modulo 2^32.
  const unsigned kExpected[6] = {0, 0x3080, 0xE2080, 0x3C82080, 0xFA082080, 0x82082080};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(offsetsFromUTF8[i], kExpected[i]);
}

TEST(ConvertUTF, FirstByteMarks) {
  const unsigned char kExpected[7] = {0x00, 0x00, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(firstByteMark[i], kExpected[i]);
}
