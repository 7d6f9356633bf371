#pragma once

#include <cstdint>

/// The limits, out of reach. Shadows io/Limits.h in a second build of the library that the guards
/// test compares with the ordinary one: no sane file may be read differently for a limit.
namespace mp4::limits {

constexpr std::int64_t kKiB = 1024;
constexpr std::int64_t kMiB = 1024 * kKiB;
constexpr std::int64_t kSmallestFile = 20;
constexpr std::int64_t kLargestCountedSource = std::int64_t{1} << 56;
constexpr std::int64_t kSpareHeaders = std::int64_t{1} << 61;
constexpr std::int64_t kBytesPerHeader = 8;
constexpr std::int64_t kBytesPerInflatedHeader = 256;
constexpr std::int64_t kBytesReadPerSourceByte = 4;
constexpr std::int64_t kSpareBytesRead = std::int64_t{1} << 61;
constexpr std::int64_t kMemoryPerSourceByte = 6;
constexpr std::int64_t kSpareMemory = std::int64_t{1} << 61;
constexpr std::int64_t kMergePerSourceByte = 6;
constexpr std::int64_t kSpareMerge = std::int64_t{1} << 61;
constexpr std::int64_t kLargestInflated = std::int64_t{1} << 61;
constexpr std::int64_t kInflateRatio = 1040;
constexpr std::int64_t kInflateSpare = std::int64_t{1} << 61;
constexpr std::int64_t kInflatedTotal = std::int64_t{1} << 61;
constexpr std::int64_t kInflatedPerSourceByte = 16;
constexpr int kDeepestCompressedMovie = 1000;
constexpr std::int64_t kMostTracks = std::int64_t{1} << 61;
constexpr std::uint32_t kMostRunSamples = 0xFFFFFFFF;

}  // namespace mp4::limits
