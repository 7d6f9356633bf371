#pragma once

#include <string>
#include <vector>

namespace tool {

/// Takes the arguments behind the program's name apart and does what they ask for: "tree FILE"
/// looks into a file; what begins with no command's name is judged. Returns the exit status; help,
/// and what is wrong with the usage, are said here.
int RunCommandLine(const std::vector<std::string>& arguments);

}  // namespace tool
