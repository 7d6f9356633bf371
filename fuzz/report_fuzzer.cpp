// The inspection of a whole file: what it says holds together, evidence points at the boxes it
// names, and neither tight limits, nor a source that fails or delivers little at a time, nor
// leaving far fragments out makes anything clear that is not. Its JSON is JSON.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz/BoxMutator.h"
#include "fuzz/FuzzBytes.h"
#include "fuzz/JsonCheck.h"
#include "inspect/Inspect.h"
#include "io/ByteOrder.h"
#include "io/CallbackSource.h"
#include "io/MemorySource.h"
#include "iso/TypeText.h"
#include "mp4judge/mp4judge.h"

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  return fuzz::MutateBoxes(data, size, most, seed);
}

namespace {

using fuzz::Demand;
using mp4::Report;
constexpr auto kClear = mp4::ProtectionVerdict::kClear;
constexpr auto kProtected = mp4::ProtectionVerdict::kProtected;

struct Input {
  const std::uint8_t* data;
  std::size_t size;
  std::uint64_t failFrom;
};

std::int64_t SizeOf(void* user) {
  return static_cast<std::int64_t>(static_cast<const Input*>(user)->size);
}
/// Often fewer bytes than are asked for, and none from some byte on.
std::int64_t ReadAt(void* user, std::uint64_t offset, void* bytes, std::size_t n) {
  const auto* input = static_cast<const Input*>(user);
  Demand(n > 0 && offset < input->size && n <= input->size - offset);
  if (offset >= input->failFrom) return -5;
  const std::size_t some = offset % 2 == 0 ? (n + 1) / 2 : n;
  std::memcpy(bytes, input->data + offset, some);
  return static_cast<std::int64_t>(some);
}

bool AnyProtected(const Report& report) {
  const auto isProtected = [](const auto& one) { return one.isProtected; };
  return std::any_of(report.items.begin(), report.items.end(), isProtected) ||
         std::any_of(report.tracks.begin(), report.tracks.end(), [&](const auto& track) {
           const auto& entries = track.entries;
           const bool any = std::any_of(entries.begin(), entries.end(), isProtected);
           // A track may be protected whose entries are not, but not the other way.
           Demand(track.isProtected || !any);
           return track.isProtected;
         });
}

/// The verdict against everything else in the report.
void DemandSound(const Report& report) {
  if (report.outOfMemory) return;
  Demand(!AnyProtected(report) || report.verdict == kProtected);
  Demand((report.verdict == kProtected) != report.evidence.empty());
  Demand((report.verdict == mp4::ProtectionVerdict::kUndetermined) != report.reason.empty());
  if (report.verdict != kClear) return;
  Demand(report.schemes.empty() && !report.needed.has_value());
  for (const mp4::ReportProblem& problem : report.problems) Demand(!problem.mayHide);
}

/// Evidence and problems that have an offset have it inside; evidence names the box that is there.
void DemandPlaces(const Report& report, const Input& input) {
  for (const mp4::ReportProblem& problem : report.problems)
    Demand(problem.offset.value_or(0) <= input.size);
  for (const mp4::Evidence& evidence : report.evidence) {
    if (!evidence.offset.has_value()) continue;
    Demand(*evidence.offset + 8 <= input.size);
    std::string last = evidence.boxPath.substr(evidence.boxPath.rfind('/') + 1);
    if (last.find('[') != std::string::npos) last.resize(last.find('['));
    const std::uint32_t type = mp4::LoadLe32(input.data + *evidence.offset + 4);
    Demand(mp4::TypeText(type) == last);
  }
}

std::string Text(const Report& report) {
  std::string text = std::to_string(static_cast<int>(report.verdict)) + report.reason;
  for (const mp4::Evidence& evidence : report.evidence)
    text += evidence.boxPath + std::to_string(evidence.offset.value_or(0)) + evidence.text;
  for (const mp4::ReportProblem& problem : report.problems)
    text += problem.boxPath + std::to_string(problem.offset.value_or(0)) + problem.text;
  for (const mp4::ReportTrack& track : report.tracks)
    text += std::to_string(track.id) + track.handler + std::to_string(track.entries.size());
  return text;
}

/// What reading in steps and failing reads make of it.
void CheckSources(const Report& expected, Input input, bool everything) {
  mp4::CallbackSource source(ReadAt, SizeOf, &input);
  Demand(Text(mp4::Inspect(&source, {everything})) == Text(expected));
  std::uint64_t sum = 1;
  for (std::size_t i = 0; i < input.size; ++i) sum = sum * 31 + input.data[i];
  input.failFrom = sum % (input.size + 1);
  mp4::CallbackSource failing(ReadAt, SizeOf, &input);
  const Report report = mp4::Inspect(&failing, {everything});
  DemandSound(report);
  // The first read delivers all up to the failure, so there is nothing but one that says it.
  Demand(report.verdict != kClear || expected.verdict == kClear);
}

void CheckLimits(const Report& expected, const Input& input, bool everything) {
  for (const mp4::TreeLimits& limits :
       {mp4::TreeLimits{1, 0, 1}, mp4::TreeLimits{20, 600, 4}, mp4::TreeLimits{60, 2000, 9}}) {
    mp4::MemorySource source(input.data, input.size);
    const Report report = mp4::Inspect(&source, {everything, limits});
    DemandSound(report);
    DemandPlaces(report, input);
    Demand(report.verdict != kClear || expected.verdict == kClear);
  }
}

void CheckJson(const Report& expected, const Input& input, bool everything) {
  mp4judge_options options = MP4JUDGE_OPTIONS_DEFAULT;
  options.everything = everything ? 1 : 0;
  // Any bytes are a name.
  const std::string name(reinterpret_cast<const char*>(input.data),
                         std::min<std::size_t>(input.size, 300));
  options.name = name.c_str();
  mp4judge_report* report = mp4judge_inspect_memory(input.data, input.size, &options);
  const char* json = mp4judge_report_json(report);
  Demand(json != nullptr && fuzz::IsJson(json));
  const std::string verdict = mp4judge_verdict_name(mp4judge_report_verdict(report));
  Demand(std::strstr(json, ("\"verdict\":\"" + verdict + "\"").c_str()) != nullptr);
  Demand((verdict == "protected") == (expected.verdict == kProtected));
  Demand((verdict == "clear") == (expected.verdict == kClear));
  mp4judge_report_free(report);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Input input{data, size, UINT64_MAX};
  Report reports[2];
  for (const bool everything : {false, true}) {
    mp4::MemorySource source(data, size);
    Report& report = reports[everything ? 1 : 0] = mp4::Inspect(&source, {everything});
    DemandSound(report);
    DemandPlaces(report, input);
    CheckSources(report, input, everything);
    CheckLimits(report, input, everything);
    CheckJson(report, input, everything);
  }
  // Only what was left out for being far makes a difference, and then it is said.
  if (!reports[0].stoppedAt.has_value()) Demand(Text(reports[0]) == Text(reports[1]));
  return 0;
}
