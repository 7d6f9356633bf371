#include "tools/PathWalker.h"

#include <dirent.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tool {

namespace {

bool IsFolder(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

std::string Join(const std::string& folder, const std::string& name) {
  return !folder.empty() && folder.back() == '/' ? folder + name : folder + '/' + name;
}

}  // namespace

PathWalker::PathWalker(const JudgeOptions& options, const std::atomic<bool>* stop)
    : options_(options),
      lines_(options.filesFrom, '\n', stop),
      zeros_(options.files0From, '\0', stop) {}

std::size_t PathWalker::KnownTotal() const {
  const bool listed = !options_.filesFrom.empty() || !options_.files0From.empty();
  return listed || options_.recursive ? 0 : options_.paths.size();
}

bool PathWalker::Next(PathItem* item) {
  *item = {};
  return TakeFound(item) || TakeNamed(item);
}

bool PathWalker::WouldWait() const {
  if (!folders_.empty() || next_ < options_.paths.size()) return false;
  return lines_.WouldWait() || zeros_.WouldWait();
}

/// A list that cannot be read stands for itself, with the reason.
bool PathWalker::NextListed(NameList* list, std::string* name) {
  const NameList::Result result = list->Next(name, &listFault_);
  if (result == NameList::kFault) *name = list->Name();
  return result != NameList::kEnd;
}

bool PathWalker::NextName(std::string* name) {
  if (next_ < options_.paths.size()) {
    *name = options_.paths[next_++];
    return true;
  }
  return NextListed(&lines_, name) || NextListed(&zeros_, name);
}

bool PathWalker::TakeNamed(PathItem* item) {
  std::string name;
  while (NextName(&name)) {
    item->path = name;
    item->fault = std::exchange(listFault_, {});
    if (!item->fault.empty() || !options_.recursive || !IsFolder(name)) return true;
    if (Enter(name, item)) return true;
    if (TakeFound(item)) return true;
  }
  return false;
}

bool PathWalker::TakeFound(PathItem* item) {
  while (!folders_.empty()) {
    Folder& folder = folders_.back();
    if (folder.entries.empty()) {
      folders_.pop_back();
      continue;
    }
    const Entry entry = std::move(folder.entries.back());
    folder.entries.pop_back();
    item->path = Join(folder.path, entry.name);
    item->fault.clear();
    item->found = true;
    if (!entry.folder) return true;
    if (Enter(item->path, item)) return true;
  }
  return false;
}

bool PathWalker::IsWanted(const std::string& name) const {
  if (options_.extensions.empty()) return true;
  const std::size_t dot = name.rfind('.');
  if (dot == std::string::npos) return false;
  return std::any_of(
      options_.extensions.begin(), options_.extensions.end(),
      [&](const std::string& wanted) { return strcasecmp(wanted.c_str(), &name[dot + 1]) == 0; });
}

/// Lists a folder that has not been entered yet. True when it cannot be read, with the reason.
bool PathWalker::Enter(const std::string& path, PathItem* fault) {
  DIR* handle = opendir(path.c_str());
  struct stat info {};
  if (handle == nullptr || fstat(dirfd(handle), &info) != 0) {
    fault->fault = std::strerror(errno);
    if (handle != nullptr) closedir(handle);
    return true;
  }
  if (!entered_.emplace(info.st_dev, info.st_ino).second) {
    closedir(handle);
    return false;
  }
  Folder folder{path, {}};
  while (const dirent* entry = readdir(handle)) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    const bool unknown = entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK;
    const bool isFolder = unknown ? IsFolder(Join(path, name)) : entry->d_type == DT_DIR;
    if (isFolder || IsWanted(name)) folder.entries.push_back({name, isFolder});
  }
  closedir(handle);
  std::sort(folder.entries.begin(), folder.entries.end(),
            [](const Entry& a, const Entry& b) { return a.name > b.name; });
  folders_.push_back(std::move(folder));
  return false;
}

}  // namespace tool
