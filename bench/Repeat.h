#pragma once

#include <functional>
#include <string>

/// Measuring one operation by doing it over and over.
namespace bench {

/// Median milliseconds of at most `repeats` calls. Ends early after `seconds`, but not before three
/// calls, or one that alone takes that long. Not a number when a call returns false.
double MedianMs(int repeats, double seconds, const std::function<bool()>& call);

/// The main function of a program `PROGRAM FILE REPEATS [SECONDS]`: opens the file afresh that
/// often and prints the median in milliseconds. Exit code 1 when it does not open, 2 on wrong
/// usage.
int RepeatMain(int argc, char** argv, const std::function<bool(const std::string&)>& open);

}  // namespace bench
