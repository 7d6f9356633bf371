#include "tools/DiffSide.h"

#include <cstring>
#include <memory>

#include "tools/Outcome.h"
#include "tools/Output.h"

namespace tool {

bool DiffBox::IsMedia() const {
  const std::string type = key.substr(0, key.find('['));
  return type == "mdat" || type == "imda" || type == "idat";
}

std::vector<std::pair<std::string_view, std::string_view>> DiffBox::Fields() const {
  std::vector<std::pair<std::string_view, std::string_view>> all;
  for (const char* at = fields.c_str(); at < fields.c_str() + fields.size();) {
    const std::string_view field(at);
    const std::string_view value(at + field.size() + 1);
    all.emplace_back(field, value);
    at += field.size() + value.size() + 2;
  }
  return all;
}

DiffSide::DiffSide(const std::string& file) : file_(file), boxes_(1), open_{0} {
  const std::unique_ptr<mp4judge_tree, void (*)(mp4judge_tree*)> tree(
      mp4judge_tree_open_path(file.c_str()), mp4judge_tree_free);
  error_ = mp4judge_tree_walk(tree.get(), nullptr, Visit, this);
  systemError_ = mp4judge_tree_errno(tree.get());
  complete_ = complete_ && mp4judge_tree_complete(tree.get()) != 0;
  for (const std::size_t at : open_) boxes_[at].behind = boxes_.size();
  // What is no file, a pipe for one, would be waited for.
  if (error_ == MP4JUDGE_OK) bytes_.open(file, std::ios::binary);
}

int DiffSide::Visit(void* user, const mp4judge_box* box) {
  DiffSide& side = *static_cast<DiffSide*>(user);
  side.complete_ = false;
  try {
    side.Add(*box);
    side.complete_ = true;
    return 0;
  } catch (...) {
    return 1;
  }
}

void DiffSide::Add(const mp4judge_box& box) {
  while (open_.size() > static_cast<std::size_t>(box.level) + 1) {
    boxes_[open_.back()].behind = boxes_.size();
    open_.pop_back();
  }
  DiffBox one;
  const char* const slash = std::strrchr(box.path, '/');
  one.key = slash != nullptr ? slash + 1 : box.path;
  one.name = box.name;
  for (std::size_t i = 0; i < box.field_count; ++i) {
    one.fields.append(box.fields[i].name)
        .append(1, '\0')
        .append(box.fields[i].text)
        .append(1, '\0');
  }
  one.fields.shrink_to_fit();
  if (box.problem_count > 0) one.problem = box.problems[0];
  one.parent = open_.back();
  one.space = box.space;
  one.headerSize = box.header_size;
  one.offset = box.offset;
  one.size = box.size;
  one.present = box.present;
  open_.push_back(boxes_.size());
  boxes_.push_back(std::move(one));
}

std::string DiffSide::PathOf(std::size_t at) const {
  std::string path = boxes_[at].key;
  while ((at = boxes_[at].parent) != 0) path.insert(0, boxes_[at].key + "/");
  return path;
}

std::string DiffSide::Verdict() const {
  mp4judge_options options = MP4JUDGE_OPTIONS_DEFAULT;
  options.host_answer = 0;
  mp4judge_report* const report = mp4judge_inspect_path(file_.c_str(), &options);
  std::string text = mp4judge_verdict_name(mp4judge_report_verdict(report));
  const std::string by = ProtectedBy(report);
  if (!by.empty()) text += " (" + OneLine(by) + ")";
  mp4judge_report_free(report);
  return text;
}

bool DiffSide::Read(std::uint64_t offset, std::vector<char>* bytes, std::size_t n) {
  bytes_.clear();
  bytes_.seekg(static_cast<std::streamoff>(offset));
  return static_cast<bool>(bytes_.read(bytes->data(), static_cast<std::streamsize>(n)));
}

}  // namespace tool
