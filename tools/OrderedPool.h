#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tool {

/// Works on items in several threads and hands the results on in the order of the items, holding a
/// bounded number of them. `Item` and `Result` are default-constructible and movable.
template <class Item, class Result>
class OrderedPool {
 public:
  struct Functions {
    /// The next item, false behind the last; called by one thread at a time.
    std::function<bool(Item*)> next;
    /// Whether `next` would have to wait; called like it. May be empty.
    std::function<bool()> waits;
    /// Called by each thread once, before its first item; its own state, if it needs any.
    std::function<std::function<Result(const Item&)>()> worker;
    /// Takes the results in order, in the calling thread; false ends the work early.
    std::function<bool(const Item&, Result&&)> take;
    /// Called by the calling thread again and again while it waits. May be empty.
    std::function<void()> tick;
    /// Called once when all threads are there and before any has an item. May be empty.
    std::function<void()> ready;
  };

  OrderedPool(int threads, Functions functions)
      : functions_(std::move(functions)), slots_(kSlots), threads_(std::max(threads, 1)) {}

  void Run() {
    std::vector<std::thread> threads;
    for (int i = 0; i < threads_; ++i) threads.emplace_back([this] { Work(); });
    if (functions_.ready) functions_.ready();
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      started_ = true;
    }
    room_.notify_all();
    TakeAll();
    for (std::thread& thread : threads) thread.join();
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  static constexpr std::size_t kSlots = 1024;
  /// Items taken at a time, once there are evidently many.
  static constexpr std::size_t kBatch = 8;
  static constexpr auto kPatience = std::chrono::milliseconds(10);

  struct Slot {
    Item item{};
    Result result{};
    bool done = false;
  };

  void Work() {
    {
      std::unique_lock<std::mutex> lock(mutex_);
      room_.wait(lock, [this] { return started_; });
    }
    try {
      const auto work = functions_.worker();
      std::size_t from = 0;
      std::size_t to = 0;
      while (Claim(&from, &to)) {
        for (std::size_t i = from; i < to; ++i) {
          Slot& slot = slots_[i % kSlots];
          slot.result = work(slot.item);
        }
        Finish(from, to);
      }
    } catch (...) {
      const std::lock_guard<std::mutex> lock(mutex_);
      failure_ = std::current_exception();
      stop_ = true;
      done_.notify_all();
      room_.notify_all();
    }
  }

  /// Fills some slots with items for the calling thread. Items may be long in coming: only threads
  /// that want more of them wait, and those that are there are not kept back.
  bool Claim(std::size_t* from, std::size_t* to) {
    const std::lock_guard<std::mutex> source(source_);
    std::size_t most = 0;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      room_.wait(lock,
                 [this] { return stop_ || exhausted_ || claimed_ - taken_ + kBatch <= kSlots; });
      *from = *to = claimed_;
      if (!stop_ && !exhausted_) most = claimed_ < 64 ? 1 : kBatch;
    }
    // Nobody looks at slots that are not claimed yet.
    bool more = most > 0;
    while (*to - *from < most && more) {
      Slot& slot = slots_[*to % kSlots];
      slot.done = false;
      more = functions_.next(&slot.item);
      if (more) ++*to;
      if (functions_.waits && functions_.waits()) break;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    claimed_ = *to;
    if (!more) exhausted_ = true;
    if (!more) room_.notify_all();
    if (*to == *from) done_.notify_all();
    return *to > *from;
  }

  void Finish(std::size_t from, std::size_t to) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (std::size_t i = from; i < to; ++i) slots_[i % kSlots].done = true;
    finished_ += to - from;
    // Waking somebody costs more than judging a file; the patience of TakeAll does for few.
    if (finished_ - taken_ >= kSlots / 4 || (exhausted_ && finished_ == claimed_)) {
      done_.notify_all();
    }
  }

  void TakeAll() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
      const bool over = stop_ || (exhausted_ && taken_ == claimed_);
      if (over) return;
      Slot& slot = slots_[taken_ % kSlots];
      if (taken_ == claimed_ || !slot.done) {
        done_.wait_for(lock, kPatience);
        lock.unlock();
        if (functions_.tick) functions_.tick();
        lock.lock();
        continue;
      }
      slot.done = false;
      lock.unlock();
      const bool goOn = functions_.take(slot.item, std::move(slot.result));
      lock.lock();
      ++taken_;
      if (!goOn) stop_ = true;
      if (stop_ || claimed_ - taken_ == kSlots / 2) room_.notify_all();
    }
  }

  Functions functions_;
  std::vector<Slot> slots_;
  int threads_;
  std::mutex source_;  ///< held by the thread that asks for items
  std::mutex mutex_;
  std::condition_variable room_;  ///< slots have become free, or the work has begun
  std::condition_variable done_;  ///< results have come
  std::size_t claimed_ = 0;       ///< items handed out
  std::size_t finished_ = 0;
  std::size_t taken_ = 0;
  bool started_ = false;
  bool exhausted_ = false;
  bool stop_ = false;
  std::exception_ptr failure_;
};

}  // namespace tool
