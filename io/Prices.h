#pragma once

#include <cstdint>

/// What is charged to the account of an opening (io/ScanControl.h), in one place; how much there is
/// to spend stands in io/Limits.h. docs/limits.md has the whole list with its reasons.
namespace mp4::prices {

/// Memory for each byte of a table's body: a row may be published a second time in the track
/// record, in up to twice its width.
constexpr std::int64_t kMemoryPerTableByte = 3;
/// For each byte of an edit list: the track box holds an edit, and the track's record again.
constexpr std::int64_t kMemoryPerEditByte = 2;
/// For a box of a list: the object, its place, and the box below it.
constexpr std::int64_t kCollectedBox = 128;

/// For a mapping of untouched zeros: what making and releasing it costs in time...
constexpr std::int64_t kMapping = 1024;
/// ...and a byte for this much of its address space, whatever the system's pages are.
constexpr std::int64_t kUntouchedBytesPerByte = 4096;

/// What a merged run takes in the tables, growth included, whether or not the file holds a byte for
/// its samples: one chunk offset and one chunk run, each also published; then sample by sample.
constexpr std::int64_t kMergedRun = 64;
constexpr std::int64_t kMergedSize = 16;
constexpr std::int64_t kMergedTime = 16;
constexpr std::int64_t kMergedSync = 4;
/// On top of it, for each step of a loop over what the run brings no bytes for: samples without an
/// entry in the file, and rows that are published over again.
constexpr std::int64_t kMergedStep = 8;
/// For a chunk that gets an entry of its own when an audio track is completed: a row in the table
/// and a published one.
constexpr std::int64_t kCompletedChunk = 24;

/// Inflated bytes for each compressed movie besides its size: zlib sets up its own tables every
/// time.
constexpr std::int64_t kInflateSetUp = 64 * 1024;

}  // namespace mp4::prices
