#pragma once

#include <chrono>
#include <cstddef>

namespace tool {

/// A line on standard error that counts up while the work goes on: only on a terminal, and only
/// when it takes longer than a second.
class Progress {
 public:
  /// `total` is 0 while nobody knows it.
  explicit Progress(std::size_t total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Done() { ++done_; }
  /// Shows how far the work is, at most a few times a second.
  void Tick();
  /// Wipes the line, so that other output can be written.
  void Hide();

 private:
  using Clock = std::chrono::steady_clock;

  bool onTerminal_;
  bool shown_ = false;
  std::size_t total_;
  std::size_t done_ = 0;
  Clock::time_point started_;
  Clock::time_point next_;
};

}  // namespace tool
