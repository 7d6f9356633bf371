/* The host's judgement of one file, with its three answers; any name that the system knows. */
#include <mp4judge/mp4judge.h>
#include <stdio.h>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  switch (mp4judge_host_judge(argv[1])) {
    case MP4JUDGE_HOST_CLEAR:
      puts("clear");
      return 0;
    case MP4JUDGE_HOST_PROTECTED:
      puts("protected");
      return 1;
    default:
      puts("unreadable");
      return 2;
  }
}
