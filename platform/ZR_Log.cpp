#include "platform/ZR_Log.h"

extern "C" __attribute__((weak)) void ZRLogEx(const wchar_t*) {}
