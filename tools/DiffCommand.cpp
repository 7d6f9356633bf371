#include "tools/DiffCommand.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <unordered_map>

#include "tools/DiffSide.h"
#include "tools/JudgeOptions.h"
#include "tools/Output.h"
#include "tools/Printable.h"
#include "tools/Sandbox.h"

namespace tool {

namespace {

std::string SizeText(const DiffBox& box) { return WithCommas(box.size) + " bytes"; }

class Comparison {
 public:
  Comparison(DiffSide* first, DiffSide* second, Output* out)
      : first_(*first), second_(*second), out_(out), x_(kAtOnce), y_(kAtOnce) {}

  void Go() {
    const std::string a = first_.Verdict(), b = second_.Verdict();
    if (a != b) Say("~ protection: " + a + " -> " + b);
    CompareChildren(0, 0);
  }
  std::size_t Found() const { return found_; }

 private:
  using Places = std::unordered_map<std::string_view, std::size_t>;
  static constexpr std::size_t kAtOnce = std::size_t{1} << 16;

  void Say(const std::string& line) {
    ++found_;
    out_->Write(line + "\n");
  }
  void SayAlone(const char* mark, const DiffSide& side, std::size_t at) {
    const DiffBox& box = side.Boxes()[at];
    Say(mark + side.PathOf(at) + "  " + (box.name.empty() ? "" : box.name + ", ") + SizeText(box));
  }
  void SayChange(std::size_t a, const std::string& what) {
    Say("~ " + first_.PathOf(a) + ": " + what);
  }

  static Places ChildrenOf(const DiffSide& side, std::size_t parent) {
    Places places;
    const std::vector<DiffBox>& boxes = side.Boxes();
    for (std::size_t at = parent + 1; at < boxes[parent].behind; at = boxes[at].behind) {
      places.emplace(boxes[at].key, at);
    }
    return places;
  }

  /// Boxes of one parent that have the same type and ordinal are the same box.
  void CompareChildren(std::size_t a, std::size_t b) {
    const std::vector<DiffBox>&inA = first_.Boxes(), &inB = second_.Boxes();
    {
      const Places others = ChildrenOf(second_, b);
      for (std::size_t at = a + 1; at < inA[a].behind && !out_->Failed(); at = inA[at].behind) {
        const auto other = others.find(inA[at].key);
        if (other == others.end()) {
          SayAlone("- ", first_, at);
        } else {
          CompareBoxes(at, other->second);
        }
      }
    }
    const Places known = ChildrenOf(first_, a);
    for (std::size_t at = b + 1; at < inB[b].behind && !out_->Failed(); at = inB[at].behind) {
      if (known.count(inB[at].key) == 0) SayAlone("+ ", second_, at);
    }
  }

  void CompareBoxes(std::size_t a, std::size_t b) {
    const DiffBox &inA = first_.Boxes()[a], &inB = second_.Boxes()[b];
    const std::size_t before = found_;
    if (inA.fields != inB.fields) CompareFields(a, inA, inB);
    if (inA.problem != inB.problem) {
      SayFrom(a, "wrong is", OrNothing(inA.problem), OrNothing(inB.problem));
    }
    if (inA.IsMedia()) {
      CompareSizes(a, inA, inB);
      return;
    }
    CompareChildren(a, b);
    // What the first rows of a table, or a box of no known fields, do not show.
    const bool leaves = inA.behind == a + 1 && inB.behind == b + 1;
    if (found_ == before && leaves) CompareBytes(a, inA, inB);
  }

  static std::string_view OrNothing(const std::string& text) {
    return text.empty() ? std::string_view() : std::string_view(text);
  }

  void CompareFields(std::size_t at, const DiffBox& a, const DiffBox& b) {
    std::map<std::string_view, std::string_view> others;
    for (const auto& [name, value] : b.Fields()) others[name] = value;
    for (const auto& [name, value] : a.Fields()) {
      const auto other = others.find(name);
      const std::string_view text = other != others.end() ? other->second : std::string_view();
      if (other == others.end() || text != value) SayFrom(at, name, value, text);
      if (other != others.end()) others.erase(other);
    }
    for (const auto& [name, value] : others) SayFrom(at, name, {}, value);
  }

  void SayFrom(std::size_t at, std::string_view what, std::string_view a, std::string_view b) {
    const auto text = [](std::string_view value) {
      if (value.data() == nullptr) return std::string("nothing");
      return value.empty() ? std::string("\"\"") : OneLine(std::string(value));
    };
    SayChange(at, std::string(what) + " " + text(a) + " -> " + text(b));
  }

  void CompareSizes(std::size_t at, const DiffBox& a, const DiffBox& b) {
    if (a.size != b.size) SayChange(at, SizeText(a) + " -> " + SizeText(b));
  }

  void CompareBytes(std::size_t at, const DiffBox& a, const DiffBox& b) {
    // An inflated movie is not in the file as such.
    if (a.space == 0 && b.space == 0) {
      const std::uint64_t inA = a.present - std::min<std::uint64_t>(a.present, a.headerSize);
      const std::uint64_t inB = b.present - std::min<std::uint64_t>(b.present, b.headerSize);
      const std::uint64_t all = std::min(inA, inB);
      for (std::uint64_t done = 0; done < all;) {
        const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(all - done, kAtOnce));
        if (!first_.Read(a.offset + a.headerSize + done, &x_, n) ||
            !second_.Read(b.offset + b.headerSize + done, &y_, n)) {
          break;
        }
        const auto end = x_.begin() + static_cast<std::ptrdiff_t>(n);
        const auto differs = std::mismatch(x_.begin(), end, y_.begin()).first;
        if (differs != end) {
          const auto same = done + static_cast<std::uint64_t>(differs - x_.begin());
          SayChange(at, "bytes differ from payload byte " + WithCommas(same) + " on");
          return;
        }
        done += n;
      }
    }
    CompareSizes(at, a, b);
  }

  DiffSide& first_;
  DiffSide& second_;
  Output* out_;
  std::vector<char> x_, y_;
  std::size_t found_ = 0;
};

}  // namespace

int RunDiff(const DiffOptions& options) {
  if (options.sandbox) ConfineToReading();
  DiffSide first(options.first), second(options.second);
  bool read = true;
  for (const DiffSide* side : {&first, &second}) {
    read = CheckRead(side->File(), side->Error(), side->SystemError()) && read;
  }
  const bool movies = read && CheckMovie(options.first) && CheckMovie(options.second);
  if (!movies) return kTrouble;
  Output out;
  Comparison comparison(&first, &second, &out);
  comparison.Go();
  if (!out.End()) return kTrouble;
  bool complete = true;
  for (const DiffSide* side : {&first, &second}) {
    if (side->Complete()) continue;
    complete = false;
    std::fprintf(stderr,
                 "mp4judge: %s: not every box was compared: they are too many, or nest too deep\n",
                 Printable(side->File()).c_str());
  }
  if (!complete) return kTrouble;
  return comparison.Found() == 0 ? 0 : 1;
}

}  // namespace tool
