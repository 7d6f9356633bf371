#pragma once

#include "boxes/BoxBase.h"

/// Video media header box "vmhd": passed over.
class MP4JUDGE_API BoxVMHD : public BoxBase {};
