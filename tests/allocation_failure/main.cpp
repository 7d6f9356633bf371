// A program of its own: it replaces the allocator by one that fails at the k-th call, for every k
// that a whole opening or inspection needs. Init must then be false or right, a report undetermined
// or right; nothing may throw or leak.
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

/// What one inspection in each way says, the way in which the least is said.
struct Inspected {
  bool contradicts = false;  ///< a verdict, or an answer of the host, that is not right
  int whole = 0;             ///< reports without an error
};

void Take(mp4judge_report* report, mp4judge_verdict verdict, int hostAnswer, Inspected* said) {
  const mp4judge_verdict got = mp4judge_report_verdict(report);
  const int host = mp4judge_report_host_answer(report);
  said->contradicts |= report == nullptr || (got != verdict && got != MP4JUDGE_UNDETERMINED);
  said->contradicts |= host > hostAnswer;
  // Whatever memory there is left, a report can be asked.
  mp4judge_report_json(report);
  if (got == MP4JUDGE_UNDETERMINED && mp4judge_report_reason(report) == nullptr) {
    said->contradicts = true;
  }
  said->whole += mp4judge_report_error(report) == MP4JUDGE_OK && got == verdict ? 1 : 0;
  mp4judge_report_free(report);
}

Inspected InspectInEveryWay(const Bytes& bytes, const char* path, mp4judge_verdict verdict,
                            int hostAnswer) {
  Inspected said;
  Take(mp4judge_inspect_path(path, nullptr), verdict, hostAnswer, &said);
  Take(mp4judge_inspect_memory(bytes.data(), bytes.size(), nullptr), verdict, hostAnswer, &said);
  mp4judge_ranges* ranges = mp4judge_ranges_new(bytes.size());
  mp4judge_ranges_add(ranges, 0, bytes.data(), bytes.size());
  Take(mp4judge_ranges_inspect(ranges, nullptr), verdict, hostAnswer, &said);
  mp4judge_ranges_free(ranges);
  return said;
}

/// The same for the inspector.
int CheckInspector(const char* name, const Bytes& bytes, mp4judge_verdict verdict, int hostAnswer) {
  const TempFile file(bytes);
  InspectInEveryWay(bytes, file.path().c_str(), verdict, hostAnswer);  // what is made once
  int wrong = 0;
  for (long k = 0;; ++k) {
    const long before = live;
    countdown = k;
    const Inspected said = InspectInEveryWay(bytes, file.path().c_str(), verdict, hostAnswer);
    const bool exhausted = countdown == 0;
    countdown = -1;
    if (said.contradicts || live != before) {
      std::printf("inspect %s: allocation %ld: %s%s\n", name, k,
                  said.contradicts ? "wrong answer " : "", live != before ? "leaked" : "");
      ++wrong;
    }
    if (!exhausted) {
      std::printf("inspect %s: %ld allocations\n", name, k);
      return wrong + (said.whole == 3 ? 0 : 1);
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
  wrong += CheckInspector("clear", Ftyp("isom") + golden::Movie(), MP4JUDGE_CLEAR, 0);
  wrong += CheckInspector("protected", Ftyp("isom") + Moov({golden::Song("drms")}),
                          MP4JUDGE_PROTECTED, 1);
  wrong += CheckInspector("compressed", Box("moov", Cmov(Moov({golden::Song("drms")}))),
                          MP4JUDGE_PROTECTED, 1);
  // An edit list in 64-bit form, over which the host's reader fails: boxes are tried.
  const Bytes edits = Box("edts", FullBox("elst", 1, 0, Bytes().Be32(1).Fill(20)));
  const Bytes track = Box("trak", Tkhd(1) + edits + Mdia(golden::Song("enca")));
  wrong += CheckInspector("explained", Ftyp("isom") + Box("moov", Mvhd() + track),
                          MP4JUDGE_PROTECTED, 0);
  std::printf("%s\n", wrong == 0 ? "every allocation may fail" : "FAILED");
  return wrong == 0 ? 0 : 1;
}
