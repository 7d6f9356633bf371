#pragma once

#include <atomic>
#include <string>

namespace tool {

/// Names from a file or from the input, each ended by one byte, read as they are asked for. Empty
/// names are passed over.
class NameList {
 public:
  enum Result { kName, kEnd, kFault };

  /// `name` is the list's file, "-" the input, and empty no list at all. Waiting ends when `stop`
  /// becomes true.
  NameList(const std::string& name, char end, const std::atomic<bool>* stop)
      : name_(name), end_(end), stop_(stop), done_(name.empty()) {}
  ~NameList();
  NameList(const NameList&) = delete;
  NameList& operator=(const NameList&) = delete;

  /// The next name; behind a fault, which says why in `why`, comes the end.
  Result Next(std::string* name, std::string* why);
  /// Whether the next name is still to come from whoever writes the list.
  bool WouldWait() const;
  const std::string& Name() const { return name_; }

 private:
  bool Open(std::string* why);
  bool Fill(std::string* why);

  std::string name_;
  char end_;
  const std::atomic<bool>* stop_;
  bool done_;
  int file_ = -1;
  std::string buffer_;
  std::size_t at_ = 0;
};

}  // namespace tool
