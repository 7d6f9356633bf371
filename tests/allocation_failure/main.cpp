// A program of its own: it replaces the allocator by one that fails at the k-th call, for every k
// that a whole opening or inspection needs. Init must then be false or right, a report undetermined
// or right; nothing may throw or leak.
#include <cstdio>
#include <cstdlib>
#include <new>

#include "demux/Mp4Demux.h"
#include "demux/Verdict.h"
#include "mp4judge/samples.h"
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

/// Failing at every call in turn until a run needs no more; the number of failures found. `run`
/// says whether what it got was right, and is right when nothing fails.
template <class Run>
int FailEverywhere(const char* name, const Run& run) {
  int wrong = 0;
  for (long k = 0;; ++k) {
    const long before = live;
    countdown = k;
    bool right = false;
    bool threw = false;
    try {
      right = run();
    } catch (...) {
      threw = true;
    }
    const bool exhausted = countdown == 0;
    countdown = -1;
    if (threw || !right || live != before) {
      std::printf("%s: allocation %ld: %s%s%s\n", name, k, threw ? "threw " : "",
                  right ? "" : "wrong answer ", live != before ? "leaked" : "");
      ++wrong;
    }
    if (!exhausted) {
      std::printf("%s: %ld allocations\n", name, k);
      return wrong;
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

int Check(const char* name, const Bytes& bytes, bool isProtected) {
  const TempFile file(bytes);
  const std::wstring path = file.wide();
  bool opened = false;
  const int wrong = FailEverywhere(name, [&] {
    const Outcome outcome = Use(path, file.path());
    opened = outcome.opened;
    return IsRight(outcome, isProtected);
  });
  return wrong + (opened ? 0 : 1);
}

/// Every question of the sample index, summed up; 0 when it says that it could not be answered.
std::uint64_t SumOfSamples(const char* path) {
  mp4judge_movie* movie = mp4judge_movie_open_path(path, nullptr);
  std::uint64_t sum = 1;
  mp4judge_sample sample{};
  for (std::size_t track = 0; track < mp4judge_movie_track_count(movie); ++track) {
    mp4judge_cursor* cursor = mp4judge_cursor_new(movie, track);
    while (mp4judge_cursor_next(cursor, &sample, nullptr) != 0) {
      sum = sum * 31 + sample.offset + sample.size;
      sum += mp4judge_movie_at_decode_time(movie, track, sample.decode_time) +
             mp4judge_movie_at_composition_time(movie, track, sample.composition_time) +
             mp4judge_movie_sync_before(movie, track, sample.number);
      mp4judge_movie_sample(movie, track, sample.number, &sample);
    }
    mp4judge_cursor_free(cursor);
    mp4judge_fragment fragment{};
    mp4judge_movie_fragment_at(movie, track, 0, &fragment);
    sum += fragment.offset;
    const mp4judge_movie_track* shown = mp4judge_movie_track_at(movie, track);
    sum += (shown != nullptr ? shown->id : 0) + mp4judge_movie_problem_count(movie, track);
  }
  for (const mp4judge_order order : {MP4JUDGE_FILE_ORDER, MP4JUDGE_DECODE_ORDER}) {
    mp4judge_cursor* cursor = mp4judge_cursor_of_all(movie, order);
    while (mp4judge_cursor_next(cursor, &sample, nullptr) != 0) sum = sum * 31 + sample.number;
    mp4judge_cursor_free(cursor);
  }
  const bool all = mp4judge_movie_error(movie) == MP4JUDGE_OK;
  mp4judge_movie_free(movie);
  return all ? sum : 0;
}

/// Either the answers, or word that there are none.
int CheckSamples(const char* name, const Bytes& bytes) {
  const TempFile file(bytes);
  const std::uint64_t expected = SumOfSamples(file.path().c_str());
  const int wrong = FailEverywhere(name, [&] {
    const std::uint64_t sum = SumOfSamples(file.path().c_str());
    return sum == expected || sum == 0;
  });
  return wrong + (expected > 1 ? 0 : 1);
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
  wrong += CheckSamples("samples", Ftyp("isom") + golden::Movie());
  wrong += CheckSamples("samples of fragments",
                        Ftyp("isom") + golden::Movie() + golden::Moof() + golden::Moof());
  wrong += CheckSamples("samples of a compressed movie", Box("moov", Cmov(Moov({Track{}}))));
  std::printf("%s\n", wrong == 0 ? "every allocation may fail" : "FAILED");
  return wrong == 0 ? 0 : 1;
}
