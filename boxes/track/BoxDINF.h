#pragma once

#include "boxes/base/BoxBase.h"

/// Data information box "dinf" (ISO/IEC 14496-12 DataInformationBox), contained in "minf":
/// passes over its payload.
class MP4JUDGE_API BoxDINF : public BoxBase {};
