// A program small enough to follow by hand, and the lattice that comes of it.
#pragma once

#include <string>

#include "driver/run.h"
#include "temporary_folder.h"

namespace latbox::testing {

// 1 <= x1 + x2 <= 3 with x1, x2 in 0..4. The basis as generated has the rows (-8 -4 -4 1), (4 2 0 0), (4 0 2
// 0).
inline constexpr const char* SMALL_PROGRAM =
    "[ ]\n[ ]\n[ ]\n[ ]\n[ [ 1 1 ] ]\n[ 1 ]\n[ 3 ]\n[ 0 0 ]\n[ 0 0 ]\n[ 4 4 ]\n";

// The same in standard precision, read from a file of its own.
class SmallRun {
 public:
  explicit SmallRun(const char* program = SMALL_PROGRAM) {
    folder.write("small.opt", program);
    readFiles(y, folder.path("small"));
    y.live([this](auto& lattice) {
      lattice.mainVars[MainMutexVariable::inputLoaded].set(folder.path("small"));
      lattice.mainVars[MainMutexVariable::runState].set("running");
    });
  }

  TemporaryFolder folder;
  YLattice<dbl_t> y;
};

}  // namespace latbox::testing
