#include "lib/failure.h"

#include <cstdlib>
#include <iostream>

#include "lib/progress.h"

namespace latbox {

void fail(const std::string& message) {
  // The last line end comes from the trace, so that the level that was open counts as finished.
  std::cerr << "\n*** FAIL: " << message << progressBreak() << std::flush;
  std::exit(1);
}

void warn(const std::string& message) { std::cerr << "*** " << message << '\n' << std::flush; }

}  // namespace latbox
