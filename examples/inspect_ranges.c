/* A file inspected without giving the library anything to call: the report says which bytes it
 * needs next, and this program brings them, as an event loop or a storage client would:
 * inspect_ranges FILE. */
#include <inttypes.h>
#include <mp4judge/mp4judge.h>
#include <stdio.h>
#include <stdlib.h>

/* Where another program would wait for an answer to a range request. */
static int bring(FILE* file, mp4judge_ranges* ranges, uint64_t offset, uint64_t n) {
  int brought = 0;
  char* bytes = malloc((size_t)n);
  if (bytes != NULL && fseek(file, (long)offset, SEEK_SET) == 0 &&
      fread(bytes, 1, (size_t)n, file) == (size_t)n) {
    brought = mp4judge_ranges_add(ranges, offset, bytes, (size_t)n) == MP4JUDGE_OK;
  }
  free(bytes);
  return brought;
}

int main(int argc, char** argv) {
  FILE* file;
  mp4judge_ranges* ranges;
  mp4judge_report* report;
  uint64_t offset, n;
  if (argc != 2 || (file = fopen(argv[1], "rb")) == NULL) return 2;

  fseek(file, 0, SEEK_END);
  ranges = mp4judge_ranges_new((uint64_t)ftell(file));
  report = mp4judge_ranges_inspect(ranges, NULL);
  while (mp4judge_report_needs(report, &offset, &n)) {
    printf("needs bytes %" PRIu64 " to %" PRIu64 "\n", offset, offset + n - 1);
    if (!bring(file, ranges, offset, n)) break;
    mp4judge_report_free(report);
    report = mp4judge_ranges_inspect(ranges, NULL);
  }
  puts(mp4judge_verdict_name(mp4judge_report_verdict(report)));
  mp4judge_report_free(report);
  mp4judge_ranges_free(ranges);
  fclose(file);
  return 0;
}
