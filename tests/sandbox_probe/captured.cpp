// Loaded before the tool's libraries, this is a parser that is captured by the first byte that it
// looks at: it tries what CAPTURED says and exits with 100 when that was allowed, 101 when refused.
#include <cstdlib>

#include "tests/sandbox_probe/attempt.h"

extern "C" ssize_t pread(int /*file*/, void* /*bytes*/, size_t /*n*/, off_t /*offset*/) {
  const char* what = std::getenv("CAPTURED");
  // A child that was allowed ends like its parent, which is not waited for.
  _exit(Attempt(what != nullptr ? what : "", "victim") ? 100 : 101);
}
