/// @file
/// mp4judge/look.hpp: mp4judge/look.h for C++17. Plain values; nothing throws, unless a function
/// that is handed in does.
#ifndef MP4JUDGE_LOOK_HPP
#define MP4JUDGE_LOOK_HPP

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "mp4judge/look.h"

namespace mp4judge {

/// A field of a box.
struct Field {
  std::string name;                                ///< as the standard has it, in camel case
  mp4judge_field_kind kind = MP4JUDGE_FIELD_TEXT;  ///< what `text` stands for
  std::string text;               ///< the value; of a list, its rows with ", " between them
  std::vector<std::string> rows;  ///< of a list: the first rows of a table
};

/// A box as a value, with the boxes in it. Members as those of mp4judge_box.
struct Node {
  std::string type;                   ///< four characters, `\xHH` for those not printable ASCII
  std::string name;                   ///< what its standard calls it; empty when unknown
  std::string standard;               ///< where that is; empty when unknown
  std::string path;                   ///< "moov/trak[2]/mdia"
  unsigned space = 0;                 ///< 0 for the file; otherwise an inflated movie
  unsigned headerSize = 0;            ///< bytes in front of the payload
  std::uint64_t offset = 0;           ///< of the header's first byte, in `space`
  std::uint64_t size = 0;             ///< header included, as the box says
  std::uint64_t present = 0;          ///< bytes of it that are there
  std::vector<Field> fields;          ///< those that are known and there
  std::vector<std::string> problems;  ///< what is wrong with the box, a sentence each
  std::vector<Node> children;         ///< the boxes in it, in the order of the file
};

/// The boxes of a file as values. Nothing of it refers to the file once it is made.
class Tree {
 public:
  /// Looks at a file. Null options: the defaults.
  static Tree OfPath(const char* path, const mp4judge_tree_options* options = nullptr) noexcept {
    return Tree(mp4judge_tree_open_path(path), options);
  }
  /// The same for memory. Null is a source without bytes.
  static Tree OfMemory(const void* bytes, std::size_t n,
                       const mp4judge_tree_options* options = nullptr) noexcept {
    return Tree(mp4judge_tree_open_memory(bytes, n), options);
  }
  /// The same for what two callbacks deliver, as mp4judge_inspect_callbacks takes them.
  static Tree OfCallbacks(mp4judge_read_at readAt, mp4judge_size size, void* user,
                          const mp4judge_tree_options* options = nullptr) noexcept {
    return Tree(mp4judge_tree_open_callbacks(readAt, size, user), options);
  }

  /// The boxes that the listing begins with: those at the top level, or those of the path asked
  /// for.
  const std::vector<Node>& Boxes() const { return boxes_; }
  /// What kept the listing from being whole; what is there is true all the same.
  mp4judge_error Error() const { return error_; }
  /// The errno that belongs to the error, or what a callback answered; 0 when there is none.
  int SystemError() const { return systemError_; }
  /// Whether the walk came to the end of the file.
  bool Complete() const { return complete_; }
  /// Bytes of the file; 0 when it could not be opened.
  std::uint64_t FileSize() const { return fileSize_; }

 private:
  Tree(mp4judge_tree* opened, const mp4judge_tree_options* options) noexcept {
    const std::unique_ptr<mp4judge_tree, void (*)(mp4judge_tree*)> tree(opened, mp4judge_tree_free);
    if (tree == nullptr) {
      error_ = MP4JUDGE_ERROR_MEMORY;
      return;
    }
    error_ = mp4judge_tree_walk(tree.get(), options, Visit, this);
    systemError_ = mp4judge_tree_errno(tree.get());
    complete_ = mp4judge_tree_complete(tree.get()) != 0 && !outOfMemory_;
    fileSize_ = mp4judge_tree_file_size(tree.get());
    if (outOfMemory_) error_ = MP4JUDGE_ERROR_MEMORY;
  }

  static int Visit(void* user, const mp4judge_box* box) noexcept {
    Tree* const tree = static_cast<Tree*>(user);
    try {
      tree->Add(*box);
      return 0;
    } catch (...) {
      tree->outOfMemory_ = true;
      return 1;
    }
  }

  void Add(const mp4judge_box& box) {
    std::vector<Node>* siblings = &boxes_;
    for (int level = 0; level < box.level && !siblings->empty(); ++level) {
      siblings = &siblings->back().children;
    }
    Node node{box.type,   box.name, box.standard, box.path, box.space, box.header_size,
              box.offset, box.size, box.present,  {},       {},        {}};
    for (std::size_t i = 0; i < box.field_count; ++i) {
      const mp4judge_field& field = box.fields[i];
      node.fields.push_back(
          {field.name, field.kind, field.text, {field.rows, field.rows + field.row_count}});
    }
    node.problems.assign(box.problems, box.problems + box.problem_count);
    siblings->push_back(std::move(node));
  }

  std::vector<Node> boxes_;
  mp4judge_error error_ = MP4JUDGE_OK;
  int systemError_ = 0;
  bool complete_ = false;
  bool outOfMemory_ = false;
  std::uint64_t fileSize_ = 0;
};

}  // namespace mp4judge

#endif
