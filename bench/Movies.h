#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Generated movies for measuring: real box structures over sparse media data, written once into
/// the temporary directory and reused.
namespace bench {

struct Shape {
  std::string name;
  std::uint32_t videoSamples = 0;  ///< 0: no video track
  std::uint32_t audioSamples = 0;  ///< 0: no audio track
  bool variable = false;           ///< one time-to-sample entry a sample
  std::uint32_t tracks = 1;        ///< how many times both tracks stand in the movie
  std::uint32_t fragments = 0;     ///< movie fragments of both tracks, one run each
  std::uint32_t runSamples = 30;   ///< samples of a run
  std::string audioFormat = "mp4a";
};

/// Writes the movie to `path`. Exits on an error, like all of this: benches have no caller.
void WriteMovie(const Shape& shape, const std::string& path);

/// The file's path; makes the file when it is not there. Exits on an error.
std::string MovieFile(const Shape& shape);

Shape Clip();                           ///< 10 seconds
Shape LongMovie();                      ///< 3 hours, 60 frames a second, 48 kHz audio
Shape VariableMovie();                  ///< the same, one time-to-sample entry a sample
Shape FourMillion();                    ///< 2 million samples in each of two tracks
Shape TwoHundredTracks();               ///< 100 video and 100 audio tracks
Shape Fragmented(std::uint32_t count);  ///< that many fragments of two tracks
std::vector<Shape> StandardMovies();    ///< the above; 20,000 fragments
Shape WithSamples(std::uint32_t count, bool variable);  ///< that many samples in each of two tracks

/// A path as the library takes it.
std::wstring Wide(const std::string& path);

}  // namespace bench
