#include "tools/TreeCommand.h"

#include <cstdio>
#include <string>

#include "tools/JudgeOptions.h"
#include "tools/Output.h"
#include "tools/Printable.h"
#include "tools/Sandbox.h"

namespace tool {

namespace {

/// Columns of offset and size, in front of the type.
constexpr int kColumn = 12;

struct Printer {
  Output* out;
  bool fields;
};

std::string Indent(int level) { return std::string(static_cast<std::size_t>(level) * 2, ' '); }

std::string Columns(const mp4judge_box& box) {
  char text[64];
  std::snprintf(text, sizeof text, "%*llu %*llu  ", kColumn,
                static_cast<unsigned long long>(box.offset), kColumn,
                static_cast<unsigned long long>(box.size));
  return text;
}

/// A value that could be taken for several stands in quotes.
std::string ValueText(const mp4judge_field& field) {
  const std::string text = OneLine(field.text);
  if (field.kind == MP4JUDGE_FIELD_LIST) return "[" + text + "]";
  const bool plain = !text.empty() && text.find_first_of(" \"'=[]") == std::string::npos;
  return field.kind == MP4JUDGE_FIELD_TEXT && !plain ? "\"" + text + "\"" : text;
}

/// The fields on lines of a readable length.
void PrintFields(const mp4judge_box& box, Output* out) {
  constexpr std::size_t kWidth = 100;
  const std::string margin = std::string(2 * kColumn + 3, ' ') + Indent(box.level + 1);
  std::string line;
  for (std::size_t i = 0; i < box.field_count; ++i) {
    const std::string field = std::string(box.fields[i].name) + "=" + ValueText(box.fields[i]);
    if (!line.empty() && line.size() + field.size() > kWidth) {
      out->Dim(margin + line + "\n");
      line.clear();
    }
    line += (line.empty() ? "" : "  ") + field;
  }
  if (!line.empty()) out->Dim(margin + line + "\n");
}

void PrintBox(const mp4judge_box& box, const Printer& printer) {
  Output* const out = printer.out;
  out->Dim(Columns(box));
  out->Write(Indent(box.level));
  out->Bold(box.type);
  if (box.name[0] != '\0') out->Write(std::string("  ") + box.name);
  if (box.space != 0) out->Dim("  (inflated)");
  out->Write("\n");
  if (printer.fields) PrintFields(box, out);
  const std::string margin = std::string(2 * kColumn + 3, ' ') + Indent(box.level + 1);
  for (std::size_t i = 0; i < box.problem_count; ++i) {
    out->Warn(margin + "! " + OneLine(box.problems[i]) + "\n");
  }
}

int Visit(void* user, const mp4judge_box* box) {
  const Printer& printer = *static_cast<const Printer*>(user);
  try {
    PrintBox(*box, printer);
  } catch (...) {
    return 1;
  }
  return printer.out->Failed() ? 1 : 0;
}

}  // namespace

int RunTree(const TreeOptions& options) {
  if (options.sandbox) ConfineToReading();
  const TreeHandle tree = OpenToLook(options.file);
  if (tree == nullptr || !CheckMovie(options.file)) return kTrouble;
  mp4judge_tree_options which = MP4JUDGE_TREE_OPTIONS_DEFAULT;
  which.depth = options.depth;
  which.path = options.path.empty() ? nullptr : options.path.c_str();
  which.most_boxes = options.most;
  which.indented = 1;
  Output out;
  if (options.json) {
    const char* const json = mp4judge_tree_json(tree.get(), &which);
    if (json != nullptr) out.Write(std::string(json) + "\n");
  } else {
    Printer printer{&out, options.fields};
    mp4judge_tree_walk(tree.get(), &which, Visit, &printer);
  }
  if (!out.End()) return kTrouble;
  if (!CheckRead(options.file, mp4judge_tree_error(tree.get()), mp4judge_tree_errno(tree.get()))) {
    return kTrouble;
  }
  if (mp4judge_tree_complete(tree.get()) == 0) {
    std::fprintf(
        stderr,
        "mp4judge: %s: not every box was listed: they are more than --most, or nest too deep\n",
        Printable(options.file).c_str());
    return kTrouble;
  }
  return kAllClear;
}

}  // namespace tool
