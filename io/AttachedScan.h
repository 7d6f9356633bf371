#pragma once

namespace mp4 {

class ScanControl;

/// Has a reader or a context charge an account for as long as this lives. Borrows both.
template <class Holder>
class AttachedScan {
 public:
  AttachedScan(Holder* holder, ScanControl* scan) : holder(holder) { holder->AttachScan(scan); }
  ~AttachedScan() { holder->AttachScan(nullptr); }
  AttachedScan(const AttachedScan&) = delete;
  AttachedScan& operator=(const AttachedScan&) = delete;

 private:
  Holder* holder;
};

}  // namespace mp4
