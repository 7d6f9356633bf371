// libavformat: opens the file, which reads the movie box with all its tables, and counts the
// streams. avformat_find_stream_info, which would read and decode media data too, is left out.
//   peer_avformat FILE REPEATS [SECONDS]
extern "C" {
#include <libavformat/avformat.h>
}

#include "bench/Repeat.h"

namespace {

bool Open(const std::string& path) {
  AVFormatContext* context = nullptr;
  if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) != 0) return false;
  const bool any = context->nb_streams > 0;
  avformat_close_input(&context);
  return any;
}

}  // namespace

int main(int argc, char** argv) {
  av_log_set_level(AV_LOG_QUIET);
  return bench::RepeatMain(argc, argv, Open);
}
