// The command latbox-all, from its arguments to its exit status.
#pragma once

#include <string>
#include <vector>

namespace latbox::complete {

// The version of the house.
inline constexpr const char* VERSION = "2.2.2";

enum ExitStatus { FAILURE = 1, BAD_INPUT = 2, PROVEN = 10, FOUND = 11, UNKNOWN = 12, NONE = 20 };

// Runs latbox-all with the arguments behind the program's name; never throws. 0 stands for --help and
// --version alone.
int runCommand(const std::vector<std::string>& arguments);

}  // namespace latbox::complete
