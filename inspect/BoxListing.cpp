#include "inspect/BoxListing.h"

#include <algorithm>
#include <cstdlib>

#include "inspect/TreeProblems.h"
#include "iso/TypeText.h"

namespace mp4 {

PathPattern::PathPattern(const std::string& path) {
  std::size_t at = 0;
  if (!path.empty() && path[0] == '/') {
    anchored_ = true;
    at = 1;
  }
  while (at < path.size()) {
    const std::size_t end = std::min(path.find('/', at), path.size());
    std::string text = path.substr(at, end - at);
    const std::size_t bracket = text.find('[');
    Step step;
    if (bracket != std::string::npos) {
      const unsigned long long n = std::strtoull(text.c_str() + bracket + 1, nullptr, 10);
      step.ordinal = static_cast<std::uint32_t>(std::min<unsigned long long>(n, 0xFFFFFFFF));
      text.resize(bracket);
    }
    step.type = std::move(text);
    if (!step.type.empty()) steps_.push_back(std::move(step));
    at = end + 1;
  }
}

bool PathPattern::Matches(const BoxTree& tree, BoxId id) const {
  for (auto step = steps_.rbegin(); step != steps_.rend(); ++step) {
    if (id == kRootBox) return false;
    const Box& box = tree.At(id);
    if (step->ordinal != 0 && step->ordinal != box.ordinal) return false;
    if (step->type != "*" && step->type != TypeText(box.type)) return false;
    id = box.parent;
  }
  return !anchored_ || id == kRootBox;
}

TreeLimits LimitsOf(const ListingOptions& options, std::uint64_t sourceSize) {
  TreeLimits limits = TreeLimits::For(sourceSize);
  limits.boxes = std::min(limits.boxes, std::max<std::uint64_t>(options.mostBoxes, 1));
  return limits;
}

BoxListing::BoxListing(BoxTree* tree, const ListingOptions& options) : depth_(options.depth) {
  WalkAll(tree, options);
  for (const BoxProblem& problem : tree->Problems()) {
    problems_[problem.box].push_back(TextOfProblem(*tree, problem));
    const bool hides = problem.fault == BoxFault::kTooManyBoxes ||
                       problem.fault == BoxFault::kTooDeep ||
                       problem.fault == BoxFault::kNotDelivered;
    complete_ = complete_ && !hides;
  }
}

/// Without a path nothing below the depth wanted needs walking.
void BoxListing::WalkAll(BoxTree* tree, const ListingOptions& options) {
  const PathPattern pattern(options.path);
  int rootDepth = 0;  // of the root that the walk is below, 0: none
  for (BoxId at = tree->FirstChild(kRootBox); at != kNoBox;) {
    const int depth = tree->At(at).depth;
    if (rootDepth != 0 && depth <= rootDepth) rootDepth = 0;
    if (rootDepth == 0 && (options.path.empty() || pattern.Matches(*tree, at))) {
      roots_.push_back(at);
      rootDepth = depth;
    }
    const bool below = rootDepth == 0 || ShowsBelow(depth - rootDepth + 1);
    at = Follow(tree, at, below);
  }
}

/// The next box in file order, `below` this one or behind it.
BoxId BoxListing::Follow(BoxTree* tree, BoxId at, bool below) {
  const BoxId child = below ? tree->FirstChild(at) : kNoBox;
  if (child != kNoBox) return child;
  while (at != kRootBox) {
    const BoxId next = tree->Next(at);
    if (next != kNoBox) return next;
    at = tree->At(at).parent;
  }
  return kNoBox;
}

const std::vector<std::string>& BoxListing::ProblemsOf(BoxId id) const {
  static const std::vector<std::string> kNone;
  const auto found = problems_.find(id);
  return found != problems_.end() ? found->second : kNone;
}

}  // namespace mp4
