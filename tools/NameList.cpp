#include "tools/NameList.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace tool {

namespace {

constexpr std::size_t kPiece = 65536;
constexpr int kPatience = 50;  // milliseconds between looks at `stop`

}  // namespace

NameList::~NameList() {
  if (file_ > STDIN_FILENO) close(file_);
}

bool NameList::Open(std::string* why) {
  if (file_ >= 0) return true;
  file_ = name_ == "-" ? STDIN_FILENO : open(name_.c_str(), O_RDONLY | O_CLOEXEC);
  if (file_ < 0) *why = std::strerror(errno);
  return file_ >= 0;
}

/// Reads more behind what is left; false at the end.
bool NameList::Fill(std::string* why) {
  buffer_.erase(0, at_);
  at_ = 0;
  pollfd waiting{file_, POLLIN, 0};
  while (poll(&waiting, 1, kPatience) == 0) {
    if (*stop_) return false;
  }
  const std::size_t held = buffer_.size();
  buffer_.resize(held + kPiece);
  const ssize_t n = read(file_, &buffer_[held], kPiece);
  buffer_.resize(held + (n > 0 ? static_cast<std::size_t>(n) : 0));
  if (n < 0 && errno != EINTR) *why = std::strerror(errno);
  return n > 0 || (n < 0 && errno == EINTR && !*stop_);
}

bool NameList::WouldWait() const {
  if (done_ || file_ < 0 || buffer_.find(end_, at_) != std::string::npos) return false;
  pollfd waiting{file_, POLLIN, 0};
  return poll(&waiting, 1, 0) == 0;
}

NameList::Result NameList::Next(std::string* name, std::string* why) {
  std::size_t looked = 0;
  while (!done_) {
    const std::size_t end = file_ < 0 ? std::string::npos : buffer_.find(end_, at_ + looked);
    if (end != std::string::npos) {
      name->assign(buffer_, at_, end - at_);
      at_ = end + 1;
      looked = 0;
      if (!name->empty()) return kName;
      continue;
    }
    looked = buffer_.size() - at_;
    done_ = !Open(why) || !Fill(why);
  }
  if (!why->empty()) return kFault;
  // The last name may lack its end.
  name->assign(buffer_, at_, std::string::npos);
  buffer_.clear();
  at_ = 0;
  return name->empty() || *stop_ ? kEnd : kName;
}

}  // namespace tool
