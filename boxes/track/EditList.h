#pragma once

#include <vector>

#include "boxes/base/SampleRecords.h"
#include "io/mmStreamReader.h"

namespace mp4 {

/// Reads the payload of an edit box "edts" and appends its edits (ISO/IEC 14496-12 EditListBox,
/// version 0). The box is taken to hold exactly one "elst" of 32-bit entries: neither its type, its
/// size nor its version is looked at, and the reader is left behind the entries, wherever that is.
/// In the standard version 1 has 64-bit durations and times. Hosts count on what follows in files
/// that hold anything else. Only whole entries that the source holds are kept. False when memory or
/// the opening's account refuses.
bool ReadEditList(mmStreamReader* reader, std::vector<tagElstItem>* edits);

}  // namespace mp4
