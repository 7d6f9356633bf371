// Confines itself like the tool and then tries what a captured parser would: sandbox_probe WHAT.
// Exits 0 when that was allowed, 1 when it was refused, 77 when nothing can be confined here.
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "tools/Sandbox.h"

int main(int argc, char** argv) {
  const char* what = argc > 1 ? argv[1] : "";
  if (!tool::CanConfine() || !tool::ConfineToReading()) return 77;
  const auto is = [what](const char* name) { return std::strcmp(what, name) == 0; };
  if (is("socket")) return socket(AF_INET, SOCK_STREAM, 0) >= 0 ? 0 : 1;
  if (is("fork")) return fork() >= 0 ? 0 : 1;
  if (is("exec")) return execl("/bin/true", "true", nullptr) == 0 ? 0 : 1;
  if (is("create")) return open("captured", O_WRONLY | O_CREAT | O_CLOEXEC, 0600) >= 0 ? 0 : 1;
  if (is("change")) return open(argv[0], O_RDWR | O_CLOEXEC) >= 0 ? 0 : 1;
  if (is("remove")) return unlink(argv[0]) == 0 ? 0 : 1;
  if (is("read")) return open(argv[0], O_RDONLY | O_CLOEXEC) >= 0 ? 0 : 1;
  return 2;
}
