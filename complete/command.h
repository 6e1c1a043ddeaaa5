// The command latbox-all, from its arguments to its exit status.
#pragma once

#include <string>
#include <vector>

namespace latbox::complete {

// Runs latbox-all with the arguments behind the program's name; never throws. An ExitStatus; 0 stands for
// --help and --version alone.
int runCommand(const std::vector<std::string>& arguments);

}  // namespace latbox::complete
