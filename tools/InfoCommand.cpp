#include "tools/InfoCommand.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/JudgeOptions.h"
#include "tools/Outcome.h"
#include "tools/Output.h"
#include "tools/Printable.h"
#include "tools/Sandbox.h"

namespace tool {

namespace {

using Json = nlohmann::json;

std::string Text(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? OneLine(found->get<std::string>()) : "";
}

double Number(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_number() ? found->get<double>() : 0;
}

std::uint64_t Count(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_number_unsigned() ? found->get<std::uint64_t>() : 0;
}

bool Is(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found != object.end() && found->is_boolean() && found->get<bool>();
}

/// 1:02:03.456, to the millisecond.
std::string TimeText(double seconds) {
  if (!(seconds < 1e12)) return "unknown";
  const auto all = static_cast<unsigned long long>(std::llround(std::fabs(seconds) * 1000));
  char text[64];
  std::snprintf(text, sizeof text, "%s%llu:%02llu:%02llu.%03llu", seconds < 0 ? "-" : "",
                all / 3600000, all / 60000 % 60, all / 1000 % 60, all % 1000);
  return text;
}

/// Up to three digits behind the point, none that are zeros.
std::string Short(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%.3f", value);
  std::string shortened = text;
  shortened.erase(shortened.find_last_not_of('0') + 1);
  if (shortened.back() == '.') shortened.pop_back();
  return shortened;
}

std::string RateText(double bits) {
  if (bits >= 1e6) return Short(std::round(bits / 1e4) / 100) + " Mbit/s";
  if (bits >= 1e3) return Short(std::round(bits / 100) / 10) + " kbit/s";
  return Short(std::round(bits)) + " bit/s";
}

void Append(std::string* line, const std::string& text, const char* between = ", ") {
  if (text.empty()) return;
  *line += (line->empty() ? "" : between) + text;
}

/// One sample entry on a line: what it is, how large, how protected.
std::string DescriptionText(const Json& entry) {
  std::string line = Text(entry, "codec");
  if (line.empty()) line = "format " + Text(entry, "format");
  Append(&line, Text(entry, "profile"), " ");
  if (!Text(entry, "level").empty()) Append(&line, "level " + Text(entry, "level"));
  if (Text(entry, "tier") == "High") Append(&line, "High tier");
  if (Count(entry, "width") != 0) {
    Append(&line,
           std::to_string(Count(entry, "width")) + " x " + std::to_string(Count(entry, "height")));
  }
  Append(&line, Text(entry, "chromaFormat"));
  if (Count(entry, "bitDepth") != 0) {
    Append(&line, std::to_string(Count(entry, "bitDepth")) + " bits");
  }
  if (Number(entry, "sampleRate") > 0) Append(&line, Short(Number(entry, "sampleRate")) + " Hz");
  const std::uint64_t channels = Count(entry, "channels");
  if (channels != 0) {
    Append(&line, std::to_string(channels) + (channels == 1 ? " channel" : " channels"));
  }
  Append(&line, Text(entry, "codecs").empty() ? "" : "\"" + Text(entry, "codecs") + "\"");
  if (Is(entry, "protected")) {
    const std::string scheme = Text(entry, "scheme");
    Append(&line, "PROTECTED (" + (scheme.empty() ? Text(entry, "format") : scheme) + ")");
  }
  return line;
}

/// Without a length an edit of fragments goes on to the end.
std::string EditText(const Json& edit, bool fragments) {
  const std::string length = TimeText(Number(edit, "seconds"));
  if (fragments && !edit.at("from").is_null() && !(Number(edit, "seconds") > 0)) {
    return "from " + TimeText(Number(edit, "from")) + " to the end";
  }
  if (edit.at("from").is_null()) return "nothing for " + length;
  std::string text = "from " + TimeText(Number(edit, "from")) + " for " + length;
  if (edit.contains("rate")) text += " at rate " + Short(Number(edit, "rate"));
  return text;
}

/// Lines of a name and a value, below a heading.
class Section {
 public:
  explicit Section(Output* out) : out_(out) {}
  void Heading(const std::string& text) {
    out_->Write("\n");
    out_->Bold(text);
    out_->Write("\n");
  }
  void Line(const std::string& name, const std::string& value) {
    if (value.empty()) return;
    std::string label = "  " + name;
    label.resize(std::max<std::size_t>(label.size() + 1, 16), ' ');
    out_->Dim(label);
    out_->Write(value + "\n");
  }
  void Warning(const std::string& value) { out_->Warn("  ! " + value + "\n"); }

 private:
  Output* out_;
};

std::string FrameRateText(const Json& track) {
  const auto rate = track.find("frameRate");
  const std::string handler = Text(track, "handler");
  if (rate == track.end() || (handler != "vide" && handler != "pict")) return {};
  const std::uint64_t over = Count(*rate, "numerator"), under = Count(*rate, "denominator");
  if (under == 0) return {};
  std::string text = Short(static_cast<double>(over) / static_cast<double>(under)) + " a second (" +
                     std::to_string(over) + "/" + std::to_string(under) + ")";
  if (!Is(*rate, "constant")) text += ", varying";
  return text;
}

std::string SampleText(const Json& track) {
  std::string text =
      WithCommas(Count(track, "samples")) + (Is(track, "moreSamples") ? " and more" : "");
  if (Count(track, "syncSamples") != 0 && Count(track, "syncSamples") != Count(track, "samples")) {
    text += ", " + WithCommas(Count(track, "syncSamples")) + " sync";
  }
  return text + ", " + WithCommas(Count(track, "bytes")) + " bytes";
}

/// Old QuickTime files have a number of the Macintosh for a language.
std::string LanguageText(const std::string& language) {
  static constexpr const char* kMacintosh[] = {
      "English",   "French",   "German",  "Italian",    "Dutch",
      "Swedish",   "Spanish",  "Danish",  "Portuguese", "Norwegian",
      "Hebrew",    "Japanese", "Arabic",  "Finnish",    "Greek",
      "Icelandic", "Maltese",  "Turkish", "Croatian",   "Chinese (traditional)",
      "Urdu",      "Hindi",    "Thai",    "Korean"};
  if (language == "und") return {};
  if (language.compare(0, 4, "mac:") != 0) return language;
  const unsigned long code = std::strtoul(language.c_str() + 4, nullptr, 10);
  return code < std::size(kMacintosh) ? kMacintosh[code]
                                      : "Macintosh language " + std::to_string(code);
}

std::string KindOf(const std::string& handler) {
  if (handler == "vide") return "video";
  if (handler == "soun") return "audio";
  if (handler == "subt" || handler == "sbtl") return "subtitles";
  if (handler == "text") return "text";
  if (handler == "pict") return "pictures";
  if (handler == "hint") return "hints";
  if (handler == "meta") return "metadata";
  return handler.empty() ? "unknown kind" : handler;
}

void PrintTrack(const Json& track, bool fragments, Section* section) {
  std::string heading =
      "Track " + std::to_string(Count(track, "id")) + ": " + KindOf(Text(track, "handler"));
  if (!Is(track, "enabled")) heading += ", disabled";
  section->Heading(heading);
  section->Line("name", Text(track, "name"));
  const auto entries = track.find("descriptions");
  if (entries != track.end()) {
    for (const Json& entry : *entries) section->Line("codec", DescriptionText(entry));
  }
  section->Line("language", LanguageText(Text(track, "language")));
  const double stated = Number(track, "seconds");
  const double seconds = stated > 0 ? stated : Number(track, "sampleSeconds");
  if (seconds > 0) section->Line("duration", TimeText(seconds));
  if (Number(track, "width") > 0) {
    const double turned = Number(track, "rotation");
    const bool onItsSide = turned == 90 || turned == 270;
    section->Line("shown", Short(Number(track, onItsSide ? "height" : "width")) + " x " +
                               Short(Number(track, onItsSide ? "width" : "height")));
  }
  const auto rotation = track.find("rotation");
  if (rotation != track.end() && rotation->is_null()) section->Line("rotation", "transformed");
  if (Number(track, "rotation") != 0) {
    section->Line("rotation", Short(Number(track, "rotation")) + " degrees clockwise");
  }
  section->Line("samples", SampleText(track));
  section->Line("frame rate", FrameRateText(track));
  if (track.contains("bitrate")) section->Line("bit rate", RateText(Number(track, "bitrate")));
  const auto edits = track.find("edits");
  if (edits == track.end()) return;
  for (const Json& edit : *edits) section->Line("edit", EditText(edit, fragments));
}

/// What the report says of a file.
struct Judged {
  std::string by;     ///< by what it is protected, in the words of a judgement
  std::string items;  ///< "3: 2 hvc1, 1 Exif"; empty when there are none
};

Judged JudgementOf(const std::string& file) {
  mp4judge_options options = MP4JUDGE_OPTIONS_DEFAULT;
  options.host_answer = 0;
  mp4judge_report* const report = mp4judge_inspect_path(file.c_str(), &options);
  Judged judged{OneLine(ProtectedBy(report)), {}};
  std::map<std::string, std::size_t> types;
  const std::size_t items = mp4judge_report_item_count(report);
  for (std::size_t i = 0; i < items; ++i) {
    const char* const type = mp4judge_report_item(report, i)->type;
    ++types[type != nullptr ? OneLine(type) : "of no type"];
  }
  for (const auto& [type, count] : types) {
    Append(&judged.items, std::to_string(count) + " " + type);
  }
  if (items > 0) judged.items.insert(0, WithCommas(items) + ": ");
  mp4judge_report_free(report);
  return judged;
}

void PrintFile(const std::string& file, const Judged& judged, const Json& info, Output* out,
               Section* section) {
  out->Bold(Printable(file));
  out->Write("\n");
  std::string verdict = Text(info, "verdict");
  if (!judged.by.empty()) verdict += " (" + judged.by + ")";
  if (!Text(info, "reason").empty()) verdict += ": " + Text(info, "reason");
  section->Line("protection", verdict);
  section->Line("size", WithCommas(Count(info, "size")) + " bytes");
  std::string brands = Text(info, "brand");
  if (info.contains("compatibleBrands")) {
    std::string others;
    for (const Json& brand : info.at("compatibleBrands"))
      Append(&others, OneLine(brand.get<std::string>()));
    brands += " (" + others + ")";
  }
  section->Line("brand", brands);
  section->Line("items", judged.items);
  section->Line("created", Text(info, "created"));
  const double seconds = Number(info, "seconds");
  if (seconds > 0) section->Line("duration", TimeText(seconds));
  if (seconds > 0) section->Line("bit rate", RateText(Number(info, "size") * 8 / seconds));
  if (Count(info, "fragments") != 0) {
    section->Line("fragments", WithCommas(Count(info, "fragments")));
  }
}

void PrintMetadata(const Json& info, Section* section) {
  const auto tags = info.find("metadata");
  const auto cover = info.find("cover");
  if (tags != info.end() || cover != info.end()) section->Heading("Metadata");
  if (tags != info.end()) {
    for (const Json& tag : *tags) {
      const std::string name = Text(tag, "name");
      section->Line(name.empty() ? Text(tag, "type") : name, Text(tag, "value"));
    }
  }
  if (cover != info.end()) {
    section->Line("Cover", Text(*cover, "type") + (Text(*cover, "type").empty() ? "" : ", ") +
                               WithCommas(Count(*cover, "size")) + " bytes");
  }
  const auto chapters = info.find("chapters");
  if (chapters == info.end()) return;
  section->Heading("Chapters");
  for (const Json& chapter : *chapters) {
    const std::string title = Text(chapter, "title");
    section->Line(TimeText(Number(chapter, "seconds")), title.empty() ? "(no title)" : title);
  }
}

void PrintInfo(const std::string& file, const Judged& judged, const Json& info, Output* out) {
  Section section(out);
  PrintFile(file, judged, info, out, &section);
  const auto tracks = info.find("tracks");
  if (tracks != info.end()) {
    for (const Json& track : *tracks) {
      PrintTrack(track, Count(info, "fragments") != 0, &section);
    }
  }
  PrintMetadata(info, &section);
  const auto problems = info.find("problems");
  if (problems == info.end()) return;
  section.Heading("Problems");
  constexpr std::size_t kMost = 20;
  for (std::size_t i = 0; i < std::min(problems->size(), kMost); ++i) {
    section.Warning(OneLine((*problems)[i].get<std::string>()));
  }
  if (problems->size() > kMost) {
    section.Warning("and " + std::to_string(problems->size() - kMost) +
                    " more, which --json and --explain show");
  }
}

}  // namespace

int RunInfo(const InfoOptions& options) {
  if (options.sandbox) ConfineToReading();
  const TreeHandle tree = OpenToLook(options.file);
  if (tree == nullptr) return kTrouble;
  const char* const json = mp4judge_info_json(tree.get(), options.json ? 1 : 0);
  Output out;
  if (json != nullptr && options.json) out.Write(std::string(json) + "\n");
  if (json != nullptr && !options.json) {
    PrintInfo(options.file, JudgementOf(options.file), Json::parse(json), &out);
  }
  if (!out.End()) return kTrouble;
  const bool read =
      CheckRead(options.file, mp4judge_tree_error(tree.get()), mp4judge_tree_errno(tree.get()));
  return read ? kAllClear : kTrouble;
}

}  // namespace tool
