#pragma once

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

/// Tries what a captured parser would: true when that was allowed.
inline bool Attempt(const char* what, const char* file) {
  const auto is = [what](const char* name) { return std::strcmp(what, name) == 0; };
  if (is("socket")) return socket(AF_INET, SOCK_STREAM, 0) >= 0;
  if (is("fork")) return fork() >= 0;
  if (is("exec")) return execl("/bin/true", "true", nullptr) == 0;
  if (is("create")) return open("captured", O_WRONLY | O_CREAT | O_CLOEXEC, 0600) >= 0;
  if (is("change")) return open(file, O_RDWR | O_CLOEXEC) >= 0;
  if (is("remove")) return unlink(file) == 0;
  if (is("read")) return open(file, O_RDONLY | O_CLOEXEC) >= 0;
  return false;
}
