#pragma once

#include <sys/stat.h>

#include <memory>
#include <string>
#include <vector>

#include "tools/Outcome.h"

struct sqlite3;
struct sqlite3_stmt;

namespace tool {

/// What makes a file the one that was judged: changed bytes change a time, or the size.
struct FileIdentity {
  explicit FileIdentity(const struct stat& info);

  long long device, inode, size, modified, changed;  ///< times in nanoseconds
};

/// Verdicts remembered in a SQLite file between runs. A file that is no cache of ours is never
/// written to, and one that another process holds is left alone; one of ours that is damaged, or
/// was made by another version, is begun anew.
class VerdictCache {
 public:
  /// Opens or makes the cache; null with the reason when it cannot be used. `notice` receives a
  /// sentence when an old content was dropped.
  static std::unique_ptr<VerdictCache> Open(const std::string& path, std::string* why,
                                            std::string* notice);
  ~VerdictCache();
  VerdictCache(const VerdictCache&) = delete;
  VerdictCache& operator=(const VerdictCache&) = delete;

  /// One reader for each thread, made before the process is confined.
  class Reader {
   public:
    explicit Reader(const VerdictCache& cache);
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    /// What is remembered of the file, if it answers all that is asked now.
    bool Find(const std::string& path, const FileIdentity& file, const JudgeOptions& options,
              Outcome* outcome);

   private:
    sqlite3* base_ = nullptr;
    sqlite3_stmt* find_ = nullptr;
    int found_ = 0;
  };

  /// Remembers an outcome; written together with others, at the latest with Flush.
  void Put(const std::string& path, const FileIdentity& file, const JudgeOptions& options,
           const Outcome& outcome);
  /// Writes what is remembered; false when that failed, which costs the next run its time alone.
  bool Flush();

 private:
  explicit VerdictCache(std::string path) : path_(std::move(path)) {}
  enum class State { kReady, kDamaged, kUnusable };
  State Prepare(std::string* why);
  bool Run(const char* sql);

  std::string path_;
  sqlite3* base_ = nullptr;
  sqlite3_stmt* put_ = nullptr;
  int pending_ = 0;
  bool failed_ = false;
};

}  // namespace tool
