#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "iso/BoxTree.h"

namespace mp4 {

/// Which boxes to list.
struct ListingOptions {
  /// Levels below and with each box that the listing begins with; 0 lists all.
  int depth = 0;
  /// Only boxes of this path, each with what is below it: types by '/', as BoxTree::Path writes
  /// them, where a type without an ordinal stands for any. With a '/' in front the path begins at
  /// the top level, else anywhere. Empty lists the whole file.
  std::string path;
  /// The listing ends after so many boxes.
  std::uint64_t mostBoxes = 200000;
};

/// A path as ListingOptions has it.
class PathPattern {
 public:
  explicit PathPattern(const std::string& path);
  bool Matches(const BoxTree& tree, BoxId id) const;

 private:
  struct Step {
    std::string type;           ///< as TypeText writes it; "*" is any
    std::uint32_t ordinal = 0;  ///< 0: any
  };
  bool anchored_ = false;
  std::vector<Step> steps_;
};

/// The boxes of a tree in file order, walked once and as a whole, so that what is wrong with each
/// is known. May throw bad_alloc.
class BoxListing {
 public:
  BoxListing(BoxTree* tree, const ListingOptions& options);

  /// The boxes that the listing begins with.
  const std::vector<BoxId>& Roots() const { return roots_; }
  /// Whether the children of a box, of those below a root, are listed.
  bool ShowsBelow(int depthFromRoot) const { return depth_ == 0 || depthFromRoot < depth_; }
  /// What is wrong with a box, kRootBox for the file.
  const std::vector<std::string>& ProblemsOf(BoxId id) const;
  /// Whether the walk came to the end of the file.
  bool Complete() const { return complete_; }

 private:
  void WalkAll(BoxTree* tree, const ListingOptions& options);
  BoxId Follow(BoxTree* tree, BoxId at, bool below);

  int depth_;
  bool complete_ = true;
  std::vector<BoxId> roots_;
  std::unordered_map<BoxId, std::vector<std::string>> problems_;
};

/// Limits for a tree that is to be listed.
TreeLimits LimitsOf(const ListingOptions& options, std::uint64_t sourceSize);

}  // namespace mp4
