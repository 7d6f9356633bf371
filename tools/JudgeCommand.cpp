#include "tools/JudgeCommand.h"

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "tools/OrderedPool.h"
#include "tools/Outcome.h"
#include "tools/Output.h"
#include "tools/PathWalker.h"
#include "tools/Printable.h"
#include "tools/Progress.h"
#include "tools/Sandbox.h"
#include "tools/Summary.h"
#include "tools/VerdictCache.h"

namespace tool {

namespace {

std::atomic<bool> interrupted{false};
/// No more names are waited for.
std::atomic<bool> stopped{false};
static_assert(std::atomic<bool>::is_always_lock_free);

void OnInterrupt(int /*signal*/) {
  // A second one ends the program at once.
  std::signal(SIGINT, SIG_DFL);
  interrupted = true;
  stopped = true;
}

struct Judged {
  Outcome outcome;
  std::optional<FileIdentity> identity;  ///< to remember it by
};

class Run {
 public:
  explicit Run(const JudgeOptions& options)
      : options_(options), walker_(options, &stopped), progress_(walker_.KnownTotal()) {}

  int Go() {
    if (!OpenCache()) return kTrouble;
    const int threads = Threads();
    for (int i = 0; cache_ != nullptr && i < threads; ++i) {
      readers_.push_back(std::make_unique<VerdictCache::Reader>(*cache_));
    }
    std::signal(SIGINT, OnInterrupt);
    if (walker_.KnownTotal() == 1) {
      Confine();
      InThisThread();
    } else {
      InThreads(threads);
    }
    return Finish();
  }

 private:
  bool OpenCache() {
    if (options_.cache.empty()) return true;
    std::string why;
    std::string notice;
    cache_ = VerdictCache::Open(options_.cache, &why, &notice);
    const std::string name = Printable(options_.cache);
    if (!notice.empty()) std::fprintf(stderr, "mp4judge: %s: %s\n", name.c_str(), notice.c_str());
    if (cache_ != nullptr) return true;
    std::fprintf(stderr, "mp4judge: %s: cannot be used as a cache: %s\n", name.c_str(),
                 why.c_str());
    return false;
  }

  /// One file needs no threads.
  int Threads() const {
    if (walker_.KnownTotal() == 1) return 1;
    const unsigned processors = std::thread::hardware_concurrency();
    return options_.jobs > 0 ? options_.jobs : static_cast<int>(std::max(processors, 1U));
  }

  void Confine() const {
    if (options_.sandbox) ConfineToReading();
  }

  bool Next(PathItem* item) { return !stopped && walker_.Next(item); }

  void InThisThread() {
    PathItem item;
    VerdictCache::Reader* reader = readers_.empty() ? nullptr : readers_.front().get();
    while (Next(&item) && Take(item, Judge(item, reader))) progress_.Tick();
  }

  void InThreads(int threads) {
    OrderedPool<PathItem, Judged>::Functions functions;
    functions.next = [this](PathItem* item) { return Next(item); };
    functions.waits = [this] { return walker_.WouldWait(); };
    functions.worker = [this]() -> std::function<Judged(const PathItem&)> {
      const std::size_t place = workers_++;
      VerdictCache::Reader* reader = readers_.empty() ? nullptr : readers_[place].get();
      return [this, reader](const PathItem& item) { return Judge(item, reader); };
    };
    functions.take = [this](const PathItem& item, Judged&& judged) {
      return Take(item, std::move(judged));
    };
    functions.tick = [this] { Wait(); };
    functions.ready = [this] { Confine(); };
    OrderedPool<PathItem, Judged>(threads, std::move(functions)).Run();
  }

  /// What is done is handed out while more is long in coming.
  void Wait() {
    progress_.Tick();
    const auto now = std::chrono::steady_clock::now();
    if (now < nextFlush_) return;
    nextFlush_ = now + std::chrono::milliseconds(100);
    if (std::fflush(stdout) != 0) stopped = true;
    if (cache_ != nullptr) cache_->Flush();
  }

  Judged Judge(const PathItem& item, VerdictCache::Reader* reader) const {
    if (!item.fault.empty()) return {Unjudged(item.path, item.fault, options_), {}};
    if (reader == nullptr) return {JudgePath(item.path, options_), {}};
    struct stat before {};
    if (stat(item.path.c_str(), &before) != 0 || !S_ISREG(before.st_mode)) {
      return {JudgePath(item.path, options_), {}};
    }
    const FileIdentity identity(before);
    Judged judged;
    if (reader->Find(item.path, identity, options_, &judged.outcome)) return judged;
    judged.outcome = JudgePath(item.path, options_);
    if (judged.outcome.lasting) judged.identity = identity;
    return judged;
  }

  /// Tells a verdict; false when nobody can read the output any more.
  bool Take(const PathItem& item, Judged&& judged) {
    const Outcome& outcome = judged.outcome;
    if (judged.identity.has_value()) cache_->Put(item.path, *judged.identity, options_, outcome);
    progress_.Done();
    if (item.found && outcome.otherFormat && !options_.allFiles) {
      summary_.PassOver();
      return true;
    }
    summary_.Add(outcome);
    const bool isProtected = outcome.verdict == MP4JUDGE_PROTECTED;
    const bool listed = !options_.quiet && (!options_.onlyProtected || isProtected) &&
                        (!options_.onlyOthers || !isProtected);
    if (!listed) return true;
    const std::string text = Tell(item.path, outcome, options_, colours_);
    if (colours_) progress_.Hide();
    std::fwrite(text.data(), 1, text.size(), stdout);
    const bool broken = std::ferror(stdout) != 0;
    if (broken) stopped = true;
    return !broken;
  }

  int Finish() {
    progress_.Hide();
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
      std::fputs("mp4judge: the output cannot be written\n", stderr);
      return kTrouble;
    }
    if (cache_ != nullptr && !cache_->Flush()) {
      std::fprintf(stderr, "mp4judge: %s: the cache cannot be written\n",
                   Printable(options_.cache).c_str());
    }
    if (interrupted) std::fputs("mp4judge: interrupted; this is what was done:\n", stderr);
    if (options_.summary || interrupted) std::fputs(summary_.Text().c_str(), stderr);
    return interrupted ? kInterrupted : summary_.Status();
  }

  const JudgeOptions& options_;
  PathWalker walker_;
  Progress progress_;
  Summary summary_;
  std::unique_ptr<VerdictCache> cache_;
  std::vector<std::unique_ptr<VerdictCache::Reader>> readers_;
  std::atomic<std::size_t> workers_{0};
  std::chrono::steady_clock::time_point nextFlush_{};
  const bool colours_ = WantsColours();
};

}  // namespace

int RunJudge(const JudgeOptions& options) { return Run(options).Go(); }

}  // namespace tool
