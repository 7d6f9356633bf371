#pragma once

#include "boxes/base/BoxBase.h"

/// Data information box "dinf" (ISO/IEC 14496-12 DataInformationBox), contained in "minf":
/// passes over its payload, so that all samples are taken to lie in the file itself, whatever its
/// data references say.
class MP4JUDGE_API BoxDINF : public BoxBase {};
