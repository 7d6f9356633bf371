#pragma once

#include <cstddef>
#include <memory>

#include "io/mmBuffer.h"
#include "io/mmStreamReader.h"

/// Reads of many bytes whose length comes from the file. Each leaves the reader exactly where
/// reading byte by byte would have left it, and takes no more memory than there are bytes.
namespace mp4 {

/// Bytes from the position to the end of the source; 0 at or past the end.
long long Remaining(mmStreamReader* reader);

/// Moves on as if `n` bytes had been read: a file stops at its end, memory always advances.
void PassAsRead(mmStreamReader* reader, long long n);

/// Whether the opening in progress only judges: tables and run entries are passed over as if read.
bool OnlyJudges(mmStreamReader* reader);

/// Reads min(n, capacity) bytes to `dst`, passes over the rest of `n` as if read, and returns the
/// bytes delivered. Zeros fill what the source does not hold of the first min(n, capacity).
std::size_t ReadBytes(mmStreamReader* reader, void* dst, std::size_t capacity, long long n);

/// Reads the body of a table into a new buffer at `*entries`: `n` bytes, of which the whole entries
/// that exist are held. A negative `n` (a body shorter than its own header) steps the reader back
/// by that much and holds nothing. While an opening only judges, the bytes are passed over as if
/// read. False when memory or the opening's account refuses; the bytes are passed over all the
/// same.
bool ReadTable(mmStreamReader* reader, long long n, std::size_t entrySize,
               std::unique_ptr<mmBuffer>* entries);

/// Reads `n` bytes that become decoder configuration or the like, into an array of (held + 16)
/// rounded down to a multiple of 16 bytes, zero beyond the content. `*held` receives the bytes that
/// exist. Null when memory or the account refuses; the bytes are passed over all the same.
std::unique_ptr<unsigned char[]> ReadArray(mmStreamReader* reader, long long n, std::size_t* held);

}  // namespace mp4
