#pragma once

#include <string>
#include <vector>

#include "inspect/BoxFields.h"
#include "inspect/BoxListing.h"
#include "mp4judge/look.h"

namespace mp4 {

/// One box of a listing with all that is shown of it.
struct ShownBox {
  std::string type, name, standard, path;
  int level = 0;
  Box box;
  std::vector<BoxField> fields;
  std::vector<std::string> problems;
};

/// May throw bad_alloc.
ShownBox ShowBox(BoxTree* tree, const BoxListing& listing, BoxId id, int level);

/// The value as a text: a list's rows with ", " between them.
std::string TextOfValue(const FieldValue& value);

/// A box as the C interface shows it: pointers into the box that it was made of.
class BoxView {
 public:
  /// `box` is borrowed. May throw bad_alloc.
  explicit BoxView(const ShownBox& box);
  BoxView(const BoxView&) = delete;
  BoxView& operator=(const BoxView&) = delete;
  const mp4judge_box* Get() const { return &view_; }

 private:
  std::vector<std::string> texts_;
  std::vector<std::vector<const char*>> rows_;
  std::vector<mp4judge_field> fields_;
  std::vector<const char*> problems_;
  mp4judge_box view_{};
};

}  // namespace mp4
