#pragma once

#include "boxes/BoxBase.h"

/// Sound media header box "smhd": passed over.
class MP4JUDGE_API BoxSMHD : public BoxBase {};
