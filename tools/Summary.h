#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "tools/Outcome.h"

namespace tool {

/// Counts of a run, by verdict and scheme.
class Summary {
 public:
  void Add(const Outcome& outcome);
  void PassOver() { ++passedOver_; }

  std::size_t Judged() const { return clear_ + protected_ + undetermined_; }
  /// The status that the worst of the files asks for.
  ExitStatus Status() const;
  /// Lines such as "12 files: 9 clear, 2 protected, 1 undetermined" and "protected by cenc: 2".
  std::string Text() const;

 private:
  std::size_t clear_ = 0;
  std::size_t protected_ = 0;
  std::size_t undetermined_ = 0;
  std::size_t passedOver_ = 0;
  std::map<std::string, std::size_t> schemes_;
};

}  // namespace tool
