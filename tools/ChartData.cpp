#include "tools/ChartData.h"

#include <algorithm>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>

#include "tools/Outcome.h"
#include "tools/Output.h"

namespace tool {

namespace {

using Json = nlohmann::json;

bool IsAny(std::string_view type, std::initializer_list<std::string_view> types) {
  return std::find(types.begin(), types.end(), type) != types.end();
}

BoxKind KindOf(const std::string& type, BoxKind parent) {
  if (IsAny(type, {"sinf", "schm", "schi", "tenc", "pssh", "senc", "saiz", "saio", "frma",
                   "encv", "enca", "enct", "encs", "encm", "encu", "drms", "drmi", "drmt",
                   "p608", "aavd", "ipro", "iKMS", "iSFM", "odkm", "adkm"})) {
    return BoxKind::kProtection;
  }
  if (IsAny(type, {"mdat", "imda", "idat"})) return BoxKind::kMedia;
  if (IsAny(type, {"free", "skip", "wide"})) return BoxKind::kSpace;
  if (IsAny(type, {"sidx", "ssix", "mfra", "tfra", "mfro"})) return BoxKind::kIndex;
  if (IsAny(type, {"stts", "ctts", "stss", "stsc", "stsz", "stz2", "stco", "co64", "sdtp", "sbgp",
                   "sgpd", "trun", "subs", "stps"})) {
    return BoxKind::kTable;
  }
  if (type == "moof") return BoxKind::kFragment;
  if (type == "moov" || type == "meta") return BoxKind::kMovie;
  return parent == BoxKind::kProtection ? BoxKind::kMovie : parent;
}

struct Collector {
  ChartData* data;
  std::vector<BoxKind> kinds;  ///< by level
};

int Collect(void* user, const mp4judge_box* box) {
  Collector& collector = *static_cast<Collector*>(user);
  try {
    const auto level = static_cast<std::size_t>(box->level);
    const BoxKind parent = level == 0 ? BoxKind::kOther : collector.kinds[level - 1];
    collector.kinds.resize(level);
    collector.kinds.push_back(KindOf(box->type, parent));
    if (box->space != 0) return 0;
    ChartBox one;
    one.type = box->type;
    one.name = box->name;
    one.path = box->path;
    one.kind = collector.kinds.back();
    one.level = box->level;
    one.offset = box->offset;
    one.end = box->offset + box->present;
    for (std::size_t i = 0; i < box->field_count; ++i) {
      one.fields += (i == 0 ? "" : "\n") + (box->fields[i].name + std::string(": ")) +
                    OneLine(box->fields[i].text);
    }
    if (box->problem_count > 0) one.problem = OneLine(box->problems[0]);
    collector.data->boxes.push_back(std::move(one));
    return 0;
  } catch (...) {
    return 1;
  }
}

void ReadReport(const std::string& file, ChartData* data) {
  mp4judge_options options = MP4JUDGE_OPTIONS_DEFAULT;
  options.host_answer = 0;
  mp4judge_report* const report = mp4judge_inspect_path(file.c_str(), &options);
  data->verdict = data->verdictClass = mp4judge_verdict_name(mp4judge_report_verdict(report));
  const std::string by = ProtectedBy(report);
  if (!by.empty()) data->verdict += " (" + by + ")";
  const auto find = [data](std::string text) {
    if (data->findings.size() < kMostFindings) {
      data->findings.push_back(std::move(text));
    } else {
      ++data->moreFindings;
    }
  };
  if (const char* reason = mp4judge_report_reason(report)) find(reason);
  std::set<std::string> paths;
  for (std::size_t i = 0; i < mp4judge_report_evidence_count(report); ++i) {
    const mp4judge_evidence& evidence = *mp4judge_report_evidence(report, i);
    paths.insert(evidence.box_path);
    find(std::string(evidence.box_path) + ": " + evidence.text);
  }
  for (std::size_t i = 0; i < mp4judge_report_problem_count(report); ++i) {
    const mp4judge_problem& problem = *mp4judge_report_problem(report, i);
    find("problem: " + std::string(problem.text));
  }
  mp4judge_report_free(report);
  for (ChartBox& box : data->boxes) box.isEvidence = paths.count(box.path) != 0;
}

/// Bits a second. Parts of less than half a second, which show single pictures, are taken together.
std::vector<double> RatesOf(const Json& bytes, double seconds) {
  std::vector<double> rates;
  if (!(seconds > 0) || bytes.empty()) return rates;
  const double part = seconds / static_cast<double>(bytes.size());
  const auto together = static_cast<std::size_t>(std::clamp(0.5 / part, 1.0, 12.0));
  for (std::size_t i = 0; i < bytes.size(); i += together) {
    const std::size_t end = std::min(i + together, bytes.size());
    double sum = 0;
    for (std::size_t at = i; at < end; ++at) sum += bytes[at].get<double>();
    rates.push_back(sum * 8 / (part * static_cast<double>(end - i)));
  }
  return rates;
}

ChartTrack TrackOf(const Json& from, std::uint64_t size, std::vector<double>&& rates) {
  ChartTrack track;
  track.id = from.value("id", std::uint64_t{0});
  track.isProtected = from.value("protected", false);
  const std::string codec = from.value("codec", std::string());
  track.label = codec.empty() ? from.value("handler", std::string()) : codec;
  for (const Json& extent : from.at("extents")) {
    const auto offset = extent[0].get<std::uint64_t>();
    if (offset >= size) continue;
    track.extents.push_back({offset, std::min(extent[1].get<std::uint64_t>(), size)});
  }
  track.rates = std::move(rates);
  return track;
}

/// Only the tracks that are drawn keep their extents, of which there may be millions.
Json ParseLayout(const char* text) {
  std::size_t seen = 0;
  return Json::parse(text, [&seen](int /*depth*/, Json::parse_event_t event, Json& key) {
    return event != Json::parse_event_t::key || key != "extents" || ++seen <= kMostTracks;
  });
}

/// Whether every sample was seen.
bool ReadLayout(const Json& layout, ChartData* data) {
  data->seconds = layout.value("seconds", 0.0);
  bool whole = true;
  for (const Json& from : layout.at("tracks")) {
    whole = whole && from.value("whole", true);
    std::vector<double> rates = RatesOf(from.at("bytes"), data->seconds);
    if (data->tracks.size() < kMostTracks) {
      data->tracks.push_back(TrackOf(from, data->size, std::move(rates)));
      continue;
    }
    ++data->moreTracks;
    data->moreRates.resize(rates.size());
    for (std::size_t i = 0; i < rates.size(); ++i) data->moreRates[i] += rates[i];
  }
  return whole;
}

}  // namespace

const char* NameOf(BoxKind kind) {
  static constexpr const char* kNames[] = {"movie", "fragment",   "media", "table",
                                           "index", "protection", "space", "other"};
  return kNames[static_cast<int>(kind)];
}

bool ReadChartData(const std::string& file, mp4judge_tree* tree, ChartData* data) {
  data->file = file.substr(file.rfind('/') + 1);
  data->size = mp4judge_tree_file_size(tree);
  Collector collector{data, {}};
  mp4judge_tree_walk(tree, nullptr, Collect, &collector);
  const bool allBoxes = mp4judge_tree_complete(tree) != 0;
  const char* const layout = mp4judge_layout_json(tree, kRateParts);
  const bool allSamples = layout != nullptr && ReadLayout(ParseLayout(layout), data);
  data->complete = allBoxes && allSamples;
  if (!allBoxes)
    data->findings.push_back("Not every box is drawn: they are too many, or nest too deep.");
  if (!allSamples) data->findings.push_back("Not every sample is drawn: there are too many.");
  ReadReport(file, data);
  return CheckRead(file, mp4judge_tree_error(tree), mp4judge_tree_errno(tree));
}

std::string Escaped(const std::string& text) {
  // The JSON writer knows what is UTF-8.
  const std::string json = Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
  std::string clean = Json::parse(json).get<std::string>(), result;
  for (const char c : clean) {
    switch (c) {
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '&':
        result += "&amp;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += static_cast<unsigned char>(c) < 0x20 && c != '\n' ? std::string("\xEF\xBF\xBD")
                                                                    : std::string(1, c);
    }
  }
  return result;
}

}  // namespace tool
