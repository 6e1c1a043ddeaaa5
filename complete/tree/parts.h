// Work in numbered parts, by several threads: each takes the next number when it is done with one.
#pragma once

#include <functional>

#include "complete/tree/search.h"

namespace latbox::complete {

struct Parts {
  // The first number, and the one behind the last.
  unsigned long begin = 0;
  unsigned long end = 0;
  // Does a part. False: it was broken off, and no further one is to be begun. Called by control.threads
  // threads at once.
  std::function<bool(unsigned long)> make;
  // Told now and then, and at the end, by the calling thread: all parts below this number are done.
  std::function<void(unsigned long)> tell;
};

// True: all parts are done. False: one was broken off, or the control stops. What a part throws is thrown on.
bool goThrough(const Parts& parts, const SearchControl& control);

}  // namespace latbox::complete
