#include "tools/DiffCommand.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "mp4judge/look.hpp"
#include "tools/JudgeOptions.h"
#include "tools/Output.h"
#include "tools/Printable.h"
#include "tools/Sandbox.h"

namespace tool {

namespace {

using mp4judge::Field;
using mp4judge::Node;
using mp4judge::Tree;

/// One of the two files.
struct Side {
  std::string file;
  Tree tree;
  std::ifstream bytes;

  explicit Side(const std::string& name)
      : file(name), tree(Tree::OfPath(name.c_str())), bytes(name, std::ios::binary) {}
};

/// The last part of a path: type and, where it is written, ordinal.
std::string KeyOf(const Node& node) { return node.path.substr(node.path.rfind('/') + 1); }

bool IsMedia(const Node& node) {
  return node.type == "mdat" || node.type == "imda" || node.type == "idat";
}

std::string SizeText(const Node& node) { return WithCommas(node.size) + " bytes"; }

class Comparison {
 public:
  Comparison(Side* first, Side* second, Output* out) : first_(first), second_(second), out_(out) {}

  void Compare(const std::vector<Node>& a, const std::vector<Node>& b) {
    const std::map<std::string, const Node*> inA = ByKey(a), inB = ByKey(b);
    for (const Node& node : a) {
      const auto other = inB.find(KeyOf(node));
      if (other == inB.end()) {
        Say("- " + node.path + "  " + node.name + ", " + SizeText(node));
      } else {
        CompareBoxes(node, *other->second);
      }
    }
    for (const Node& node : b) {
      if (inA.count(KeyOf(node)) == 0) {
        Say("+ " + node.path + "  " + node.name + ", " + SizeText(node));
      }
    }
  }
  void Say(const std::string& line) {
    ++found_;
    out_->Write(line + "\n");
  }
  std::size_t Found() const { return found_; }

 private:
  static std::map<std::string, const Node*> ByKey(const std::vector<Node>& nodes) {
    std::map<std::string, const Node*> all;
    for (const Node& node : nodes) all.emplace(KeyOf(node), &node);
    return all;
  }

  void CompareBoxes(const Node& a, const Node& b) {
    const std::size_t before = found_;
    CompareFields(a, b);
    CompareProblems(a, b);
    if (IsMedia(a)) {
      if (a.size != b.size) Say("~ " + a.path + ": " + SizeText(a) + " -> " + SizeText(b));
      return;
    }
    Compare(a.children, b.children);
    // What the first rows of a table, or a box of no known fields, do not show.
    if (found_ == before && a.children.empty() && b.children.empty()) CompareBytes(a, b);
  }

  void CompareFields(const Node& a, const Node& b) {
    std::map<std::string, std::string> others;
    for (const Field& field : b.fields) others[field.name] = field.text;
    for (const Field& field : a.fields) {
      const auto other = others.find(field.name);
      const std::string text = other != others.end() ? other->second : "nothing";
      if (text != field.text) SayField(a, field.name, field.text, text);
      if (other != others.end()) others.erase(other);
    }
    for (const auto& [name, text] : others) SayField(a, name, "nothing", text);
  }

  void SayField(const Node& node, const std::string& name, const std::string& a,
                const std::string& b) {
    Say("~ " + node.path + ": " + name + " " + OneLine(a) + " -> " + OneLine(b));
  }

  void CompareProblems(const Node& a, const Node& b) {
    if (a.problems == b.problems) return;
    const auto text = [](const Node& node) {
      return node.problems.empty() ? std::string("nothing") : OneLine(node.problems[0]);
    };
    Say("~ " + a.path + ": wrong is " + text(a) + " -> " + text(b));
  }

  void CompareBytes(const Node& a, const Node& b) {
    if (a.space != 0 || b.space != 0) {
      if (a.size != b.size) Say("~ " + a.path + ": " + SizeText(a) + " -> " + SizeText(b));
      return;
    }
    first_->bytes.clear();
    second_->bytes.clear();
    first_->bytes.seekg(static_cast<std::streamoff>(a.offset + a.headerSize));
    second_->bytes.seekg(static_cast<std::streamoff>(b.offset + b.headerSize));
    std::uint64_t left = std::min(a.present - std::min<std::uint64_t>(a.present, a.headerSize),
                                  b.present - std::min<std::uint64_t>(b.present, b.headerSize));
    std::uint64_t same = 0;
    std::vector<char> x(1 << 16), y(1 << 16);
    while (left > 0) {
      const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(left, x.size()));
      if (!first_->bytes.read(x.data(), static_cast<std::streamsize>(n)) ||
          !second_->bytes.read(y.data(), static_cast<std::streamsize>(n))) {
        return;
      }
      const auto end = x.begin() + static_cast<std::ptrdiff_t>(n);
      const auto at = std::mismatch(x.begin(), end, y.begin()).first;
      same += static_cast<std::uint64_t>(at - x.begin());
      if (at != end) {
        Say("~ " + a.path + ": bytes differ from payload byte " + WithCommas(same) + " on");
        return;
      }
      left -= n;
    }
    if (a.size != b.size) Say("~ " + a.path + ": " + SizeText(a) + " -> " + SizeText(b));
  }

  Side* first_;
  Side* second_;
  Output* out_;
  std::size_t found_ = 0;
};

std::string VerdictOf(const std::string& file) {
  mp4judge_options options = MP4JUDGE_OPTIONS_DEFAULT;
  options.host_answer = 0;
  mp4judge_report* const report = mp4judge_inspect_path(file.c_str(), &options);
  std::string text = mp4judge_verdict_name(mp4judge_report_verdict(report));
  for (std::size_t i = 0; i < mp4judge_report_scheme_count(report); ++i) {
    text += (i == 0 ? " (" : ", ") + std::string(mp4judge_report_scheme(report, i));
  }
  if (mp4judge_report_scheme_count(report) > 0) text += ")";
  mp4judge_report_free(report);
  return text;
}

}  // namespace

int RunDiff(const DiffOptions& options) {
  if (options.sandbox) ConfineToReading();
  Side first(options.first), second(options.second);
  bool read = true;
  for (const Side* side : {&first, &second}) {
    read = CheckRead(side->file, side->tree.Error(), side->tree.SystemError()) && read;
  }
  if (!read) return kTrouble;
  Output out;
  Comparison comparison(&first, &second, &out);
  const std::string a = VerdictOf(options.first), b = VerdictOf(options.second);
  if (a != b) comparison.Say("~ protection: " + a + " -> " + b);
  comparison.Compare(first.tree.Boxes(), second.tree.Boxes());
  if (!out.End()) return kTrouble;
  if (!first.tree.Complete() || !second.tree.Complete()) {
    std::fputs("mp4judge: not every box was compared\n", stderr);
    return kTrouble;
  }
  return comparison.Found() == 0 ? 0 : 1;
}

}  // namespace tool
