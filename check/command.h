// The command line of latbox-check, without the process around it.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "check/judging/exit_status.h"

namespace latbox::check {

// The version of the solver that it belongs to.
inline constexpr const char* VERSION = "2.2.2";

// Runs latbox-check with the arguments behind the program's name: judgements and verdict go to `out`, the
// reason of an UNREADABLE to `err`. Never throws.
ExitStatus runCommand(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);

}  // namespace latbox::check
