// A program of its own: it replaces the allocator by one that fails at the k-th call, for every k
// that a whole opening needs. Init must then be false or right, must not throw and must not leak.
#include <cstdio>
#include <cstdlib>
#include <new>

#include "demux/Mp4Demux.h"
#include "demux/Verdict.h"
#include "mp4judge/mp4judge.h"
#include "tests/Fixtures.h"
#include "tests/GoldenBoxes.h"

namespace {

long countdown = -1;  ///< allocations until one fails; negative: none fails
long live = 0;        ///< blocks allocated and not freed

void* Allocate(std::size_t n) noexcept {
  if (countdown == 0) return nullptr;
  if (countdown > 0) --countdown;
  void* block = std::malloc(n == 0 ? 1 : n);
  if (block != nullptr) ++live;
  return block;
}

void Release(void* block) noexcept {
  if (block == nullptr) return;
  --live;
  std::free(block);
}

void* AllocateOrThrow(std::size_t n) {
  void* block = Allocate(n);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

void* operator new(std::size_t n) { return AllocateOrThrow(n); }
void* operator new[](std::size_t n) { return AllocateOrThrow(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return Allocate(n); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return Allocate(n); }
void operator delete(void* block) noexcept { Release(block); }
void operator delete[](void* block) noexcept { Release(block); }
void operator delete(void* block, std::size_t) noexcept { Release(block); }
void operator delete[](void* block, std::size_t) noexcept { Release(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { Release(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { Release(block); }

namespace {

struct Outcome {
  bool opened = false;
  bool isProtected = false;
  int samples = 0;
  mp4judge_host_answer answer = MP4JUDGE_HOST_UNREADABLE;
};

/// One opening with everything a host may do behind it, and one judgement.
Outcome Use(const std::wstring& path, const std::string& name) {
  Outcome outcome;
  Mp4Demux demux;
  outcome.opened = demux.Init(path.c_str());
  if (outcome.opened) outcome.isProtected = mp4::HasProtectedTrack(demux.GetContext());
  if (demux.ReadyToDemux()) {
    BoxBase::SAMPLE sample{};
    for (int i = 0; i < 20; ++i) outcome.samples += demux.movieBox->GetNextSampleInfo(&sample);
    demux.movieBox->Seek(1000, 1, 0);
  }
  outcome.answer = mp4judge_host_judge(name.c_str());
  return outcome;
}

/// Refused memory may keep a file from being read, but never gives another answer.
bool IsRight(const Outcome& outcome, bool isProtected) {
  const auto answer = isProtected ? MP4JUDGE_HOST_PROTECTED : MP4JUDGE_HOST_CLEAR;
  return (!outcome.opened || outcome.isProtected == isProtected) &&
         (outcome.answer == MP4JUDGE_HOST_UNREADABLE || outcome.answer == answer);
}

/// Failing at every call in turn until a run needs no more; the number of failures found.
int Check(const char* name, const Bytes& bytes, bool isProtected) {
  const TempFile file(bytes);
  const std::wstring path = file.wide();
  int wrong = 0;
  for (long k = 0;; ++k) {
    const long before = live;
    countdown = k;
    Outcome outcome;
    bool threw = false;
    try {
      outcome = Use(path, file.path());
    } catch (...) {
      threw = true;
    }
    const bool exhausted = countdown == 0;
    countdown = -1;
    const bool right = IsRight(outcome, isProtected);
    if (threw || !right || live != before) {
      std::printf("%s: allocation %ld: %s%s%s\n", name, k, threw ? "threw " : "",
                  right ? "" : "wrong answer ", live != before ? "leaked" : "");
      ++wrong;
    }
    if (!exhausted) {
      std::printf("%s: %ld allocations\n", name, k);
      return wrong + (outcome.opened ? 0 : 1);
    }
  }
}

}  // namespace

int main() {
  using namespace fixture;
  int wrong = 0;
  wrong += Check("clear", Ftyp("isom") + golden::Movie(), false);
  wrong += Check("protected", Ftyp("isom") + Moov({golden::Song("drms")}), true);
  wrong +=
      Check("fragments", Ftyp("isom") + golden::Movie() + golden::Moof() + golden::Moof(), false);
  wrong += Check("compressed", Box("moov", Cmov(Moov({golden::Song("drms")}))), true);
  std::printf("%s\n", wrong == 0 ? "every allocation may fail" : "FAILED");
  return wrong == 0 ? 0 : 1;
}
