#pragma once

#include "boxes/base/BoxBase.h"

/// User extension box "uuid": passed over; nothing in the library creates one.
class MP4JUDGE_API BoxUUID : public BoxBase {};
