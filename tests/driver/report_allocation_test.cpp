// The final report is printed by the handler of a signal, which must not allocate.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "driver/signals.h"
#include "lib/os/clock.h"
#include "support/allocations.h"

namespace latbox {
namespace {

long before = 0;

// In a process that has published and written nothing: nothing that the report looks at may be made there.
TEST(FinalReportAllocationDeathTest, TheFirstLookAllocatesNothing) {
  EXPECT_EXIT(
      {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        YLattice<dbl_t> y;
        const SignalHandlers handlers(y);
        // The report looks at the clock behind all else.
        setClock([] {
          if (allocations != before) _exit(9);
          return 0L;
        });
        before = allocations;
        raise(SIGTERM);
      },
      ::testing::ExitedWithCode(0), "Program end\n$");
}

}  // namespace
}  // namespace latbox
