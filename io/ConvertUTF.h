#pragma once

#include "io/Export.h"

/// UTF-8 to UTF-32, as defined in chapter 3 of the Unicode Standard. The library uses it for the
/// texts of the user data.

enum ConversionResult {
  conversionOK,     ///< the whole range was converted
  sourceExhausted,  ///< the range ends inside a sequence
  targetExhausted,  ///< the target has no room for the next unit
  sourceIllegal     ///< the next sequence is ill-formed
};

/// What an encoder of another direction may let pass. This direction treats both alike: every
/// ill-formed sequence (surrogates, over-long forms, values above 0x10FFFF) ends the conversion.
enum ConversionFlags { strictConversion = 0, lenientConversion };

/// Bytes that follow a lead byte, by lead byte; 0 for a byte that leads nothing. Leads of five and
/// six bytes (0xF8 and above) have their old counts but are never well-formed.
extern MP4JUDGE_API const char trailingBytesForUTF8[256];
/// What the mark bits of a sequence add up to, by the number of trailing bytes.
extern MP4JUDGE_API const unsigned int offsetsFromUTF8[6];
/// Mark of the lead byte, by the number of bytes in the sequence.
extern MP4JUDGE_API const unsigned char firstByteMark[7];

/// Converts [sourceStart, sourceEnd) into [targetStart, targetEnd), one unit per code point, and
/// stops at the first trouble; units already written stay, the rest of the target is untouched.
///
/// A sequence of several bytes must end before the last byte of the range, or the source counts as
/// exhausted: callers hand over the terminating zero with the text. Linear in the bytes converted.
/// A null source is `sourceIllegal`; a null target has no room.
MP4JUDGE_API ConversionResult ConvertUTF8toUTF32(const unsigned char* sourceStart,
                                                 const unsigned char* sourceEnd,
                                                 unsigned int* targetStart, unsigned int* targetEnd,
                                                 ConversionFlags flags);
