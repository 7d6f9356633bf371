#pragma once

#include <cstdint>

/// Every cap on hostile input, in one place. docs/limits.md says what happens at each and names the
/// test that meets it. None of them is reached by a file that a muxer would write.
namespace mp4::limits {

constexpr std::int64_t kKiB = 1024;
constexpr std::int64_t kMiB = 1024 * kKiB;

/// Smallest file that can hold a first box worth reading; shorter ones are refused.
constexpr std::int64_t kSmallestFile = 20;

/// Source bytes that the shares below grow with; no disk holds more.
constexpr std::int64_t kLargestCountedSource = std::int64_t{1} << 56;

/// Box headers read in one opening, and steps of searches for a box: one per 8 bytes of the source,
/// plus this many. Parents that step back over an overrunning child could otherwise parse the same
/// bytes over and over.
constexpr std::int64_t kSpareHeaders = 512 * 1024;
constexpr std::int64_t kBytesPerHeader = 8;
/// An inflated movie adds one per this many of its bytes: a file of half a megabyte may inflate to
/// 256 MiB of boxes without payload, and reading each of those would take seconds.
constexpr std::int64_t kBytesPerInflatedHeader = 256;

/// Bytes read in bulk in one opening: this multiple of the source, plus a fixed share.
constexpr std::int64_t kBytesReadPerSourceByte = 4;
constexpr std::int64_t kSpareBytesRead = 16 * kMiB;

/// Memory that parsing may take in one opening, as the boxes charge it.
constexpr std::int64_t kMemoryPerSourceByte = 6;
constexpr std::int64_t kSpareMemory = 64 * kMiB;

/// Memory that merging fragments into the sample tables may take in one opening. An account of its
/// own: judging does not merge, and must meet the same limits as a full opening everywhere else.
constexpr std::int64_t kMergePerSourceByte = 6;
constexpr std::int64_t kSpareMerge = 64 * kMiB;

/// A compressed movie: announced size at most kLargestInflated, at most kInflateRatio times its
/// compressed bytes plus kInflateSpare (deflate itself cannot exceed 1032:1).
constexpr std::int64_t kLargestInflated = 256 * kMiB;
constexpr std::int64_t kInflateRatio = 1040;
constexpr std::int64_t kInflateSpare = 64 * kKiB;
/// All compressed movies of one opening together: what bounds the time spent inflating.
constexpr std::int64_t kInflatedTotal = 256 * kMiB;
constexpr std::int64_t kInflatedPerSourceByte = 16;
/// Compressed movies inside compressed movies.
constexpr int kDeepestCompressedMovie = 4;

/// Track records one context may hold through track headers.
constexpr std::int64_t kMostTracks = 16 * 1024;

/// Samples one track run may claim: 1 GiB of entries, where an allocator would give up.
constexpr std::uint32_t kMostRunSamples = 1u << 26;

}  // namespace mp4::limits
