// TagLib: opens the file and asks for the tags and the properties of the sound.
//   peer_taglib FILE REPEATS [SECONDS]
#include <mp4file.h>

#include "bench/Repeat.h"

namespace {

bool Open(const std::string& path) {
  TagLib::MP4::File file(path.c_str());
  if (!file.isValid() || file.audioProperties() == nullptr) return false;
  return file.tag() != nullptr && file.audioProperties()->channels() >= 0;
}

}  // namespace

int main(int argc, char** argv) { return bench::RepeatMain(argc, argv, Open); }
