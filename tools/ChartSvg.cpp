#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tools/ChartData.h"
#include "tools/ChartStyle.h"
#include "tools/Printable.h"

namespace tool {

namespace {

constexpr double kWidth = 1240, kLeft = 170, kRight = 1200;
constexpr double kRow = 24;
/// Boxes narrower than this are drawn together.
constexpr double kNarrow = 2;
constexpr int kDeepest = 12;
constexpr std::size_t kFindingsShown = 8;

std::string Fixed(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", value);
  return text;
}

std::string RateText(double bits) {
  if (!(bits > 0)) return "0";
  char text[64];
  if (bits >= 1e6) {
    std::snprintf(text, sizeof text, "%.1f Mbit/s", bits / 1e6);
  } else if (bits >= 1e3) {
    std::snprintf(text, sizeof text, bits < 1e4 ? "%.1f kbit/s" : "%.0f kbit/s", bits / 1e3);
  } else {
    std::snprintf(text, sizeof text, "%.0f bit/s", bits);
  }
  return text;
}

std::string SizeText(double bytes) {
  static constexpr const char* kUnits[] = {"bytes", "kB", "MB", "GB", "TB"};
  int unit = 0;
  for (; bytes >= 1000 && unit < 4; ++unit) bytes /= 1000;
  char text[64];
  std::snprintf(text, sizeof text, bytes >= 100 || unit == 0 ? "%.0f %s" : "%.1f %s", bytes,
                kUnits[unit]);
  return text;
}

/// A time on an axis that ends at `most`.
std::string TimeText(double seconds, double most) {
  const auto all = static_cast<unsigned long>(std::clamp(seconds, 0.0, 1e9));
  char text[64];
  if (all >= 3600) {
    std::snprintf(text, sizeof text, "%lu:%02lu:%02lu", all / 3600, all / 60 % 60, all % 60);
  } else if (most >= 10 && seconds > 0) {
    std::snprintf(text, sizeof text, "%lu:%02lu", all / 60, all % 60);
  } else if (seconds > 0) {
    std::snprintf(text, sizeof text, "%.1f s", seconds);
  } else {
    return "0";
  }
  return text;
}

/// A number of 1, 2 or 5 with zeros behind it, about a sixth of a span.
double StepFor(double span) {
  if (!(span > 0)) return 1;
  const double power = std::pow(10, std::floor(std::log10(span / 6)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (span / (factor * power) <= 8) return factor * power;
  }
  return 10 * power;
}

/// A stretch of the file on the picture.
struct Scale {
  double from = 0, to = 1;
  double X(std::uint64_t offset) const {
    const double at = (static_cast<double>(offset) - from) / std::max(to - from, 1.0);
    return kLeft + std::clamp(at, 0.0, 1.0) * (kRight - kLeft);
  }
};

class Picture {
 public:
  explicit Picture(const ChartData& data) : data_(data) {}

  std::string Draw() {
    Title();
    const Scale all{0, static_cast<double>(data_.size)};
    Ruler(all, "the file, to scale");
    const double top = y_;
    Boxes(all, 0, data_.boxes.size(), 0, 3, false);
    Lanes(all);
    Marks(all, top);
    for (const char* type : {"moov", "moof", "meta"}) Enlarge(FirstOf(type), all);
    Enlarge(FirstDescription(), all);
    Rates();
    Findings();
    Legend();
    return Wrapped();
  }

 private:
  void Text(double x, double y, const std::string& text, const char* classes) {
    body_ += "<text x='" + Fixed(x) + "' y='" + Fixed(y) + "' class='" + classes + "'>" +
             Escaped(text) + "</text>\n";
  }

  void Title() {
    Text(40, 48, data_.file, "h1");
    std::string line = SizeText(static_cast<double>(data_.size));
    if (data_.seconds > 0) line += "  ·  " + TimeText(data_.seconds, data_.seconds);
    line += "  ·  " + WithCommas(data_.boxes.size()) + " boxes";
    Text(40, 72, line, "soft");
    const double width = 30 + 7.4 * static_cast<double>(data_.verdict.size());
    body_ += "<rect x='" + Fixed(kRight - width) + "' y='28' width='" + Fixed(width) +
             "' height='28' rx='14' style='fill:var(--" + data_.verdictClass + ")'/>\n";
    body_ += "<text x='" + Fixed(kRight - width / 2) +
             "' y='47' text-anchor='middle' class='badge'>" + Escaped(data_.verdict) + "</text>\n";
    y_ = 104;
  }

  void Heading(const std::string& text) {
    Text(40, y_ + 14, text, "h2");
    y_ += 26;
  }

  void Ruler(const Scale& scale, const std::string& heading) {
    Heading(heading);
    const double step = StepFor(scale.to - scale.from);
    double last = -1e9;
    for (double at = std::ceil(scale.from / step) * step; at <= scale.to; at += step) {
      const double x = scale.X(static_cast<std::uint64_t>(at));
      body_ += "<line x1='" + Fixed(x) + "' x2='" + Fixed(x) + "' y1='" + Fixed(y_ + 14) +
               "' y2='" + Fixed(y_ + 20) + "' class='tick'/>\n";
      if (x - last > 70) {
        const std::string text = SizeText(at);
        body_ += "<text x='" + Fixed(x) + "' y='" + Fixed(y_ + 10) +
                 "' text-anchor='middle' class='soft s'>" + text + "</text>\n";
        last = x;
      }
    }
    y_ += 22;
  }

  void Rect(double x0, double x1, const ChartBox& box, const std::string& title, bool named,
            bool many = false) {
    const bool plain = many && box.problem.empty() && !box.isEvidence;
    const std::string classes = std::string(plain ? "" : "b ") + NameOf(box.kind) +
                                (box.problem.empty() ? "" : " bad") +
                                (box.isEvidence ? " evidence" : "");
    const double width = std::max(x1 - x0, 0.6);
    body_ += "<g><title>" + Escaped(title) + "</title><rect x='" + Fixed(x0) + "' y='" + Fixed(y_) +
             "' width='" + Fixed(width) + "' height='" + Fixed(kRow - 2) +
             (plain ? "' class='" : "' rx='2' class='") + classes + "'/>";
    const auto letters = static_cast<std::size_t>(std::max(0.0, (width - 8) / 6.4));
    if (named && letters >= 4) {
      std::string label = box.type;
      const std::string whole = box.type + "  " + box.name;
      if (!box.name.empty() && whole.size() <= letters) label = whole;
      if (label.size() <= letters) {
        body_ += "<text x='" + Fixed(x0 + 4) + "' y='" + Fixed(y_ + 15) + "' class='bt'>" +
                 Escaped(label) + "</text>";
      }
    }
    body_ += "</g>\n";
  }

  static std::string TitleOf(const ChartBox& box) {
    std::string text = box.path + (box.name.empty() ? "" : "\n" + box.name) + "\nbyte " +
                       WithCommas(box.offset) + ", " + WithCommas(box.end - box.offset) + " bytes";
    if (!box.fields.empty()) text += "\n" + box.fields.substr(0, 400);
    if (!box.problem.empty()) text += "\n! " + box.problem;
    return text;
  }

  /// One row a level of the boxes [first, last), as far as any is wide enough to be seen.
  void Boxes(const Scale& scale, std::size_t first, std::size_t last, int level, int deepest,
             bool always) {
    for (int depth = level; depth < level + deepest; ++depth) {
      if (!Level(scale, first, last, depth, depth == level || always)) break;
      y_ += kRow;
    }
  }

  bool Level(const Scale& scale, std::size_t first, std::size_t last, int depth, bool always) {
    bool any = false, wide = false;
    for (std::size_t i = first; i < last; ++i) {
      const ChartBox& box = data_.boxes[i];
      if (box.level != depth) continue;
      any = true;
      wide = wide || scale.X(box.end) - scale.X(box.offset) >= 12;
    }
    if (!any || (!wide && !always)) return false;
    Group group;
    for (std::size_t i = first; i < last; ++i) {
      const ChartBox& box = data_.boxes[i];
      if (box.level != depth) continue;
      const double x0 = scale.X(box.offset), x1 = scale.X(box.end);
      if (x1 - x0 >= kNarrow) {
        Flush(&group);
        EndBand();
        Rect(x0, x1, box, TitleOf(box), true);
      } else {
        if (group.count > 0 && x0 - group.from > 3) {
          // Groups that adjoin are one band.
          if (x0 - group.to < 1.5) group.to = x0;
          Flush(&group);
        }
        group.Add(box, x0, x1);
      }
    }
    Flush(&group);
    EndBand();
    return true;
  }

  /// Boxes that are too narrow to be seen alone. The most telling one gives the colour.
  struct Group {
    std::size_t count = 0;
    double from = 0, to = 0;
    const ChartBox* best = nullptr;

    static int Weight(const ChartBox& box) {
      if (box.isEvidence || !box.problem.empty()) return 3;
      if (box.kind == BoxKind::kProtection) return 2;
      return box.kind == BoxKind::kMedia || box.kind == BoxKind::kSpace ? 0 : 1;
    }
    void Add(const ChartBox& box, double x0, double x1) {
      if (count++ == 0) from = x0;
      to = std::max(to, x1);
      if (best == nullptr || Weight(box) > Weight(*best)) best = &box;
    }
  };
  void Flush(Group* group) {
    if (group->count == 1) {
      Rect(group->from, group->to, *group->best, TitleOf(*group->best), false);
    } else if (group->count > 1) {
      if (group->from - band_.to > 0.01) EndBand();
      if (band_.count == 0) band_.from = group->from;
      band_.count += group->count;
      band_.to = group->to;
      Rect(group->from, group->to, *group->best,
           WithCommas(group->count) + " boxes, among them " + group->best->path, false, true);
    }
    *group = Group();
  }

  /// Groups side by side, and the boxes in them.
  struct Band {
    std::size_t count = 0;
    double from = 0, to = 0;
  };
  void EndBand() {
    const std::string text = WithCommas(band_.count) + " boxes";
    if (band_.count > 1 && band_.to - band_.from > 12 + 6.4 * static_cast<double>(text.size())) {
      body_ += "<text x='" + Fixed(band_.from + 4) + "' y='" + Fixed(y_ + 15) + "' class='bt'>" +
               text + "</text>\n";
    }
    band_ = Band();
  }

  void Lanes(const Scale& scale) {
    y_ += 6;
    for (std::size_t i = 0; i < data_.tracks.size(); ++i) {
      const ChartTrack& track = data_.tracks[i];
      std::string label = std::to_string(track.id) + "  " + track.label;
      if (label.size() > 17) label = label.substr(0, 16) + "…";
      Text(40, y_ + 11, label, track.isProtected ? "s prot" : "s");
      body_ += "<rect x='" + Fixed(kLeft) + "' y='" + Fixed(y_) + "' width='" +
               Fixed(kRight - kLeft) + "' height='14' rx='2' class='lane'/>\n<path class='t" +
               std::to_string(i % 6) + "' d='";
      double from = -1, to = -1;
      const auto draw = [&] {
        if (from < 0) return;
        body_ += "M" + Fixed(from) + " " + Fixed(y_) + "H" + Fixed(std::max(to, from + 0.7)) + "V" +
                 Fixed(y_ + 14) + "H" + Fixed(from) + "Z";
      };
      for (const ChartExtent& extent : track.extents) {
        const double x0 = scale.X(extent.offset), x1 = scale.X(extent.end);
        if (from >= 0 && x0 <= to + 0.4) {
          to = std::max(to, x1);
          continue;
        }
        draw();
        from = x0;
        to = x1;
      }
      draw();
      body_ += "'/>\n";
      y_ += 18;
    }
    if (data_.moreTracks > 0) {
      Text(kLeft, y_ + 11, "and " + WithCommas(data_.moreTracks) + " more tracks", "soft s");
      y_ += 18;
    }
  }

  /// Where evidence and problems lie: a triangle above the boxes.
  void Marks(const Scale& scale, double top) {
    double lastEvidence = -9, lastProblem = -9;
    for (const ChartBox& box : data_.boxes) {
      if (!box.isEvidence && box.problem.empty()) continue;
      const double x = scale.X(box.offset);
      double& last = box.isEvidence ? lastEvidence : lastProblem;
      if (x - last < 5) continue;
      last = x;
      body_ += "<path d='M" + Fixed(x - 5) + " " + Fixed(top - 9) + "h10l-5 8z' class='" +
               (box.isEvidence ? "mark" : "badmark") + "'><title>" + Escaped(TitleOf(box)) +
               "</title></path>\n";
    }
    y_ += 14;
  }

  /// The first top-level box of a type.
  std::size_t FirstOf(const std::string& type) const {
    std::size_t i = 0;
    while (i < data_.boxes.size() && (data_.boxes[i].level != 0 || data_.boxes[i].type != type)) {
      ++i;
    }
    return i;
  }

  /// The first sample description that the verdict rests on: too small to be seen in its movie.
  std::size_t FirstDescription() const {
    std::size_t description = data_.boxes.size();
    for (std::size_t i = 0; i < data_.boxes.size(); ++i) {
      if (data_.boxes[i].type == "stsd") description = i;
      if (!data_.boxes[i].isEvidence || description >= i) continue;
      if (data_.boxes[i].path.find("stsd/") != std::string::npos) return description;
    }
    return data_.boxes.size();
  }

  /// From the place in the file above to the width below.
  void Funnel(double x0, double x1) {
    body_ += "<path d='M" + Fixed(x0) + " " + Fixed(y_ - 10) + "L" + Fixed(kLeft) + " " +
             Fixed(y_ + 24) + "H" + Fixed(kRight) + "L" + Fixed(std::max(x1, x0 + 1)) + " " +
             Fixed(y_ - 10) + "Z' class='zoom'/>\n";
  }

  /// A box with all that is in it.
  void Enlarge(std::size_t first, const Scale& all) {
    const auto& boxes = data_.boxes;
    if (first >= boxes.size()) return;
    const ChartBox* const found = &boxes[first];
    std::size_t last = first + 1;
    while (last < boxes.size() && boxes[last].level > found->level) ++last;
    if (last == first + 1) return;
    const Scale scale{static_cast<double>(found->offset), static_cast<double>(found->end)};
    if (!enlarged_) Funnel(all.X(found->offset), all.X(found->end));
    enlarged_ = true;
    Ruler(scale, found->path + ", enlarged");
    Boxes(scale, first, last, found->level, kDeepest, true);
    y_ += 18;
  }

  void Rates() {
    if (!(data_.seconds > 0)) return;
    const std::size_t parts = data_.tracks.empty() ? 0 : data_.tracks[0].rates.size();
    if (parts == 0) return;
    std::vector<double> sum(parts, 0);
    for (const ChartTrack& track : data_.tracks) {
      for (std::size_t i = 0; i < parts; ++i) sum[i] += track.rates[i];
    }
    for (std::size_t i = 0; i < data_.moreRates.size(); ++i) sum[i] += data_.moreRates[i];
    const double most = *std::max_element(sum.begin(), sum.end());
    if (!(most > 0)) return;
    Heading("bit rate over time, most " + RateText(most));
    constexpr double kHeight = 120;
    const double step = StepFor(most);
    for (double at = 0; at <= most; at += step) {
      const double y = y_ + kHeight - at / most * kHeight;
      body_ += "<line x1='" + Fixed(kLeft) + "' x2='" + Fixed(kRight) + "' y1='" + Fixed(y) +
               "' y2='" + Fixed(y) + "' class='grid'/>\n<text x='" + Fixed(kLeft - 8) + "' y='" +
               Fixed(y + 4) + "' text-anchor='end' class='soft s'>" + RateText(at) + "</text>\n";
    }
    std::vector<double> base(parts, 0);
    for (std::size_t t = 0; t < data_.tracks.size(); ++t) {
      const ChartTrack& track = data_.tracks[t];
      Area(track.rates, "t" + std::to_string(t % 6),
           "track " + std::to_string(track.id) + ", " + track.label, most, kHeight, &base);
    }
    if (!data_.moreRates.empty())
      Area(data_.moreRates, "rest", "more tracks", most, kHeight, &base);
    y_ += kHeight;
    const double seconds = StepFor(data_.seconds);
    for (double at = 0; at <= data_.seconds; at += seconds) {
      const double x = kLeft + at / data_.seconds * (kRight - kLeft);
      body_ += "<text x='" + Fixed(x) + "' y='" + Fixed(y_ + 16) +
               "' text-anchor='middle' class='soft s'>" + TimeText(at, data_.seconds) + "</text>\n";
    }
    y_ += 40;
  }

  void Area(const std::vector<double>& rates, const std::string& colour, const std::string& title,
            double most, double height, std::vector<double>* base) {
    const double width = (kRight - kLeft) / static_cast<double>(rates.size());
    std::string up, down;
    for (std::size_t i = 0; i < rates.size(); ++i) {
      const double x = kLeft + width * static_cast<double>(i);
      const double below = y_ + height - (*base)[i] / most * height;
      (*base)[i] += rates[i];
      const double above = y_ + height - (*base)[i] / most * height;
      up += (i == 0 ? "M" : "L") + Fixed(x) + " " + Fixed(above) + "H" + Fixed(x + width);
      down = "L" + Fixed(x + width) + " " + Fixed(below) + "H" + Fixed(x) + down;
    }
    body_ += "<path d='" + up + down + "Z' class='area " + colour + "'><title>" + Escaped(title) +
             "</title></path>\n";
  }

  void Findings() {
    if (data_.findings.empty()) return;
    Heading("what the verdict rests on, and what is wrong");
    for (std::size_t i = 0; i < std::min(data_.findings.size(), kFindingsShown); ++i) {
      std::string text = data_.findings[i];
      if (text.size() > 165) text = text.substr(0, 162) + "...";
      Text(40, y_ + 12, text, "s");
      y_ += 18;
    }
    const std::size_t all = data_.findings.size() + data_.moreFindings;
    if (all > kFindingsShown) {
      Text(40, y_ + 12, "and " + WithCommas(all - kFindingsShown) + " more", "soft s");
      y_ += 18;
    }
    y_ += 12;
  }

  void Legend() {
    double x = 40;
    for (int i = 0; i < 8; ++i) {
      const char* const name = NameOf(static_cast<BoxKind>(i));
      body_ += "<rect x='" + Fixed(x) + "' y='" + Fixed(y_) +
               "' width='14' height='14' rx='2' class='b " + name + "'/>\n";
      Text(x + 20, y_ + 11, name, "soft s");
      x += 44 + 6.6 * static_cast<double>(std::string(name).size());
    }
    body_ += "<path d='M" + Fixed(x) + " " + Fixed(y_ + 3) + "h10l-5 8z' class='mark'/>\n";
    Text(x + 16, y_ + 11, "evidence", "soft s");
    body_ += "<path d='M" + Fixed(x + 86) + " " + Fixed(y_ + 3) + "h10l-5 8z' class='badmark'/>\n";
    Text(x + 102, y_ + 11, "problem", "soft s");
    y_ += 38;
  }

  std::string Wrapped() const {
    const std::string height = Fixed(y_);
    return "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 " + Fixed(kWidth) + " " + height +
           "' width='" + Fixed(kWidth) + "' height='" + height +
           "' font-family='system-ui,-apple-system,Segoe UI,Roboto,sans-serif'>\n<title>" +
           Escaped(data_.file + ": " + data_.verdict) + "</title>\n<style>" + kChartColours +
           R"css(
text{fill:var(--ink);font-size:13px}.h1{font-size:22px;font-weight:650}.h2{font-size:13px;font-weight:600}
.soft{fill:var(--soft)}.s{font-size:11px}.badge{fill:var(--badge);font-size:13px;font-weight:600}.prot{fill:var(--protected)}
.tick,.grid{stroke:var(--line)}.b{stroke:var(--boxline);stroke-width:.6}.bt{font-size:11px;fill:var(--boxink);pointer-events:none}
.movie{fill:var(--movie)}.fragment{fill:var(--fragment)}.media{fill:var(--media)}.table{fill:var(--table)}
.index{fill:var(--index)}.protection{fill:var(--protection)}.space{fill:var(--space)}.other{fill:var(--other)}
.bad{stroke:var(--warn);stroke-width:1.6}.evidence{stroke:var(--protected);stroke-width:1.6}
.mark{fill:var(--protected)}.badmark{fill:var(--warn)}.lane{fill:var(--media);opacity:.6}.zoom{fill:var(--line);opacity:.45}
.t0{fill:var(--t0)}.t1{fill:var(--t1)}.t2{fill:var(--t2)}.t3{fill:var(--t3)}.t4{fill:var(--t4)}.t5{fill:var(--t5)}.rest{fill:var(--soft)}.area{opacity:.85}
)css" + "</style>\n<rect width='100%' height='100%' style='fill:var(--bg)'/>\n" +
           body_ + "</svg>\n";
  }

  const ChartData& data_;
  std::string body_;
  double y_ = 0;
  bool enlarged_ = false;
  Band band_;
};

}  // namespace

std::string ChartSvg(const ChartData& data) { return Picture(data).Draw(); }

}  // namespace tool
