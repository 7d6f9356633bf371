/* One file inspected from memory, and through two callbacks that read it bit by bit, as an archive
 * or a download would: inspect_sources FILE. */
#include <mp4judge/mp4judge.h>
#include <stdio.h>
#include <stdlib.h>

struct source {
  FILE* file;
  int reads;
};

static int64_t read_at(void* user, uint64_t offset, void* bytes, size_t n) {
  struct source* source = user;
  size_t got;
  ++source->reads;
  if (fseek(source->file, (long)offset, SEEK_SET) != 0) return -1;
  got = fread(bytes, 1, n, source->file);
  return got > 0 ? (int64_t)got : -1;
}

static int64_t size_of(void* user) {
  struct source* source = user;
  if (fseek(source->file, 0, SEEK_END) != 0) return -1;
  return ftell(source->file);
}

static void print(const char* how, mp4judge_report* report) {
  printf("%s: %s\n", how, mp4judge_verdict_name(mp4judge_report_verdict(report)));
  mp4judge_report_free(report);
}

int main(int argc, char** argv) {
  struct source source = {NULL, 0};
  long size;
  char* bytes;
  if (argc != 2 || (source.file = fopen(argv[1], "rb")) == NULL) return 2;

  print("callbacks", mp4judge_inspect_callbacks(read_at, size_of, &source, NULL));
  printf("reads: %d\n", source.reads);

  size = (long)size_of(&source);
  bytes = malloc(size > 0 ? (size_t)size : 1);
  rewind(source.file);
  if (bytes != NULL && fread(bytes, 1, (size_t)size, source.file) == (size_t)size) {
    print("memory", mp4judge_inspect_memory(bytes, (size_t)size, NULL));
  }
  free(bytes);
  fclose(source.file);
  return 0;
}
