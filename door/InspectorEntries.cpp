#include <cerrno>
#include <new>

#include "door/Judging.h"
#include "door/Options.h"
#include "door/RangesHandle.h"
#include "door/ReportHandle.h"
#include "io/CallbackSource.h"
#include "io/MemorySource.h"
#include "mp4judge/mp4judge.h"

namespace {

/// What is handed out when there is not even the memory to say so. Its texts are short enough to
/// need none.
mp4judge_report* OutOfMemory() {
  static mp4judge_report report([] {
    mp4::Judged judged;
    judged.error = MP4JUDGE_ERROR_MEMORY;
    judged.systemError = ENOMEM;
    judged.report.reason = "out of memory";
    return judged;
  }());
  return &report;
}

/// The report of `judge`, which returns a mp4::Judged.
template <class Judge>
mp4judge_report* ReportOf(Judge&& judge) {
  try {
    return new mp4judge_report(judge());
  } catch (...) {
    return OutOfMemory();
  }
}

mp4::Judged JudgePath(const char* path, mp4judge_options options) {
  if (options.name == nullptr) options.name = path;
  mp4::OpenResult opening;
  const auto file = mp4::FileSource::Open(path, &opening);
  mp4::Judged judged = file != nullptr ? mp4::JudgeSource(file.get(), options)
                                       : mp4::JudgeUnopened(opening, options);
  if (path == nullptr) judged.error = MP4JUDGE_ERROR_ARGUMENT;
  return judged;
}

}  // namespace

mp4judge_report* mp4judge_inspect_path(const char* path, const mp4judge_options* options) {
  return ReportOf([&] { return JudgePath(path, mp4::WholeOptions(options)); });
}

mp4judge_report* mp4judge_inspect_memory(const void* bytes, size_t n,
                                         const mp4judge_options* options) {
  return ReportOf([&] {
    mp4::MemorySource source(bytes, n);
    return mp4::JudgeSource(&source, mp4::WholeOptions(options));
  });
}

mp4judge_report* mp4judge_inspect_callbacks(mp4judge_read_at read_at, mp4judge_size size,
                                            void* user, const mp4judge_options* options) {
  return ReportOf([&] {
    mp4::CallbackSource source(read_at, size, user);
    mp4::Judged judged = mp4::JudgeSource(&source, mp4::WholeOptions(options));
    if (read_at == nullptr || size == nullptr) judged.error = MP4JUDGE_ERROR_ARGUMENT;
    return judged;
  });
}

mp4judge_ranges* mp4judge_ranges_new(uint64_t size) {
  return new (std::nothrow) mp4judge_ranges(size);
}

mp4judge_error mp4judge_ranges_add(mp4judge_ranges* ranges, uint64_t offset, const void* bytes,
                                   size_t n) {
  if (ranges == nullptr || (bytes == nullptr && n > 0)) return MP4JUDGE_ERROR_ARGUMENT;
  try {
    ranges->source.Add(offset, bytes, n);
    return MP4JUDGE_OK;
  } catch (...) {
    return MP4JUDGE_ERROR_MEMORY;
  }
}

mp4judge_report* mp4judge_ranges_inspect(mp4judge_ranges* ranges, const mp4judge_options* options) {
  if (ranges == nullptr) return mp4judge_inspect_callbacks(nullptr, nullptr, nullptr, options);
  return ReportOf([&] {
    ranges->source.StartOver();
    return mp4::JudgeSource(&ranges->source, mp4::WholeOptions(options));
  });
}

void mp4judge_ranges_free(mp4judge_ranges* ranges) { delete ranges; }

void mp4judge_report_free(mp4judge_report* report) {
  if (report != OutOfMemory()) delete report;
}
