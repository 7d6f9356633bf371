#include "tools/Summary.h"

#include "tools/Printable.h"

namespace tool {

void Summary::Add(const Outcome& outcome) {
  switch (outcome.verdict) {
    case MP4JUDGE_CLEAR:
      ++clear_;
      return;
    case MP4JUDGE_PROTECTED:
      ++protected_;
      break;
    default:
      ++undetermined_;
      return;
  }
  if (outcome.schemes.empty()) ++schemes_["a scheme without a name"];
  for (const std::string& scheme : outcome.schemes) ++schemes_[scheme];
}

ExitStatus Summary::Status() const {
  if (undetermined_ > 0) return kTrouble;
  return protected_ > 0 ? kSomeProtected : kAllClear;
}

std::string Summary::Text() const {
  std::string text = WithCommas(Judged()) + (Judged() == 1 ? " file: " : " files: ") +
                     WithCommas(clear_) + " clear, " + WithCommas(protected_) + " protected, " +
                     WithCommas(undetermined_) + " undetermined\n";
  for (const auto& [scheme, count] : schemes_) {
    text += "  protected by " + scheme + ": " + WithCommas(count) + '\n';
  }
  if (passedOver_ > 0) {
    text += "  passed over, no movies: " + WithCommas(passedOver_) + '\n';
  }
  return text;
}

}  // namespace tool
