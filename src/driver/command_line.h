// The command line, the usage, and the setting of parameters by their text.
#pragma once

#include <string>

#include "driver/ylattice.h"

namespace latbox {

// What becomes of a value that does not read as a number: the failure of the number's reader (command line),
// or the value 0 (console, which never ends a run).
enum class OnBadNumber { failure, zero };

// Stores the text of a parameter and parses it, on the live side; in standard precision on the backup, too.
// False if no parameter of this key is registered.
bool setParameter(YLattice<dbl_t>& y, const std::string& key, const std::string& text, OnBadNumber onBad);

// Options "--key=value" and one input; a later input replaces an earlier one. Ends the process after printing
// the usage for `help` and for an empty input.
// Ensures: extendedActive is false unless some value can't be held in standard precision.
// Fails with: "Malformed parameter: " and "No such parameter: ".
void parseCommandLine(int argc, char** argv, YLattice<dbl_t>& y);

// The usage on standard output, with all options explained if `full`, and exit(0).
[[noreturn]] void printUsage(YLattice<dbl_t>& y, bool full);

// The table of options of the live side, one line each.
std::string liveOptionTable(YLattice<dbl_t>& y);

// The text without its last extension: everything from the last "." on is dropped, a "/" behind it too, so
// that "dir.d/prob" becomes "dir". By another rule a run would not find the files of the runs before it.
std::string withoutExtension(const std::string& path);

}  // namespace latbox
