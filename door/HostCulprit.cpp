#include "door/HostCulprit.h"

#include <algorithm>

namespace mp4 {

namespace {

/// Bounds on what is tried at one level; what lies behind them is not explained.
constexpr std::size_t kMostBoxes = 4096;
constexpr std::size_t kMostSingle = 64;
constexpr int kDeepest = 12;

using Boxes = std::vector<BoxId>;

class Search {
 public:
  Search(HostTrial* trial, bool (*wanted)(mp4judge_host_answer)) : trial_(trial), wanted_(wanted) {}

  Boxes Run() {
    Boxes found;
    Boxes level = ChildrenOf({kRootBox});
    for (int depth = 0; depth < kDeepest && !level.empty() && !trial_->IsSpent(); ++depth) {
      const Boxes culprit = CulpritOf(level);
      if (!culprit.empty()) found = culprit;
      // Of a level that cannot be missed as a whole, a part further in may be to blame.
      level = ChildrenOf(culprit.empty() ? level : culprit);
    }
    return found;
  }

 private:
  Boxes ChildrenOf(const Boxes& parents) {
    Boxes children;
    for (const BoxId parent : parents) {
      BoxId child = trial_->Tree().FirstChild(parent);
      for (; child != kNoBox && children.size() < kMostBoxes; child = trial_->Tree().Next(child)) {
        children.push_back(child);
      }
    }
    return children;
  }

  /// One box of the level, else all of one type.
  Boxes CulpritOf(const Boxes& level) {
    for (std::size_t i = 0; i < std::min(level.size(), kMostSingle); ++i) {
      if (Works({level[i]})) return {level[i]};
    }
    std::vector<std::uint32_t> tried;
    for (const BoxId box : level) {
      const std::uint32_t type = TypeOf(box);
      if (std::find(tried.begin(), tried.end(), type) != tried.end()) continue;
      if (tried.size() == kMostSingle) break;
      tried.push_back(type);
      Boxes all;
      std::copy_if(level.begin(), level.end(), std::back_inserter(all),
                   [&](BoxId other) { return TypeOf(other) == type; });
      if (all.size() > 1 && Works(all)) return all;
    }
    return {};
  }

  std::uint32_t TypeOf(BoxId box) { return trial_->Tree().At(box).type; }

  bool Works(const Boxes& boxes) {
    const auto changes = trial_->Without(boxes);
    const mp4judge_host_answer answer = trial_->Answer(changes);
    return !changes.empty() && !trial_->IsSpent() && wanted_(answer);
  }

  HostTrial* trial_;
  bool (*wanted_)(mp4judge_host_answer);
};

}  // namespace

std::vector<BoxId> FindCulprit(HostTrial* trial, bool (*wanted)(mp4judge_host_answer)) {
  return Search(trial, wanted).Run();
}

}  // namespace mp4
