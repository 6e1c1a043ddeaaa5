// The operator's console on standard input.
#pragma once

#include <string>

#include "driver/ylattice.h"
#include "lib/os/line_input.h"

namespace latbox {

// Serves commands until the input ends. A run is never ended from here.
void serveConsole(YLattice<dbl_t>& y, LineInput& input);

// Acts on one line: STATUS, STOP, RUN, HELP and SET key=value, exactly so but for white space around. A value
// is not checked; one that its parser would refuse counts as 0. An unknown key is answered on standard error
// with "*** No such setting: " and the key. Any other line is ignored without an answer. Answers are flushed.
void actOnLine(YLattice<dbl_t>& y, const std::string& line);

}  // namespace latbox
