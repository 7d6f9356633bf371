#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "io/ByteSource.h"

namespace mp4 {

/// What one sample entry says about its codec; what is not said is empty or 0.
struct CodecInfo {
  std::string format;    ///< the type of the entry
  std::string original;  ///< the format before protection
  std::string codec;     ///< "H.264/AVC"
  std::string profile, level, tier, chroma;
  std::string parameter;  ///< as RFC 6381 has it: "avc1.640028"
  std::uint64_t bitDepth = 0;
  std::uint64_t averageBitrate = 0;  ///< as the file says
  std::uint32_t width = 0, height = 0;
  double sampleRate = 0;
  std::uint32_t channels = 0;
  bool isProtected = false;
  std::string scheme;
};

struct EditInfo {
  double seconds = 0;
  std::optional<double> from;  ///< media time in seconds; none shows nothing
  double rate = 1;
};

struct MovieTrack {
  std::uint32_t id = 0;
  std::string handler, name, language;
  bool enabled = true;
  std::uint32_t timescale = 0;
  std::optional<double> seconds;  ///< as the media header says
  double width = 0, height = 0;   ///< presented
  std::optional<int> rotation;    ///< degrees clockwise; none for other transformations
  std::vector<CodecInfo> codecs;
  std::vector<EditInfo> edits;
  std::uint64_t samples = 0, bytes = 0, syncSamples = 0;
  bool wholeTrack = true;  ///< false: more samples than were counted
  double sampleSeconds = 0;
  /// Samples a second as a fraction, of all samples when the rate is not constant; 0 when unknown.
  std::uint64_t rateNumerator = 0, rateDenominator = 0;
  bool constantRate = false;
};

struct TagInfo {
  std::string type, name, value;
};

struct ChapterInfo {
  double seconds = 0;
  std::string title;
};

/// A file as people describe it. Seconds are exact as far as a double is.
struct MovieInfo {
  std::uint64_t fileSize = 0;
  bool hasMovie = false;
  std::string brand;
  std::vector<std::string> compatibleBrands;
  std::string created;
  /// Of the movie header or its extension by fragments; where these say 0, of the longest track.
  std::optional<double> seconds;
  std::uint64_t fragments = 0;
  std::vector<MovieTrack> tracks;
  std::vector<TagInfo> tags;
  std::vector<ChapterInfo> chapters;
  std::string coverType;
  std::uint64_t coverSize = 0;
  std::string verdict, reason;  ///< of the inspector
  std::vector<std::string> schemes;
  std::vector<std::string> problems;
};

/// Reads the movie box, all fragments and the sample tables. What is kept is bounded. May throw
/// bad_alloc.
MovieInfo InfoOf(ByteSource* source);

/// As JSON, as mp4judge/look.h has it. May throw bad_alloc.
std::string MovieInfoJson(const MovieInfo& info, bool indented);

}  // namespace mp4
