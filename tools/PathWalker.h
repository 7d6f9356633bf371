#pragma once

#include <sys/types.h>

#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tools/JudgeOptions.h"
#include "tools/NameList.h"

namespace tool {

/// One thing to judge.
struct PathItem {
  std::string path;
  bool found = false;  ///< met in a folder, not named by the user
  std::string fault;   ///< why it cannot even be looked for; else empty
};

/// The files that a command line names, in its order: arguments first, then the lists of
/// --files-from and --files0-from, read as they are needed. With -r a folder stands for the files
/// below it, sorted by name; each folder is walked once, however many links lead to it.
class PathWalker {
 public:
  /// Waiting for a list ends when `stop` becomes true.
  PathWalker(const JudgeOptions& options, const std::atomic<bool>* stop);

  /// The next item; false behind the last.
  bool Next(PathItem* item);
  /// Whether the next item is still to come from whoever writes a list.
  bool WouldWait() const;
  /// How many there are in all, when that is known beforehand; else 0.
  std::size_t KnownTotal() const;

 private:
  struct Entry {
    std::string name;
    bool folder;
  };
  struct Folder {
    std::string path;
    std::vector<Entry> entries;  ///< sorted, the next one last
  };

  bool NextName(std::string* name);
  bool NextListed(NameList* list, std::string* name);
  bool TakeNamed(PathItem* item);
  bool TakeFound(PathItem* item);
  bool Enter(const std::string& path, PathItem* fault);
  bool IsWanted(const std::string& name) const;

  const JudgeOptions& options_;
  std::size_t next_ = 0;
  NameList lines_;
  NameList zeros_;
  std::string listFault_;
  std::vector<Folder> folders_;
  std::set<std::pair<dev_t, ino_t>> entered_;
};

}  // namespace tool
