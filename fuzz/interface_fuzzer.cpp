// The C interface on a whole file: the same report, byte for byte, through a path, memory,
// callbacks and ranges; the host's answer as the host gives it; and a host that says "protected"
// where the verdict does not is explained.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz/BoxMutator.h"
#include "fuzz/MemoryFile.h"
#include "mp4judge/mp4judge.h"

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  return fuzz::MutateBoxes(data, size, most, seed);
}

namespace {

struct Input {
  const std::uint8_t* data;
  std::size_t size;
};

std::int64_t ReadAt(void* user, std::uint64_t offset, void* bytes, std::size_t n) {
  const auto* input = static_cast<const Input*>(user);
  if (n == 0 || offset >= input->size || n > input->size - offset) std::abort();
  std::memcpy(bytes, input->data + offset, n);
  return static_cast<std::int64_t>(n);
}

std::int64_t SizeOf(void* user) {
  return static_cast<std::int64_t>(static_cast<const Input*>(user)->size);
}

mp4judge_report* ThroughRanges(const Input& input, const mp4judge_options& options) {
  mp4judge_ranges* ranges = mp4judge_ranges_new(input.size);
  mp4judge_report* report = mp4judge_ranges_inspect(ranges, &options);
  std::uint64_t offset = 0;
  std::uint64_t n = 0;
  while (mp4judge_report_needs(report, &offset, &n) != 0) {
    // What is brought is never asked for again, so that this ends.
    if (n == 0 || offset >= input.size || n > input.size - offset) std::abort();
    mp4judge_ranges_add(ranges, offset, input.data + offset, n);
    mp4judge_report_free(report);
    report = mp4judge_ranges_inspect(ranges, &options);
  }
  mp4judge_ranges_free(ranges);
  return report;
}

std::string Taken(mp4judge_report* report) {
  std::string json = mp4judge_report_json(report);
  mp4judge_report_free(report);
  return json;
}

void CheckHost(const mp4judge_report* report, mp4judge_host_answer host) {
  const mp4judge_verdict verdict = mp4judge_report_verdict(report);
  const char* difference = mp4judge_report_host_difference(report);
  const int answer = mp4judge_report_host_answer(report);
  if (mp4judge_report_everything(report) != 0) {
    if (answer != (host == MP4JUDGE_HOST_PROTECTED ? 1 : 0)) std::abort();
    if (mp4judge_report_host_reads(report) != (host != MP4JUDGE_HOST_UNREADABLE ? 1 : 0)) {
      std::abort();
    }
  }
  if (answer == 1 && verdict != MP4JUDGE_PROTECTED) {
    if (verdict == MP4JUDGE_CLEAR) std::abort();
    if (difference == nullptr || std::strstr(difference, "not explained") != nullptr) std::abort();
  }
}

void Check(const Input& input, const fuzz::MemoryFile& file, bool everything) {
  mp4judge_options options = MP4JUDGE_OPTIONS_DEFAULT;
  options.everything = everything ? 1 : 0;
  options.name = "input";
  mp4judge_report* report = mp4judge_inspect_memory(input.data, input.size, &options);
  CheckHost(report, mp4judge_host_judge(file.name()));
  const std::string json = Taken(report);
  Input copy = input;
  if (Taken(mp4judge_inspect_path(file.name(), &options)) != json) std::abort();
  if (Taken(mp4judge_inspect_callbacks(ReadAt, SizeOf, &copy, &options)) != json) std::abort();
  if (Taken(ThroughRanges(input, options)) != json) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  const Input input{data, size};
  Check(input, file, false);
  Check(input, file, true);
  return 0;
}
