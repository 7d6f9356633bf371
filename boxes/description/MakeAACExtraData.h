#pragma once

#include "io/Export.h"

/// Writes an AAC decoder configuration (ISO/IEC 14496-3 AudioSpecificConfig) of 2 bytes, or of 5
/// for a negative profile, which signals SBR explicitly, and returns their number. The object type
/// is |profile| + 1, `sampleRate` is in Hz. A null buffer gives 0.
MP4JUDGE_API int MakeAACExtraData(unsigned char* buffer, int profile, int sampleRate, int channels);
