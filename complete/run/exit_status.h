// How a run of latbox-all ends, and of which version it is.
#pragma once

namespace latbox::complete {

// The version of the house.
inline constexpr const char* VERSION = "2.2.2";

enum ExitStatus { FAILURE = 1, BAD_INPUT = 2, PROVEN = 10, FOUND = 11, UNKNOWN = 12, NONE = 20 };

}  // namespace latbox::complete
