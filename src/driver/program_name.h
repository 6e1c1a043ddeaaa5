// The name under which the program was started.
#pragma once

#include <string>

namespace latbox {

// Keeps the last path component of argv[0].
void setProgramName(const std::string& path);
const std::string& programName();

}  // namespace latbox
