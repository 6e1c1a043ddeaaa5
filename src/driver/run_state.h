// The values in mainVars by which the threads of a run agree.
#pragma once

#include <string>

#include "driver/ylattice.h"

namespace latbox {

inline constexpr const char* RUN_WAITING = "waiting";
inline constexpr const char* RUN_RUNNING = "running";
inline constexpr const char* RUN_STOPPED = "stopped";

// The value on the live side.
std::string mainValue(YLattice<dbl_t>& y, MainMutexVariable key);
void setMainValue(YLattice<dbl_t>& y, MainMutexVariable key, const std::string& value);

inline std::string runState(YLattice<dbl_t>& y) {
  return mainValue(y, MainMutexVariable::runState);
}

// Sets the run state on all sides. A command must survive a change of precision that is under way while it
// arrives, so the sides are written again when the live one has changed meanwhile.
void setRunState(YLattice<dbl_t>& y, const std::string& state);

// True while the input that was asked for is the one that is loaded.
bool inputIsLoaded(YLattice<dbl_t>& y);

}  // namespace latbox
