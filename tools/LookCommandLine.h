#pragma once

#include <string>
#include <vector>

namespace tool {

/// The commands that look into files, with the arguments behind their names. Each returns the exit
/// status; help and wrong usage are said here.
int TreeCommandLine(const std::vector<std::string>& arguments);
int InfoCommandLine(const std::vector<std::string>& arguments);
int ChartCommandLine(const std::vector<std::string>& arguments);
int DiffCommandLine(const std::vector<std::string>& arguments);

}  // namespace tool
