#pragma once

#include "boxes/BoxBase.h"

/// Data information box "dinf": passed over.
class MP4JUDGE_API BoxDINF : public BoxBase {};
