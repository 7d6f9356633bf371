#include "door/Judging.h"

#include <cerrno>
#include <system_error>

#include "door/HostDifference.h"
#include "door/HostJudgement.h"
#include "inspect/Inspect.h"
#include "io/CachedSource.h"
#include "io/PrefixSource.h"

namespace mp4 {

namespace {

void NoteTrouble(const SourceTrouble& trouble, Judged* judged) {
  switch (trouble.fault) {
    case SourceFault::kNone:
      break;
    case SourceFault::kReadFailed:
      judged->error = MP4JUDGE_ERROR_READ;
      judged->systemError = trouble.error;
      break;
    case SourceFault::kBytesNeeded:
      judged->error = MP4JUDGE_ERROR_NEEDS_BYTES;
      judged->report.needed = NeededRange{trouble.offset, trouble.size};
      break;
    case SourceFault::kNoMemory:
      judged->error = MP4JUDGE_ERROR_MEMORY;
      judged->systemError = ENOMEM;
      break;
  }
}

/// The host looks at every fragment, the inspector at the first ones. Only a movie box behind the
/// others could make the host say "protected" where nothing before them does; whoever asks for
/// everything has that looked at, too.
mp4judge_host_answer AskHost(CachedSource* source, const Report& report) {
  if (report.stoppedAt) {
    PrefixSource before(source, *report.stoppedAt);
    const mp4judge_host_answer answer = HostAnswer(&before);
    if (answer != MP4JUDGE_HOST_PROTECTED) return answer;
  }
  return HostAnswer(source);
}

void CompareWithHost(CachedSource* source, Judged* judged) {
  judged->host = AskHost(source, judged->report);
  judged->hostDifference = WhyHostDiffers(source, judged->report, *judged->host);
  if (!source->Failed()) return;
  NoteTrouble(source->Trouble(), judged);
  judged->host.reset();
  judged->hostDifference.clear();
}

}  // namespace

Judged JudgeSource(ByteSource* source, const mp4judge_options& options) {
  Judged judged;
  CachedSource cache(source);
  InspectOptions depth;
  depth.everything = options.everything != 0;
  judged.report = Inspect(&cache, depth);
  if (judged.report.outOfMemory) {
    judged.error = MP4JUDGE_ERROR_MEMORY;
    judged.systemError = ENOMEM;
  } else if (cache.Failed()) {
    NoteTrouble(cache.Trouble(), &judged);
  } else if (options.host_answer != 0) {
    CompareWithHost(&cache, &judged);
  }
  if (options.name != nullptr) judged.path = options.name;
  return judged;
}

Judged JudgeUnopened(const OpenResult& opening, const mp4judge_options& options) {
  Judged judged;
  switch (opening.fault) {
    case OpenFault::kDirectory:
      judged.error = MP4JUDGE_ERROR_NOT_A_FILE;
      judged.systemError = EISDIR;
      judged.report.reason = "it is a directory";
      break;
    case OpenFault::kNotRegular:
      judged.error = MP4JUDGE_ERROR_NOT_A_FILE;
      judged.report.reason = "it is a pipe, a socket or a device, which is not waited for";
      break;
    case OpenFault::kSystem:
    case OpenFault::kNone:
      judged.error = MP4JUDGE_ERROR_OPEN;
      judged.systemError = opening.error;
      judged.report.reason =
          "it cannot be opened: " + std::generic_category().message(opening.error);
      break;
  }
  if (options.host_answer != 0) judged.host = MP4JUDGE_HOST_UNREADABLE;
  if (options.name != nullptr) judged.path = options.name;
  return judged;
}

}  // namespace mp4
