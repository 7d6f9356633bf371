#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mp4judge/look.h"

namespace tool {

/// A box as it is compared. A file may have very many, so that little is kept of each.
struct DiffBox {
  std::string key;  ///< the last part of its path: type and, where it is written, ordinal
  std::string name;
  std::string fields;   ///< names and values, a zero byte behind each
  std::string problem;  ///< empty when nothing is wrong
  std::size_t parent = 0;
  std::size_t behind = 0;  ///< the place of the first box that is not in it
  unsigned space = 0, headerSize = 0;
  std::uint64_t offset = 0, size = 0, present = 0;

  bool IsMedia() const;
  std::vector<std::pair<std::string_view, std::string_view>> Fields() const;
};

/// One of two files that are compared: its boxes in file order, the file itself at place 0.
class DiffSide {
 public:
  explicit DiffSide(const std::string& file);

  const std::string& File() const { return file_; }
  const std::vector<DiffBox>& Boxes() const { return boxes_; }
  std::string PathOf(std::size_t at) const;
  /// "protected (cenc)".
  std::string Verdict() const;
  mp4judge_error Error() const { return error_; }
  int SystemError() const { return systemError_; }
  /// Whether every box is there.
  bool Complete() const { return complete_; }
  /// Whether so many bytes of the file, from there on, could be read.
  bool Read(std::uint64_t offset, std::vector<char>* bytes, std::size_t n);

 private:
  static int Visit(void* user, const mp4judge_box* box);
  void Add(const mp4judge_box& box);

  std::string file_;
  std::vector<DiffBox> boxes_;
  std::vector<std::size_t> open_;  ///< the places of the last box and of those that it is in
  std::ifstream bytes_;
  mp4judge_error error_ = MP4JUDGE_OK;
  int systemError_ = 0;
  bool complete_ = false;
};

}  // namespace tool
