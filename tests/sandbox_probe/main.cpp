// Confines itself like the tool and then tries what a captured parser would: sandbox_probe WHAT.
// Exits 0 when that was allowed, 1 when it was refused, 77 when nothing can be confined here.
#include "tests/sandbox_probe/attempt.h"
#include "tools/Sandbox.h"

int main(int argc, char** argv) {
  if (!tool::CanConfine() || !tool::ConfineToReading()) return 77;
  return Attempt(argc > 1 ? argv[1] : "", argv[0]) ? 0 : 1;
}
