#pragma once

#include <cstdint>
#include <string>

namespace bench {

/// What a file's boxes hold, counted from the outside, in bytes.
struct MovieBytes {
  std::uint64_t movie = 0;   ///< "moov" and "moof" whole
  std::uint64_t tables = 0;  ///< bodies of the sample tables that an opening loads
  std::uint64_t runs = 0;    ///< bodies of the track runs
};

/// All zero for a file that cannot be read. Believes every size: for generated movies alone.
MovieBytes CountMovieBytes(const std::string& path);

}  // namespace bench
