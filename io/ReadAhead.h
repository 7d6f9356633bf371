#pragma once

#include <cstddef>

namespace mp4 {

/// How far a slow source is read ahead. The first piece holds a movie box of 64 KiB behind any
/// usual file type box; later ones follow jumps over media data, behind which little is wanted.
constexpr std::size_t kFirstSlowRead = std::size_t{68} << 10;
constexpr std::size_t kNextSlowRead = std::size_t{16} << 10;

/// How far a quick source is read ahead: a little after a jump, since the next jump is often near;
/// twice as far with each read that goes on forward.
constexpr std::size_t kFirstQuickRead = 1024;
constexpr std::size_t kLargestQuickRead = std::size_t{16} << 10;

/// Boxes in great numbers lie near each other, and are hopped over one by one: after so many short
/// hops in a row each read takes twice as much as the last, up to the largest. The movie box of a
/// film with two tracks has fewer.
constexpr unsigned kQuickHopsBeforeGrowing = 16;
constexpr unsigned kSlowHopsBeforeGrowing = 3;
/// A hop over more than this is no short one: the largest read would hold too few boxes.
constexpr std::size_t kLongestQuickHop = std::size_t{4} << 10;
constexpr std::size_t kLongestSlowHop = std::size_t{32} << 10;
constexpr std::size_t kLargestSlowRead = std::size_t{64} << 10;

}  // namespace mp4
