#include "door/BoxView.h"

#include <charconv>

#include "inspect/BoxNames.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

std::string RealText(double value) {
  char digits[32];
  return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

struct ValueText {
  std::string operator()(std::uint64_t value) const { return std::to_string(value); }
  std::string operator()(std::int64_t value) const { return std::to_string(value); }
  std::string operator()(double value) const { return RealText(value); }
  std::string operator()(bool value) const { return value ? "true" : "false"; }
  std::string operator()(const std::string& value) const { return value; }
  std::string operator()(const std::vector<std::string>& rows) const {
    std::string text;
    for (const std::string& row : rows) text += (text.empty() ? "" : ", ") + row;
    return text;
  }
};

mp4judge_field_kind KindOf(const FieldValue& value) {
  if (std::holds_alternative<std::string>(value)) return MP4JUDGE_FIELD_TEXT;
  if (std::holds_alternative<bool>(value)) return MP4JUDGE_FIELD_BOOL;
  if (std::holds_alternative<std::vector<std::string>>(value)) return MP4JUDGE_FIELD_LIST;
  return MP4JUDGE_FIELD_NUMBER;
}

}  // namespace

std::string TextOfValue(const FieldValue& value) { return std::visit(ValueText(), value); }

ShownBox ShowBox(BoxTree* tree, const BoxListing& listing, BoxId id, int level) {
  ShownBox shown;
  const Box box = tree->At(id);
  const std::uint32_t parent = tree->At(box.parent).type;
  const BoxName name = NameOfBox(box.type, parent);
  shown.type = TypeText(box.type);
  shown.name = name.name;
  shown.standard = name.standard;
  shown.path = tree->Path(id);
  shown.level = level;
  shown.box = box;
  bool cut = false;
  shown.fields = FieldsOf(tree, id, &cut);
  shown.problems = listing.ProblemsOf(id);
  // A box that is cut as a whole has said so.
  if (cut && shown.problems.empty())
    shown.problems.emplace_back("it ends before its own fields do");
  return shown;
}

BoxView::BoxView(const ShownBox& shown) {
  // Reserved, so that what points into it stays where it is.
  texts_.reserve(shown.fields.size());
  rows_.reserve(shown.fields.size());
  for (const BoxField& field : shown.fields) {
    texts_.push_back(TextOfValue(field.value));
    rows_.emplace_back();
    if (const auto* rows = std::get_if<std::vector<std::string>>(&field.value)) {
      for (const std::string& row : *rows) rows_.back().push_back(row.c_str());
    }
    fields_.push_back({field.name, KindOf(field.value), texts_.back().c_str(), rows_.back().size(),
                       rows_.back().data()});
  }
  for (const std::string& problem : shown.problems) problems_.push_back(problem.c_str());
  view_ = {shown.type.c_str(),
           shown.name.c_str(),
           shown.standard.c_str(),
           shown.path.c_str(),
           shown.level,
           shown.box.space,
           shown.box.headerSize,
           shown.box.offset,
           shown.box.size,
           shown.box.end - shown.box.offset,
           fields_.size(),
           fields_.data(),
           problems_.size(),
           problems_.data()};
}

}  // namespace mp4
