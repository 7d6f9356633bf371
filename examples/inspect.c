/* What the inspector says of a file, with its evidence: inspect FILE. Exit status 0 clear,
 * 1 protected, 2 undetermined. */
#include <inttypes.h>
#include <mp4judge/mp4judge.h>
#include <stdio.h>
#include <string.h>

static void print_evidence(const mp4judge_report* report) {
  const mp4judge_evidence* evidence;
  size_t i;
  for (i = 0; (evidence = mp4judge_report_evidence(report, i)) != NULL; ++i) {
    printf("  %s", evidence->box_path);
    if (evidence->offset != MP4JUDGE_NO_OFFSET) printf(" at byte %" PRIu64, evidence->offset);
    printf(": %s\n", evidence->text);
  }
}

int main(int argc, char** argv) {
  mp4judge_report* report;
  mp4judge_verdict verdict;
  size_t i;
  if (argc != 2) return 2;

  report = mp4judge_inspect_path(argv[1], NULL);
  verdict = mp4judge_report_verdict(report);
  fputs(mp4judge_verdict_name(verdict), stdout);
  for (i = 0; i < mp4judge_report_scheme_count(report); ++i) {
    printf(" %s", mp4judge_report_scheme(report, i));
  }
  if (mp4judge_report_reason(report) != NULL) printf(" (%s)", mp4judge_report_reason(report));
  putchar('\n');
  print_evidence(report);
  if (mp4judge_report_host_difference(report) != NULL) {
    printf("  %s\n", mp4judge_report_host_difference(report));
  }
  if (mp4judge_report_error(report) == MP4JUDGE_ERROR_OPEN) {
    fprintf(stderr, "%s: %s\n", argv[1], strerror(mp4judge_report_errno(report)));
  }
  mp4judge_report_free(report);
  return (int)verdict;
}
