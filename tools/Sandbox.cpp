#include "tools/Sandbox.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define MP4JUDGE_SANITIZED 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define MP4JUDGE_SANITIZED 1
#endif

// The sanitizers' own runtime starts programs and threads of its own.
#if defined(MP4JUDGE_HAVE_SECCOMP) && !defined(MP4JUDGE_SANITIZED)

#include <fcntl.h>
#include <seccomp.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstdint>
#include <initializer_list>

namespace tool {

namespace {

/// What reading, waiting, allocating, printing and ending take.
constexpr int kAllowed[] = {SCMP_SYS(read),
                            SCMP_SYS(pread64),
                            SCMP_SYS(readv),
                            SCMP_SYS(preadv),
                            SCMP_SYS(write),
                            SCMP_SYS(writev),
                            SCMP_SYS(pwrite64),
                            SCMP_SYS(close),
                            SCMP_SYS(fstat),
                            SCMP_SYS(stat),
                            SCMP_SYS(lstat),
                            SCMP_SYS(newfstatat),
                            SCMP_SYS(statx),
                            SCMP_SYS(fstatfs),
                            SCMP_SYS(statfs),
                            SCMP_SYS(lseek),
                            SCMP_SYS(mmap),
                            SCMP_SYS(munmap),
                            SCMP_SYS(mremap),
                            SCMP_SYS(mprotect),
                            SCMP_SYS(madvise),
                            SCMP_SYS(brk),
                            SCMP_SYS(futex),
                            SCMP_SYS(sched_yield),
                            SCMP_SYS(getdents64),
                            SCMP_SYS(readlink),
                            SCMP_SYS(readlinkat),
                            SCMP_SYS(access),
                            SCMP_SYS(faccessat),
                            SCMP_SYS(faccessat2),
                            SCMP_SYS(getcwd),
                            SCMP_SYS(fcntl),
                            SCMP_SYS(fsync),
                            SCMP_SYS(fdatasync),
                            SCMP_SYS(ftruncate),
                            SCMP_SYS(fallocate),
                            SCMP_SYS(rt_sigaction),
                            SCMP_SYS(rt_sigprocmask),
                            SCMP_SYS(rt_sigreturn),
                            SCMP_SYS(sigaltstack),
                            SCMP_SYS(tgkill),
                            SCMP_SYS(gettid),
                            SCMP_SYS(getpid),
                            SCMP_SYS(geteuid),
                            SCMP_SYS(getuid),
                            SCMP_SYS(exit),
                            SCMP_SYS(exit_group),
                            SCMP_SYS(clock_gettime),
                            SCMP_SYS(clock_nanosleep),
                            SCMP_SYS(nanosleep),
                            SCMP_SYS(gettimeofday),
                            SCMP_SYS(poll),
                            SCMP_SYS(ppoll),
                            SCMP_SYS(restart_syscall),
                            SCMP_SYS(set_robust_list),
                            SCMP_SYS(rseq),
                            SCMP_SYS(getrandom),
                            SCMP_SYS(uname),
                            SCMP_SYS(sysinfo),
                            SCMP_SYS(prlimit64),
                            SCMP_SYS(sched_getaffinity)};

/// What libraries try in good faith and can do without.
constexpr int kRefused[] = {SCMP_SYS(unlink), SCMP_SYS(unlinkat),  SCMP_SYS(fchown),
                            SCMP_SYS(fchmod), SCMP_SYS(utimensat), SCMP_SYS(mkdir)};

constexpr unsigned kWrites = O_WRONLY | O_RDWR | O_CREAT | O_TRUNC;

/// Opening is allowed when no flag of writing is set, and refused otherwise.
bool AllowReadingFiles(scmp_filter_ctx filter) {
  const int refuse = SCMP_ACT_ERRNO(EPERM);
  bool ok = seccomp_rule_add(filter, SCMP_ACT_ALLOW, SCMP_SYS(openat), 1,
                             SCMP_A2(SCMP_CMP_MASKED_EQ, kWrites, 0)) == 0;
  ok = ok && seccomp_rule_add(filter, SCMP_ACT_ALLOW, SCMP_SYS(open), 1,
                              SCMP_A1(SCMP_CMP_MASKED_EQ, kWrites, 0)) == 0;
  for (const unsigned flag : {O_WRONLY, O_RDWR, O_CREAT, O_TRUNC}) {
    ok = ok && seccomp_rule_add(filter, static_cast<std::uint32_t>(refuse), SCMP_SYS(openat), 1,
                                SCMP_A2(SCMP_CMP_MASKED_EQ, flag, flag)) == 0;
  }
  return ok;
}

/// Terminals are asked for their size and kind, nothing else.
bool AllowAskingTerminals(scmp_filter_ctx filter) {
  bool ok = true;
  for (const unsigned long request : {0x5401UL /* TCGETS */, 0x5413UL /* TIOCGWINSZ */}) {
    ok = ok && seccomp_rule_add(filter, SCMP_ACT_ALLOW, SCMP_SYS(ioctl), 1,
                                SCMP_A1(SCMP_CMP_EQ, request)) == 0;
  }
  return ok;
}

}  // namespace

bool CanConfine() { return true; }

bool ConfineToReading() {
  const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_KILL_PROCESS);
  if (filter == nullptr) return false;
  bool ok = seccomp_attr_set(filter, SCMP_FLTATR_CTL_TSYNC, 1) == 0;
  for (const int call : kAllowed) {
    ok = ok && seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, 0) == 0;
  }
  for (const int call : kRefused) {
    ok = ok && seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), call, 0) == 0;
  }
  ok = ok && AllowReadingFiles(filter) && AllowAskingTerminals(filter) && seccomp_load(filter) == 0;
  seccomp_release(filter);
  return ok;
}

}  // namespace tool

#else

namespace tool {

bool CanConfine() { return false; }
bool ConfineToReading() { return false; }

}  // namespace tool

#endif
