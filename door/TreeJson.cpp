#include "door/TreeJson.h"

namespace mp4 {

namespace {

struct ValueWriter {
  JsonWriter* json;
  void operator()(std::uint64_t value) const { json->Unsigned(value); }
  void operator()(std::int64_t value) const { json->Signed(value); }
  void operator()(double value) const { json->Real(value); }
  void operator()(bool value) const { json->Bool(value); }
  void operator()(const std::string& value) const { json->String(value); }
  void operator()(const std::vector<std::string>& rows) const {
    json->BeginArray();
    for (const std::string& row : rows) json->String(row);
    json->EndArray();
  }
};

void WriteProblems(const std::vector<std::string>& problems, JsonWriter* json) {
  if (problems.empty()) return;
  json->Name("problems");
  ValueWriter{json}(problems);
}

/// All of a box but its children and the end of the object.
void BeginBox(const ShownBox& shown, JsonWriter* json) {
  json->BeginObject();
  json->Member("type", shown.type);
  if (!shown.name.empty()) json->Member("name", shown.name);
  if (!shown.standard.empty()) json->Member("standard", shown.standard);
  json->Member("path", shown.path);
  if (shown.box.space != 0) json->Member("space", std::uint64_t{shown.box.space});
  json->Member("offset", shown.box.offset);
  json->Member("header_size", std::uint64_t{shown.box.headerSize});
  json->Member("size", shown.box.size);
  if (shown.box.IsCut()) json->Member("present", shown.box.end - shown.box.offset);
  if (!shown.fields.empty()) {
    json->Name("fields");
    WriteFields(shown.fields, json);
  }
  WriteProblems(shown.problems, json);
}

/// Writes boxes as they come, and ends those that are behind.
class BoxesWriter {
 public:
  explicit BoxesWriter(JsonWriter* json) : json_(json) { json_->BeginArray(); }

  void Add(const ShownBox& shown) {
    const auto level = static_cast<std::size_t>(shown.level);
    EndDownTo(level);
    if (!open_.empty() && !open_.back()) {
      json_->Name("children");
      json_->BeginArray();
      open_.back() = true;
    }
    BeginBox(shown, json_);
    open_.push_back(false);
  }
  void End() {
    EndDownTo(0);
    json_->EndArray();
  }

 private:
  void EndDownTo(std::size_t level) {
    while (open_.size() > level) {
      if (open_.back()) json_->EndArray();
      json_->EndObject();
      open_.pop_back();
    }
  }

  JsonWriter* json_;
  std::vector<bool> open_;  ///< by open box: whether its list of children has begun
};

}  // namespace

void WriteFields(const std::vector<BoxField>& fields, JsonWriter* json) {
  json->BeginObject();
  for (const BoxField& field : fields) {
    json->Name(field.name);
    std::visit(ValueWriter{json}, field.value);
  }
  json->EndObject();
}

void VisitListing(BoxTree* tree, const BoxListing& listing,
                  const std::function<bool(const ShownBox&)>& visit) {
  for (const BoxId root : listing.Roots()) {
    const int top = tree->At(root).depth;
    for (BoxId at = root; at != kNoBox;) {
      const int level = tree->At(at).depth - top;
      if (!visit(ShowBox(tree, listing, at, level))) return;
      const BoxId child = listing.ShowsBelow(level + 1) ? tree->FirstChild(at) : kNoBox;
      if (child != kNoBox) {
        at = child;
        continue;
      }
      while (at != root && tree->Next(at) == kNoBox) at = tree->At(at).parent;
      at = at == root ? kNoBox : tree->Next(at);
    }
  }
}

std::string TreeJson(BoxTree* tree, const BoxListing& listing, JsonWriter::Form form) {
  std::string text;
  JsonWriter json(&text, form);
  json.BeginObject();
  json.Member("size", tree->Source()->Size());
  json.Member("complete", listing.Complete());
  WriteProblems(listing.ProblemsOf(kRootBox), &json);
  json.Name("boxes");
  BoxesWriter boxes(&json);
  VisitListing(tree, listing, [&](const ShownBox& shown) {
    boxes.Add(shown);
    return true;
  });
  boxes.End();
  json.EndObject();
  return text;
}

}  // namespace mp4
