#pragma once

#include "boxes/BoxBase.h"

/// Edit box "edts": passes over its payload. The track box reads edit lists itself.
class MP4JUDGE_API BoxEDTS : public BoxBase {};
