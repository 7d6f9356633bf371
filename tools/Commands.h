#pragma once

#include <string>
#include <vector>

namespace tool {

/// A command that looks into files: "mp4judge tree FILE".
struct Command {
  const char* name;
  /// Takes the arguments behind the name; returns the exit status.
  int (*run)(const std::vector<std::string>& arguments);
};

/// All of them. A first argument that is none of these names is a file to judge.
const std::vector<Command>& Commands();

}  // namespace tool
