// The two ways of telling trouble on standard error.
#pragma once

#include <string>

namespace latbox {

// The failure path, for a broken invariant or unusable input: writes a line end, "*** FAIL: ", `message` and
// a line end to standard error and calls exit(1) where it stands. No stack is unwound: nothing above could
// repair what broke, and what has been found is on disk already.
[[noreturn]] void fail(const std::string& message);

// A warning: "*** ", `message` and a line end on standard error; the run goes on.
void warn(const std::string& message);

}  // namespace latbox
