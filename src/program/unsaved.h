// Solutions that could not be written: the process must not end with them.
#pragma once

#include <string>

namespace latbox {

// Remembers the whole content that `path` should have, in place of what was remembered before. From then on
// exit() calls rescueUnsaved.
void keepUnsaved(const std::string& path, const std::string& text);

// The content has been written, or is no longer wanted.
void forgetUnsaved();

// For the end of the process: writes the file if that is possible now; if not, prints its content on standard
// error and returns false. Safe in the handler of the termination signals (lib/os/signals.h).
bool rescueUnsaved();

}  // namespace latbox
