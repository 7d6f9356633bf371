#include "tools/VerdictCache.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace tool {

namespace {

/// In the header of every cache, so that nothing else is taken for one: "mp4j".
constexpr int kApplicationId = 0x6D70346A;
/// Written together: a killed run loses no more than these.
constexpr int kBatch = 64;

/// Look-ups in one view of the base.
constexpr int kFindsInOneView = 4096;

constexpr const char* kTable =
    "CREATE TABLE IF NOT EXISTS verdicts (device INTEGER, inode INTEGER, everything INTEGER,"
    " size INTEGER, modified INTEGER, changed INTEGER, verdict INTEGER, host INTEGER,"
    " detail TEXT, schemes TEXT, other INTEGER, json BLOB, explanation BLOB,"
    " PRIMARY KEY (device, inode, everything)) WITHOUT ROWID";
constexpr const char* kFind =
    "SELECT verdict, host, detail, schemes, other, json, explanation FROM verdicts WHERE device=?1"
    " AND inode=?2 AND everything=?3 AND size=?4 AND modified=?5 AND changed=?6";
constexpr const char* kPut =
    "INSERT OR REPLACE INTO verdicts VALUES (?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,?11,?12,?13)";

enum class Kind { kNew, kOurs, kForeign };

/// Looks at the first bytes: a cache of ours has our number where SQLite keeps the application's.
Kind KindOf(const std::string& path, std::string* why) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) {
    if (errno == ENOENT) return Kind::kNew;
    *why = std::strerror(errno);
    return Kind::kForeign;
  }
  unsigned char head[72] = {};
  const ssize_t n = read(file, head, sizeof head);
  close(file);
  if (n == 0) return Kind::kNew;
  const bool sqlite = n == sizeof head && std::memcmp(head, "SQLite format 3", 16) == 0;
  const int id = head[68] << 24 | head[69] << 16 | head[70] << 8 | head[71];
  if (sqlite && id == kApplicationId) return Kind::kOurs;
  *why = "it is not a cache of mp4judge";
  return Kind::kForeign;
}

void RemoveAll(const std::string& path) {
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) unlink((path + suffix).c_str());
}

std::string Joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += part + '\n';
  return text;
}

std::vector<std::string> Parted(const std::string& text) {
  std::vector<std::string> parts;
  for (std::size_t from = 0, to = 0; (to = text.find('\n', from)) != std::string::npos;
       from = to + 1) {
    parts.push_back(text.substr(from, to - from));
  }
  return parts;
}

std::string Column(sqlite3_stmt* row, int i) {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(row, i));
  return bytes != nullptr
             ? std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(row, i)))
             : std::string();
}

void BindText(sqlite3_stmt* row, int i, const std::string& text) {
  sqlite3_bind_blob(row, i, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

long long Nanoseconds(const struct timespec& time) {
  return static_cast<long long>(time.tv_sec) * 1000000000 + time.tv_nsec;
}

bool Exec(sqlite3* base, const char* sql) {
  return sqlite3_exec(base, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

void BindKey(sqlite3_stmt* row, const FileIdentity& file, const JudgeOptions& options) {
  const long long key[] = {file.device, file.inode,    options.everything ? 1 : 0,
                           file.size,   file.modified, file.changed};
  int place = 0;
  for (const long long value : key) sqlite3_bind_int64(row, ++place, value);
}

/// Numbers of the library and of the table's form; a cache with others is of another version.
std::string VersionPragma() {
  constexpr int kForm = 1;
  return "PRAGMA user_version=" + std::to_string(MP4JUDGE_VERSION_NUMBER * 10 + kForm);
}

bool HasOurVersion(sqlite3* base) {
  sqlite3_stmt* ask = nullptr;
  bool same = false;
  if (sqlite3_prepare_v2(base, "PRAGMA user_version", -1, &ask, nullptr) == SQLITE_OK &&
      sqlite3_step(ask) == SQLITE_ROW) {
    same = "PRAGMA user_version=" + std::to_string(sqlite3_column_int(ask, 0)) == VersionPragma();
  }
  sqlite3_finalize(ask);
  return same;
}

bool IsSound(sqlite3* base) {
  sqlite3_stmt* ask = nullptr;
  const bool sound =
      sqlite3_prepare_v2(base, "PRAGMA quick_check(1)", -1, &ask, nullptr) == SQLITE_OK &&
      sqlite3_step(ask) == SQLITE_ROW && Column(ask, 0) == "ok";
  sqlite3_finalize(ask);
  return sound && HasOurVersion(base);
}

/// Whether an error tells of what is in the file, not of who may use it now.
bool IsDamage(int code) {
  switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
    case SQLITE_IOERR:
    case SQLITE_FULL:
    case SQLITE_NOMEM:
    case SQLITE_NOLFS:
      return false;
    default:
      return true;
  }
}

std::string WordsFor(sqlite3* base) {
  switch (sqlite3_errcode(base) & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return "another process holds it";
    case SQLITE_READONLY:
      return "it cannot be written";
    default:
      return sqlite3_errmsg(base);
  }
}

}  // namespace

FileIdentity::FileIdentity(const struct stat& info)
    : device(static_cast<long long>(info.st_dev)),
      inode(static_cast<long long>(info.st_ino)),
      size(info.st_size),
      modified(Nanoseconds(info.st_mtim)),
      changed(Nanoseconds(info.st_ctim)) {}

std::unique_ptr<VerdictCache> VerdictCache::Open(const std::string& path, std::string* why,
                                                 std::string* notice) {
  const Kind kind = KindOf(path, why);
  if (kind == Kind::kForeign) return nullptr;
  std::unique_ptr<VerdictCache> cache(new VerdictCache(path));
  const State state = cache->Prepare(why);
  if (state == State::kReady) return cache;
  // What another process uses, or this one may not write, is left as it is.
  if (kind == Kind::kNew || state == State::kUnusable) return nullptr;
  cache.reset(new VerdictCache(path));
  RemoveAll(path);
  *notice = "the cache was damaged or made by another version, and is begun anew";
  if (cache->Prepare(why) != State::kReady) cache.reset();
  return cache;
}

VerdictCache::State VerdictCache::Prepare(std::string* why) {
  const bool isNew = access(path_.c_str(), F_OK) != 0;
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  if (sqlite3_open_v2(path_.c_str(), &base_, flags, nullptr) != SQLITE_OK) {
    *why = WordsFor(base_);
    return State::kUnusable;
  }
  sqlite3_busy_timeout(base_, 5000);
  const std::string id = "PRAGMA application_id=" + std::to_string(kApplicationId);
  // With a write-ahead log a killed process leaves every finished transaction behind.
  bool ok =
      isNew ? Exec(base_, id.c_str()) && Exec(base_, VersionPragma().c_str()) : IsSound(base_);
  ok = ok && Exec(base_, "PRAGMA journal_mode=WAL") && Exec(base_, "PRAGMA synchronous=OFF") &&
       Exec(base_, "PRAGMA temp_store=MEMORY") && Exec(base_, kTable) &&
       sqlite3_prepare_v2(base_, kPut, -1, &put_, nullptr) == SQLITE_OK &&
       // What earlier runs left in the log is found faster in the base itself.
       Exec(base_, "PRAGMA wal_checkpoint") &&
       // Opens the log while files may still be opened for writing.
       Exec(base_, "BEGIN IMMEDIATE; DELETE FROM verdicts WHERE device IS NULL; COMMIT");
  const int code = sqlite3_errcode(base_);
  if (!ok) *why = WordsFor(base_);
  int keep = 1;
  sqlite3_file_control(base_, nullptr, SQLITE_FCNTL_PERSIST_WAL, &keep);
  if (ok) return State::kReady;
  return IsDamage(code) ? State::kDamaged : State::kUnusable;
}

VerdictCache::~VerdictCache() {
  Flush();
  sqlite3_finalize(put_);
  sqlite3_close(base_);
}

bool VerdictCache::Run(const char* sql) {
  if (!Exec(base_, sql)) failed_ = true;
  return !failed_;
}

void VerdictCache::Put(const std::string& path, const FileIdentity& file,
                       const JudgeOptions& options, const Outcome& outcome) {
  if (failed_ || (pending_ == 0 && !Run("BEGIN"))) return;
  BindKey(put_, file, options);
  sqlite3_bind_int(put_, 7, outcome.verdict);
  sqlite3_bind_int(put_, 8, outcome.hostAnswer);
  BindText(put_, 9, outcome.detail);
  BindText(put_, 10, Joined(outcome.schemes));
  sqlite3_bind_int(put_, 11, outcome.otherFormat ? 1 : 0);
  // The JSON names the file, which may have another name by then.
  BindText(put_, 12, outcome.json.empty() ? std::string() : path + '\0' + outcome.json);
  BindText(put_, 13, outcome.explanation);
  if (sqlite3_step(put_) != SQLITE_DONE) failed_ = true;
  sqlite3_reset(put_);
  if (++pending_ >= kBatch) Flush();
}

bool VerdictCache::Flush() {
  if (pending_ > 0) Run("COMMIT");
  pending_ = 0;
  return !failed_;
}

VerdictCache::Reader::Reader(const VerdictCache& cache) {
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
  if (sqlite3_open_v2(cache.path_.c_str(), &base_, flags, nullptr) != SQLITE_OK) return;
  sqlite3_busy_timeout(base_, 1000);
  Exec(base_, "PRAGMA mmap_size=268435456");
  int keep = 1;
  sqlite3_file_control(base_, nullptr, SQLITE_FCNTL_PERSIST_WAL, &keep);
  if (sqlite3_prepare_v2(base_, kFind, -1, &find_, nullptr) != SQLITE_OK) return;
  // One look at the state of now: what this run adds is of files that it does not meet again.
  Exec(base_, "BEGIN; SELECT 1 FROM verdicts LIMIT 1");
}

VerdictCache::Reader::~Reader() {
  sqlite3_finalize(find_);
  sqlite3_close(base_);
}

bool VerdictCache::Reader::Find(const std::string& path, const FileIdentity& file,
                                const JudgeOptions& options, Outcome* outcome) {
  if (find_ == nullptr) return false;
  // A reader that never lets go would keep the log from being folded into the base.
  if (++found_ % kFindsInOneView == 0) Exec(base_, "COMMIT; BEGIN");
  BindKey(find_, file, options);
  const bool found = sqlite3_step(find_) == SQLITE_ROW;
  if (found) {
    outcome->verdict = static_cast<mp4judge_verdict>(sqlite3_column_int(find_, 0));
    outcome->hostAnswer = sqlite3_column_int(find_, 1);
    outcome->detail = Column(find_, 2);
    outcome->schemes = Parted(Column(find_, 3));
    outcome->otherFormat = sqlite3_column_int(find_, 4) != 0;
    const std::string named = Column(find_, 5);
    const std::string prefix = path + '\0';
    if (named.compare(0, prefix.size(), prefix) == 0) outcome->json = named.substr(prefix.size());
    outcome->explanation = Column(find_, 6);
  }
  sqlite3_reset(find_);
  const bool enough = (!options.json || !outcome->json.empty()) &&
                      (!options.explain || !outcome->explanation.empty()) &&
                      (!options.hostAnswer || outcome->hostAnswer >= 0);
  return found && enough;
}

}  // namespace tool
