#include <nlohmann/json.hpp>

#include "tools/ChartData.h"
#include "tools/ChartPage.h"
#include "tools/ChartStyle.h"

namespace tool {

namespace {

using Json = nlohmann::json;

/// Fields of so many boxes are brought along; of more, a page would grow too large.
constexpr std::size_t kBoxesWithFields = 20000;

Json BoxesOf(const ChartData& data) {
  Json boxes = Json::array();
  for (const ChartBox& box : data.boxes) {
    const bool fields = boxes.size() < kBoxesWithFields || box.isEvidence;
    boxes.push_back({box.type, box.name, box.path, box.offset, box.end, box.level,
                     static_cast<int>(box.kind), box.isEvidence ? 1 : 0, box.problem,
                     fields ? box.fields : std::string()});
  }
  return boxes;
}

Json TracksOf(const ChartData& data) {
  Json tracks = Json::array();
  for (const ChartTrack& track : data.tracks) {
    Json extents = Json::array();
    for (const ChartExtent& extent : track.extents) extents.push_back({extent.offset, extent.end});
    tracks.push_back({{"id", track.id},
                      {"label", track.label},
                      {"protected", track.isProtected},
                      {"extents", std::move(extents)},
                      {"rates", track.rates}});
  }
  return tracks;
}

/// No "</script>" or "<!--" in it.
std::string ScriptText(const Json& json) {
  std::string text, plain = json.dump(-1, ' ', false, Json::error_handler_t::replace);
  for (const char c : plain) c == '<' ? text += "\\u003c" : text += c;
  return text;
}

}  // namespace

std::string ChartHtml(const ChartData& data) {
  const Json all = {{"file", data.file},
                    {"size", data.size},
                    {"seconds", data.seconds},
                    {"verdict", data.verdict},
                    {"kind", data.verdictClass},
                    {"findings", data.findings},
                    {"moreFindings", data.moreFindings},
                    {"moreTracks", data.moreTracks},
                    {"moreRates", data.moreRates},
                    {"boxes", BoxesOf(data)},
                    {"tracks", TracksOf(data)}};
  return "<!doctype html>\n<html lang='en'><meta charset='utf-8'>\n<meta name='viewport' "
         "content='width=device-width'>\n<title>" +
         Escaped(data.file + ": " + data.verdict) + "</title>\n<style>" + kChartColours +
         kPageStyle + "</style>\n" + kPageBody + "<script>\nconst data=" + ScriptText(all) + ";\n" +
         kPageScript + "</script>\n</html>\n";
}

}  // namespace tool
