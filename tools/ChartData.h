#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mp4judge/look.h"

namespace tool {

/// What a box is, for its colour.
enum class BoxKind { kMovie, kFragment, kMedia, kTable, kIndex, kProtection, kSpace, kOther };

const char* NameOf(BoxKind kind);

struct ChartBox {
  std::string type, name, path;
  std::string fields;   ///< one a line
  std::string problem;  ///< empty when nothing is wrong
  BoxKind kind = BoxKind::kOther;
  int level = 0;
  bool isEvidence = false;
  std::uint64_t offset = 0;
  std::uint64_t end = 0;
};

struct ChartExtent {
  std::uint64_t offset = 0, end = 0;
};

struct ChartTrack {
  std::uint64_t id = 0;
  std::string label;
  bool isProtected = false;
  std::vector<ChartExtent> extents;
  std::vector<double> rates;  ///< bits a second, in equal parts of the time
};

/// A file as it is drawn.
struct ChartData {
  std::string file;
  std::uint64_t size = 0;
  double seconds = 0;
  std::string verdict;                ///< "protected (cenc: video)"
  std::string verdictClass;           ///< "clear", "protected" or "undetermined"
  std::vector<std::string> findings;  ///< evidence, reason, problems; a sentence each
  std::size_t moreFindings = 0;       ///< that are only counted
  std::vector<ChartBox> boxes;        ///< in file order; those of inflated movies are left out
  std::vector<ChartTrack> tracks;     ///< the first kMostTracks
  std::size_t moreTracks = 0;
  std::vector<double> moreRates;  ///< of those, together; empty when there are none
  bool complete = true;           ///< false: there are boxes or samples that are not drawn
};

/// A chart shows so many, and counts the others.
constexpr std::size_t kMostTracks = 12;
constexpr std::size_t kMostFindings = 60;

/// Parts of the time that bit rates are drawn for.
constexpr unsigned kRateParts = 240;

/// Looks at a file. False, with a word on standard error, when it could not be read as a whole;
/// what could be read is there all the same.
bool ReadChartData(const std::string& file, mp4judge_tree* tree, ChartData* data);

/// A picture that needs nothing else.
std::string ChartSvg(const ChartData& data);
/// A page that needs nothing else, zooms, and tells on hover.
std::string ChartHtml(const ChartData& data);

/// Text between tags or in an attribute; what is no UTF-8 or control character becomes U+FFFD.
std::string Escaped(const std::string& text);

}  // namespace tool
